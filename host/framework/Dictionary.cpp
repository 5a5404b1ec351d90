// Entries in the order in which their keys came. One that is removed from between others leaves a gap
// until there are more gaps than entries, or until an entry is asked for by its number.
#include <algorithm>

#include "host/calls/Call.h"
#include "host/framework/Containers.h"
#include "host/framework/QuickForms.h"
#include "host/framework/Support.h"
#include "host/framework/ValueKey.h"

namespace host {

namespace {

struct DictionaryData {
    KeyPlaces* places;  // of the entry of each key
    std::size_t first;  // all before it are gaps
};

constexpr std::size_t kFewGaps = 16;

sdk::ClassDefinition definition{.name = "Dictionary", .instanceDataSize = sizeof(DictionaryData)};
const Class* dictionary = nullptr;

DictionaryData& Data(sdk::Object* object) { return DataOf<DictionaryData>(object, definition); }

void Destroy(sdk::Object* object) { delete Data(object).places; }

// Keys and values, an element each to an entry; a gap's key is nothing.
Values& KeysOf(sdk::Object* object) { return ListOrNew(*dictionary, object, 0); }
Values& ValuesOf(sdk::Object* object) { return ListOrNew(*dictionary, object, 1); }

KeyPlaces& PlacesOf(sdk::Object* object) {
    auto*& places = Data(object).places;
    if (!places) places = new KeyPlaces;
    if (ListIn(*dictionary, object, 0)) return *places;
    places->clear();  // a program's end took the lists
    Data(object).first = 0;
    return *places;
}

constexpr std::size_t kNone = KeyPlaces::kNone;

std::size_t Find(sdk::Object* object, const Value& key) { return PlacesOf(object).Find(key); }

[[noreturn]] void FailKey(const Value& key) { Fail(kContainersRaise.noKey(Describe(key))); }

// Closes the gaps.
void Close(sdk::Object* object) {
    Values &keys = KeysOf(object), &values = ValuesOf(object);
    std::size_t count = 0;
    for (std::size_t i = Data(object).first; i < keys.size(); ++i) {
        if (keys[i].IsNothing()) continue;
        PlacesOf(object).Set(keys[i], count);
        keys[count] = std::move(keys[i]);
        values[count++] = std::move(values[i]);
    }
    keys.resize(count, Value());
    values.resize(count, Value());
    Data(object).first = 0;
}

// --- Members --------------------------------------------------------------------------------

bool HasKey(sdk::Object* object, sdk::Object* key) { return Find(object, ValueIn(key)) != kNone; }

sdk::Object* GetValue(sdk::Object* object, sdk::Object* key) {
    const std::size_t place = Find(object, ValueIn(key));
    if (place == kNone) FailKey(ValueIn(key));
    return Box(ValuesOf(object)[place]).Detach();
}

sdk::Object* Lookup(sdk::Object* object, sdk::Object* key, sdk::Object* other) {
    const std::size_t place = Find(object, ValueIn(key));
    return Box(place == kNone ? ValueIn(other) : ValuesOf(object)[place]).Detach();
}

// A key that is there keeps its place and its spelling. The old value goes last: its destructor may
// use this dictionary.
void Store(sdk::Object* object, const Value& newKey, Value held) {
    if (const std::size_t place = Find(object, newKey); place != kNone) return std::swap(ValuesOf(object)[place], held);
    Values &keys = KeysOf(object), &values = ValuesOf(object);
    MakeRoom(keys);
    MakeRoom(values);
    PlacesOf(object).Set(newKey, keys.size());
    keys.push_back(newKey);
    values.push_back(std::move(held));
}

void SetValue(sdk::Object* object, sdk::Object* key, sdk::Object* value) {
    Store(object, ValueIn(key), ValueIn(value));
}

void Remove(sdk::Object* object, sdk::Object* boxedKey) {
    const Value key = ValueIn(boxedKey);
    const std::size_t place = Find(object, key);
    if (place == kNone) FailKey(key);
    Values &keys = KeysOf(object), &values = ValuesOf(object);
    PlacesOf(object).Erase(key);
    const Value oldKey = std::exchange(keys[place], Value()), oldValue = std::exchange(values[place], Value());
    for (; !keys.empty() && keys.back().IsNothing(); keys.pop_back()) values.pop_back();
    std::size_t& first = Data(object).first;
    first = std::min(first, keys.size());
    while (first < keys.size() && keys[first].IsNothing()) ++first;
    if (keys.size() > 2 * PlacesOf(object).size() + kFewGaps) Close(object);
}

void Clear(sdk::Object* object) {
    const Values oldKeys = std::exchange(KeysOf(object), {});
    const Values oldValues = std::exchange(ValuesOf(object), {});
    PlacesOf(object).clear();
    Data(object).first = 0;
}

std::int32_t Count(sdk::Object* object) { return static_cast<std::int32_t>(PlacesOf(object).size()); }

// Counted from 0.
sdk::Object* KeyAt(sdk::Object* object, std::int32_t index) {
    if (index < 0 || index >= Count(object)) Fail(kContainersRaise.keyNumber(index, Count(object)));
    const std::size_t entries = KeysOf(object).size() - Data(object).first;
    if (entries > PlacesOf(object).size()) Close(object);
    return Box(KeysOf(object)[Data(object).first + static_cast<std::size_t>(index)]).Detach();
}

template <Values& (*ListOf)(sdk::Object*)>
sdk::Array* All(sdk::Object* object) {
    Close(object);
    Ref<Array> array = MakeArray(TypeNamed("Variant"));
    array->values = ListOf(object);
    return array.Detach();
}

// Another dictionary with the same entries.
sdk::Object* Clone(sdk::Object* object) {
    Ref<Object> copy = NewInstanceOf(definition);
    Close(object);
    KeysOf(copy.get()) = KeysOf(object);
    ValuesOf(copy.get()) = ValuesOf(object);
    PlacesOf(copy.get()) = PlacesOf(object);
    return copy.Detach();
}

// --- Forms for scripts, whose variants need no boxes ----------------------------------------

void QuickValue(Object* object, const Value* const* arguments, Value& result) {
    const std::size_t place = Find(object, *arguments[0]);
    if (place == kNone) FailKey(*arguments[0]);
    result = Value(ValuesOf(object)[place]);
}

void QuickLookup(Object* object, const Value* const* arguments, Value& result) {
    const std::size_t place = Find(object, *arguments[0]);
    result = Value(place == kNone ? *arguments[1] : ValuesOf(object)[place]);
}

void QuickHasKey(Object* object, const Value* const* arguments, Value& result) {
    result.bits() = Find(object, *arguments[0]) != kNone;
}

void QuickStore(Object* object, const Value* const* arguments, Value&) {
    const auto keepAlive = Ref<Object>::Share(object);
    const Value key = *arguments[0];
    Store(object, key, *arguments[1]);
}

void AddQuickForms() {
    AddQuickForm(Guarded<&SetValue>, &QuickStore);
    AddQuickForm(Guarded<&GetValue>, &QuickValue);
    AddQuickForm(Guarded<&Lookup>, &QuickLookup);
    AddQuickForm(Guarded<&HasKey>, &QuickHasKey);
}

}  // namespace

void RegisterDictionary(Runtime& runtime) {
    AddQuickForms();
    constexpr std::int32_t kFlags = sdk::kMemberPortable;
    static const sdk::MethodRecord methods[] = {
        sdk::AssignableMethod<"Value(key as Variant) as Variant", Guarded<&GetValue>, Guarded<&SetValue>>(kFlags),
        sdk::Method<"HasKey(key as Variant) as boolean", Guarded<&HasKey>>(kFlags),
        sdk::Method<"Lookup(key as Variant, otherwise as Variant) as Variant", Guarded<&Lookup>>(kFlags),
        sdk::Method<"Key(index as integer) as Variant", Guarded<&KeyAt>>(kFlags),
        sdk::Method<"Keys as Variant()", Guarded<&All<&KeysOf>>>(kFlags),
        sdk::Method<"Values as Variant()", Guarded<&All<&ValuesOf>>>(kFlags),
        sdk::Method<"Remove(key as Variant)", Guarded<&Remove>>(kFlags),
        sdk::Method<"Clear", Guarded<&Clear>>(kFlags),
        sdk::Method<"RemoveAll", Guarded<&Clear>>(kFlags),
        sdk::Method<"Clone as Dictionary", Guarded<&Clone>>(kFlags),
    };
    static const sdk::PropertyRecord properties[] = {ReadOnly<"Integer", &Count>("Count")};
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    dictionary = &RegisterHolderOrAbort(runtime, definition, 2);
}

}  // namespace host
