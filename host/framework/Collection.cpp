// Items in a row, counted from 1; each may have a key, a text without regard to case.
#include "host/calls/Call.h"
#include "host/framework/Containers.h"
#include "host/framework/Support.h"
#include "host/framework/ValueKey.h"

namespace host {

namespace {

sdk::ClassDefinition definition{.name = "Collection"};
const Class* collection = nullptr;

// Items, and beside each its key; nothing for none.
Values& ItemsOf(sdk::Object* object) { return ListOrNew(*collection, object, 0); }
Values& KeysOf(sdk::Object* object) { return ListOrNew(*collection, object, 1); }

constexpr std::size_t kNone = SIZE_MAX;

std::size_t FindKey(sdk::Object* object, const Value& key) {
    const Values& keys = KeysOf(object);
    for (std::size_t i = 0; i < keys.size(); ++i)
        if (!keys[i].IsNothing() && KeyOf(keys[i]) == KeyOf(key)) return i;
    return kNone;
}

// A text is a key, a number a place from 1.
std::size_t PlaceOf(sdk::Object* object, sdk::Object* which) {
    const Value value = ValueIn(which);
    if (value.kind() == Kind::String) {
        const std::size_t place = FindKey(object, value);
        if (place == kNone) Fail(kContainersRaise.noKeyOfItem(Describe(value)));
        return place;
    }
    if (!value.IsNumber()) Fail(kContainersRaise.noItem(Describe(value)));
    const std::int64_t number = value.ToInt64();
    const std::size_t count = ItemsOf(object).size();
    if (number < 1 || static_cast<std::uint64_t>(number) > count) Fail(kContainersRaise.itemNumber(number, count));
    return static_cast<std::size_t>(number) - 1;
}

// --- Members --------------------------------------------------------------------------------

void AddWithKey(sdk::Object* object, sdk::Object* item, sdk::String* key) {
    const bool keyed = !Bytes(key).empty();
    Value text = keyed ? Value(Ref<String>::Share(FromPlugin(key))) : Value();
    if (keyed && FindKey(object, text) != kNone) Fail(kContainersRaise.keyTaken(Describe(text)));
    MakeRoom(KeysOf(object));
    MakeRoom(ItemsOf(object));
    ItemsOf(object).push_back(ValueIn(item));
    KeysOf(object).push_back(std::move(text));
}

void Add(sdk::Object* object, sdk::Object* item) { AddWithKey(object, item, nullptr); }

sdk::Object* Item(sdk::Object* object, sdk::Object* which) {
    return Box(ItemsOf(object)[PlaceOf(object, which)]).Detach();
}

// The item goes last: its destructor may use this collection.
void Remove(sdk::Object* object, sdk::Object* which) {
    const std::size_t place = PlaceOf(object, which);
    const Value item = std::exchange(ItemsOf(object)[place], Value());
    ItemsOf(object).Erase(place);
    KeysOf(object).Erase(place);
}

void Clear(sdk::Object* object) {
    const Values items = std::exchange(ItemsOf(object), {});
    KeysOf(object) = {};
}

std::int32_t Count(sdk::Object* object) { return static_cast<std::int32_t>(ItemsOf(object).size()); }

}  // namespace

void RegisterCollection(Runtime& runtime) {
    constexpr std::int32_t kFlags = sdk::kMemberPortable;
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Add(item as Variant)", Guarded<&Add>>(kFlags),
        sdk::Method<"Add(item as Variant, key as string)", Guarded<&AddWithKey>>(kFlags),
        sdk::Method<"Item(which as Variant) as Variant", Guarded<&Item>>(kFlags),
        sdk::Method<"Remove(which as Variant)", Guarded<&Remove>>(kFlags),
        sdk::Method<"Clear", Guarded<&Clear>>(kFlags),
    };
    static const sdk::PropertyRecord properties[] = {ReadOnly<"Integer", &Count>("Count")};
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    collection = &RegisterHolderOrAbort(runtime, definition, 2);
}

}  // namespace host
