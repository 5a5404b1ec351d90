// Boxes: values that are no objects, as objects.
#include "host/calls/Variant.h"

#include <new>
#include <string>
#include <utility>

#include "host/calls/Call.h"
#include "host/calls/Runtime.h"

namespace host {

namespace {

sdk::ClassDefinition definition{.version = sdk::kInterfaceVersion, .name = "Variant"};
const Class* variant = nullptr;

constexpr std::pair<const char*, VariantType> kTypes[] = {
    {"TypeNil", kTypeNil},       {"TypeInteger", kTypeInteger}, {"TypeLong", kTypeLong},
    {"TypeSingle", kTypeSingle}, {"TypeDouble", kTypeDouble},   {"TypeDate", kTypeDate},
    {"TypeString", kTypeString}, {"TypeObject", kTypeObject},   {"TypeBoolean", kTypeBoolean},
    {"TypeColor", kTypeColor},   {"TypeArray", kTypeArray},
};

}  // namespace

void RegisterVariant(Runtime& runtime) {
    auto type = std::make_unique<Class>("Variant", nullptr, &definition);
    type->AddSlot(Value());
    for (const auto& [name, number] : kTypes)
        type->AddConstant({name, Value(std::int32_t{number}), name + (" = " + std::to_string(number)), nullptr});
    variant = runtime.AddClass(std::move(type));
}

Ref<Object> Box(const Value& value) {
    if (value.IsNothing()) return nullptr;
    if (value.kind() == Kind::Object) return Ref<Object>::Share(value.object());
    Ref<Object> box = NewObject(*variant);
    if (!box) throw std::bad_alloc();
    variant->SlotsOf(box.get())[0] = value;
    return box;
}

Value Unbox(const Ref<Object>& object) {
    return object && object->type == variant ? variant->SlotsOf(object.get())[0] : Value(object);
}

}  // namespace host
