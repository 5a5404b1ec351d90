// A sound plug-in with members of every type.
#include <cstdio>
#include <cstring>

#include "sdk/Declare.h"
#include "tests/support/plugins/Host.h"

namespace {

using sdk::Array;
using sdk::Color;
using sdk::Object;
using sdk::String;

struct SampleData {
    std::int32_t count;
    std::int64_t big;
    std::uint32_t word;
    std::uint8_t small;
    double real;
    float single;
    bool flag;
    Color tint;
    String* label;
    Object* other;
};

extern sdk::ClassDefinition sample;
extern sdk::ClassDefinition derived;

SampleData* DataOf(Object* self) {
    return reinterpret_cast<SampleData*>(reinterpret_cast<std::uint8_t*>(self) + sample.instanceDataOffset);
}

void Construct(Object* self) { DataOf(self)->count = 7; }

void Destroy(Object* self) {
    CallHost(sdk::kREALUnlockString, DataOf(self)->label);
    CallHost(sdk::kREALUnlockObject, DataOf(self)->other);
}

void SetCount(Object* self, std::int32_t count) { DataOf(self)->count = count; }

// --- One method a type: each gives back what it takes -----------------------------------------

template <class T>
T Same(Object*, T value) {
    return value;
}

String* SameText(Object*, String* text) {
    return text ? CallHost(sdk::kREALBuildString, reinterpret_cast<const char*>(text->data), text->length) : nullptr;
}

Object* SameObject(Object*, Object* object) {
    CallHost(sdk::kREALLockObject, object);
    return object;
}

std::int32_t SumOf(Object*, Array* numbers) {
    std::int32_t sum = 0;
    for (std::int32_t i = 0; i <= CallHost(sdk::kRuntimeUBound, numbers); ++i)
        sum += CallHost(sdk::kRuntimeDirectReadIntArray, numbers, i);
    return sum;
}

// --- Argument counts ---------------------------------------------------------------------------

template <class... Numbers>
std::int64_t WeightedSum(Object*, Numbers... numbers) {
    std::int64_t sum = 0;
    std::int64_t weight = 1;
    ((sum += numbers * weight++), ...);
    return sum;
}

using Int = std::int32_t;

double Mixed(Object*, Int a, double b, bool c, std::int64_t d, float e, std::uint8_t f, Color g, String* h, Object* i,
             double j) {
    return a + 10 * b + 100 * c + 1000 * static_cast<double>(d) + 10000 * e + 100000 * f + 1e6 * static_cast<Int>(g) +
           1e9 * static_cast<double>(h ? h->length : 0) + 1e10 * (i ? DataOf(i)->count : 0) + 1e12 * j;
}

// --- Results with other bits above them --------------------------------------------------------

std::uint64_t WideFalse(Object*) { return 0xFFFFFFFFFFFFFF00U; }
std::uint64_t WideTrue(Object*) { return 0xFFFFFFFFFFFFFF02U; }
std::uint64_t WideInteger(Object*) { return 0x12345678FFFFFFFEU; }
std::uint64_t WideByte(Object*) { return 0xABCDEF0123456789U; }
std::uint64_t NextWhole(Object*, std::uint64_t number) { return number + 1; }

// --- Overloads, assignment, exceptions, events ------------------------------------------------

std::int32_t PickInteger(Object*, std::int32_t) { return 1; }
std::int32_t PickDouble(Object*, double) { return 2; }
std::int32_t PickText(Object*, String*) { return 3; }
std::int32_t PickTwo(Object*, std::int32_t, bool second) { return second ? 5 : 4; }

std::int64_t slots[4];

std::int64_t SlotAt(Object*, std::int32_t index) { return slots[index & 3]; }
void SetSlotAt(Object*, std::int32_t index, std::int64_t value) { slots[index & 3] = value; }

void Fail(Object*, String* message) {
    Object* exception = CallHost(sdk::kPluginNewInstance, "OutOfBoundsException");
    CallHost(sdk::kRuntimeRaiseException, exception);
    CallHost(sdk::kREALSetPropValueString, exception, "Message", message);
    CallHost(sdk::kREALUnlockObject, exception);
}

void FailWithNil(Object*) { CallHost(sdk::kRuntimeRaiseException, static_cast<Object*>(nullptr)); }

void YieldOnce(Object*) { CallHost(sdk::kREALYieldToRB); }

extern sdk::EventRecord events[3];

Object* Ask(Object* self, std::int32_t number, String* text) {
    const auto handler = CallHost(sdk::kGetEventInstancePPC, self, events[0].hostNumber);
    if (!handler) return nullptr;
    return reinterpret_cast<Object* (*)(Object*, std::int32_t, String*)>(handler)(self, number, text);
}

double Measure(Object* self, double value, bool twice) {
    const auto handler = CallHost(sdk::kGetEventInstancePPC, self, events[1].hostNumber);
    return handler ? reinterpret_cast<double (*)(Object*, double, bool)>(handler)(self, value, twice) : -1;
}

bool Tell(Object* self, std::uint8_t code) {
    const auto handler = CallHost(sdk::kGetEventInstancePPC, self, events[2].hostNumber);
    return handler && reinterpret_cast<bool (*)(Object*, std::uint8_t)>(handler)(self, code);
}

// Calls any object's method "Twice(x as integer) as integer" through the host.
std::int32_t CallTwice(Object*, Object* other, std::int32_t x) {
    const auto method = CallHost(sdk::kREALLoadObjectMethod, other, "twice( number As Integer ) As Integer");
    return method ? reinterpret_cast<std::int32_t (*)(Object*, std::int32_t)>(method)(other, x) : -1;
}

std::int32_t ReadNumber(Object*, Object* other, String* name) {
    if (!name) return -1;
    char text[64];
    std::snprintf(text, sizeof(text), "%.*s", static_cast<int>(name->length),
                  reinterpret_cast<const char*>(name->data));
    std::int32_t value = -99;
    return CallHost(sdk::kREALGetPropValueInt, other, static_cast<const char*>(text), &value) ? value : -1;
}

std::int32_t Times(std::uint32_t factor, std::int32_t x) {
    return static_cast<std::int32_t>(factor * static_cast<std::uint32_t>(x));
}

std::int32_t Thrice(std::int32_t x) { return Times(3, x); }

void ConstructDefault(Object*) {}
void ConstructWith(Object* self, std::int32_t count, String* label) {
    DataOf(self)->count = count;
    DataOf(self)->label = SameText(self, label);
}

Object* AnyNumber(Object*, Object* anything) { return SameObject(nullptr, anything); }

sdk::EventRecord events[3] = {{"Asked(number as integer, text as string) as Sample", 0},
                              {"Measured(value as double, twice as boolean) as double", 0},
                              {"Told(code as uint8) as boolean", 0}};

template <class Function>
sdk::MethodRecord Unchecked(Function* function, const char* declaration) {
    return {reinterpret_cast<sdk::AnyFunction>(function), nullptr, declaration, sdk::kMemberPortable};
}

const sdk::MethodRecord* Methods() {
    using sdk::Method;
    constexpr auto flags = sdk::kMemberPortable;
    static const sdk::MethodRecord methods[] = {
        Method<"Constructor", &ConstructDefault>(flags),
        Method<"Constructor(count as integer, label as string)", &ConstructWith>(flags),
        Method<"SameInteger(value as integer) as integer", &Same<std::int32_t>>(flags),
        Method<"SameInt64(value as int64) as int64", &Same<std::int64_t>>(flags),
        Method<"SameUInt32(value as uint32) as uint32", &Same<std::uint32_t>>(flags),
        Method<"SameUInt8(value as uint8) as uint8", &Same<std::uint8_t>>(flags),
        Method<"SameDouble(value as double) as double", &Same<double>>(flags),
        Method<"SameSingle(value as single) as single", &Same<float>>(flags),
        Method<"SameBoolean(value as boolean) as boolean", &Same<bool>>(flags),
        Method<"SameColor(value as color) as color", &Same<Color>>(flags),
        Method<"SameString(value as string) as string", &SameText>(flags),
        Method<"SameSample(value as Sample) as Sample", &SameObject>(flags),
        Method<"SameVariant(value as variant) as variant", &AnyNumber>(flags),
        Method<"SumOf(numbers() as integer) as integer", &SumOf>(flags),
        Method<"Sum0() as int64", &WeightedSum<>>(flags),
        Method<"Sum1(a as integer) as int64", &WeightedSum<Int>>(flags),
        Method<"Sum2(a as integer, b as integer) as int64", &WeightedSum<Int, Int>>(flags),
        Method<"Sum3(a as integer, b as integer, c as integer) as int64", &WeightedSum<Int, Int, Int>>(flags),
        Method<"Sum4(a as integer, b as integer, c as integer, d as integer) as int64",
               &WeightedSum<Int, Int, Int, Int>>(flags),
        Method<"Sum5(a as integer, b as integer, c as integer, d as integer, e as integer) as int64",
               &WeightedSum<Int, Int, Int, Int, Int>>(flags),
        Method<"Sum6(a as integer, b as integer, c as integer, d as integer, e as integer, f as integer) as int64",
               &WeightedSum<Int, Int, Int, Int, Int, Int>>(flags),
        Method<"Sum7(a as integer, b as integer, c as integer, d as integer, e as integer, f as integer, g as integer) "
               "as int64",
               &WeightedSum<Int, Int, Int, Int, Int, Int, Int>>(flags),
        Method<"Sum8(a as integer, b as integer, c as integer, d as integer, e as integer, f as integer, g as integer, "
               "h as integer) as int64",
               &WeightedSum<Int, Int, Int, Int, Int, Int, Int, Int>>(flags),
        Method<"Sum9(a as integer, b as integer, c as integer, d as integer, e as integer, f as integer, g as integer, "
               "h as integer, i as integer) as int64",
               &WeightedSum<Int, Int, Int, Int, Int, Int, Int, Int, Int>>(flags),
        Method<
            "Sum10(a as integer, b as integer, c as integer, d as integer, e as integer, f as integer, g as integer, "
            "h as integer, i as integer, j as integer) as int64",
            &WeightedSum<Int, Int, Int, Int, Int, Int, Int, Int, Int, Int>>(flags),
        Method<"Mixed(a as integer, b as double, c as boolean, d as int64, e as single, f as uint8, g as color, h as "
               "string, i as Sample, j as double) as double",
               &Mixed>(flags),
        Unchecked(&WideFalse, "WideFalse() as boolean"),
        Unchecked(&WideTrue, "WideTrue() as boolean"),
        Unchecked(&WideInteger, "WideInteger() as integer"),
        Unchecked(&WideByte, "WideByte() as uint8"),
        Unchecked(&NextWhole, "NextWhole(number as uint64) as uint64"),
        Method<"Pick(value as integer) as integer", &PickInteger>(flags),
        Method<"Pick(value as double) as integer", &PickDouble>(flags),
        Method<"Pick(value as string) as integer", &PickText>(flags),
        Method<"Pick(value as integer, second as boolean = true) as integer", &PickTwo>(flags),
        sdk::AssignableMethod<"SlotAt(index as integer) as int64", &SlotAt, &SetSlotAt>(flags),
        Method<"Fail(message as string)", &Fail>(flags),
        Method<"FailWithNil", &FailWithNil>(flags),
        Method<"YieldOnce", &YieldOnce>(flags),
        Method<"Ask(number as integer, text as string) as Sample", &Ask>(flags),
        Method<"Measure(value as double, twice as boolean) as double", &Measure>(flags),
        Method<"Tell(code as uint8) as boolean", &Tell>(flags),
        Method<"CallTwice(other as variant, x as integer) as integer", &CallTwice>(flags),
        Method<"ReadNumber(other as variant, name as string) as integer", &ReadNumber>(flags),
    };
    sample.methodCount = static_cast<std::int32_t>(std::size(methods));
    return methods;
}

const sdk::MethodRecord* SharedMethods() {
    static const sdk::MethodRecord methods[] = {
        sdk::SharedMethod<"Thrice(x as integer) as integer", &Thrice>(sdk::kMemberPortable)};
    return methods;
}

std::int32_t DoubleCount(Object* self) { return Times(2, DataOf(self)->count); }

const sdk::PropertyRecord* Properties() {
    using sdk::ReadOnly, sdk::ReadWrite;
    constexpr auto flags = sdk::kMemberPortable;
    static const sdk::PropertyRecord properties[] = {
        ReadWrite<"Count as Integer", &SampleData::count, &SetCount>(flags),
        ReadWrite<"Big as Int64", &SampleData::big>(flags),
        ReadWrite<"Word as UInt32", &SampleData::word>(flags),
        ReadWrite<"Small as UInt8", &SampleData::small>(flags),
        ReadWrite<"Real as Double", &SampleData::real>(flags),
        ReadWrite<"Narrow as Single", &SampleData::single>(flags),
        ReadWrite<"Flag as Boolean", &SampleData::flag>(flags),
        ReadWrite<"Tint as Color", &SampleData::tint>(flags),
        ReadWrite<"Label as String", &SampleData::label>(flags),
        ReadWrite<"Other as Sample", &SampleData::other>(flags),
        ReadOnly<"DoubleCount as Integer", &DoubleCount>(flags),
    };
    sample.propertyCount = static_cast<std::int32_t>(std::size(properties));
    return properties;
}

const sdk::ConstantRecord constants[] = {{"SampleSmall = 7", nullptr, 0}, {"SampleLarge = &h8000000F", nullptr, 0}};

sdk::ClassDefinition sample{.version = sdk::kInterfaceVersion,
                            .name = "Sample",
                            .instanceDataSize = sizeof(SampleData),
                            .constructor = &Construct,
                            .destructor = &Destroy,
                            .events = events,
                            .eventCount = 3,
                            .constants = constants,
                            .constantCount = 2,
                            .flags = 4,
                            .sharedMethodCount = 1};

// A subclass with data of its own.
struct DerivedData {
    std::int32_t extra;
};

void ConstructDerived(Object* self) {
    reinterpret_cast<DerivedData*>(reinterpret_cast<std::uint8_t*>(self) + derived.instanceDataOffset)->extra =
        static_cast<std::int32_t>(static_cast<std::uint32_t>(DataOf(self)->count) + 1);
}

const sdk::PropertyRecord derivedProperties[] = {{"Extra", "Integer", 6, sdk::FieldAt(0), sdk::FieldAt(0)}};

sdk::ClassDefinition derived{.version = sdk::kInterfaceVersion,
                             .name = "DerivedSample",
                             .superclass = "Sample",
                             .instanceDataSize = sizeof(DerivedData),
                             .constructor = &ConstructDerived,
                             .properties = derivedProperties,
                             .propertyCount = 1};

}  // namespace

TEST_PLUGIN_ENTRY(sdk::EntryFunction entry) {
    KeepResolver(entry);
    CallHost(sdk::kRegisterPluginVersion, sdk::kInterfaceVersion);
    sample.methods = Methods();
    sample.sharedMethods = SharedMethods();
    sample.properties = Properties();
    return CallHost(sdk::kPluginRegisterClass, &sample) + CallHost(sdk::kPluginRegisterClass, &derived);
}
