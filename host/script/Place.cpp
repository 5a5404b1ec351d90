// References to elements, fields and properties as objects that hold their array or object.
#include "host/script/Place.h"

#include <new>

namespace script {

namespace {

using host::Value;

enum Slot { kKind, kHolder, kWhich };

const host::Class& PlaceClass() {
    static const host::Class* const type = [] {
        auto* made = new host::Class("reference", nullptr);
        for (Value first : {Value(0), Value(nullptr), Value(std::int64_t{0})}) made->AddSlot(std::move(first));
        return made;
    }();
    return *type;
}

Value MakePlace(Place::Kind kind, const Value& holder, std::int64_t which) {
    host::Ref<host::Object> object = host::NewObject(PlaceClass());
    if (!object) throw std::bad_alloc();
    Value* slots = PlaceClass().SlotsOf(object.get());
    slots[kKind] = Value(static_cast<std::int32_t>(kind));
    slots[kHolder] = holder;
    slots[kWhich] = Value(which);
    return Value(std::move(object));
}

}  // namespace

Value ReferenceTo(Value& variable) {
    return Value(static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(&variable)));
}

Value ReferenceToElement(const Value& array, std::int64_t index) {
    return MakePlace(Place::Kind::Element, array, index);
}

Value ReferenceToField(const Value& object, std::uint16_t offset) {
    return MakePlace(Place::Kind::Field, object, offset);
}

Value ReferenceToProperty(const Value& object, const host::Property& property) {
    return MakePlace(Place::Kind::Property, object, reinterpret_cast<std::intptr_t>(&property));
}

Place PlaceBehind(const Value& reference) {
    Value* slots = PlaceClass().SlotsOf(reference.object());
    const auto kind = static_cast<Place::Kind>(slots[kKind].bits());
    const std::int64_t which = slots[kWhich].bits();
    const bool property = kind == Place::Kind::Property;
    return {kind, slots[kHolder], property ? 0 : which,
            property ? reinterpret_cast<const host::Property*>(which) : nullptr};
}

}  // namespace script
