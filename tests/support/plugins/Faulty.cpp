// A plug-in that is sound but for one fault, chosen when it is built. FAULT 0 is none.
#include <cstring>
#include <ctime>

#include "sdk/Declare.h"
#include "tests/support/plugins/Host.h"

namespace {

using sdk::Object;
using sdk::String;

enum Fault {
    kNone,
    kCrashOnNil,
    kKeepReference,
    kGiveUpTooOften,
    kWritePastBlock,
    kForgetfulResult,
    kYieldUnasked,
    kIgnoreFailedBlock,
    kWrongFlags,
    kNeverYield,
    kTrustAfterYield,
    kEndlessLoop,
    kWrongClass,
    kMinusOneCrash,
    kRememberCalls
};

constexpr int kFault = FAULT;

struct Data {
    std::int32_t yieldTicks;
    std::int32_t number;
    std::int32_t* storage;  // gone after Close
    std::int32_t cell;
};

extern sdk::ClassDefinition faulty;

Data* DataOf(Object* self) {
    return reinterpret_cast<Data*>(reinterpret_cast<std::uint8_t*>(self) + faulty.instanceDataOffset);
}

void Crash() {
    volatile int* nowhere = nullptr;
    *nowhere = 1;
}

void Construct(Object* self, std::int32_t number) {
    DataOf(self)->number = number;
    DataOf(self)->storage = &DataOf(self)->cell;
}

void Close(Object* self) { DataOf(self)->storage = nullptr; }

Object* Link(Object* self, Object* other) {
    if (kFault == kCrashOnNil && !other) Crash();
    if (kFault == kGiveUpTooOften) CallHost(sdk::kREALUnlockObject, other);
    Object* result = other ? other : self;
    CallHost(sdk::kREALLockObject, result);
    if (kFault == kKeepReference) CallHost(sdk::kREALLockObject, result);
    if (kFault != kWrongClass) return result;
    CallHost(sdk::kREALUnlockObject, result);
    return CallHost(sdk::kPluginNewInstance, "RuntimeException");
}

void Clear(Object*, Object* block) {
    std::int32_t size = 0;
    if (!block || !CallHost(sdk::kREALGetPropValueInt, block, "Size", &size) || size < 0) return;
    std::uint8_t* bytes = CallHost(sdk::kmemoryBlockGetPtr, block);
    if (!bytes) return;
    std::memset(bytes, 0, static_cast<std::size_t>(size));
    auto* volatile end = bytes + size;
    if (kFault == kWritePastBlock) *end = 1;
}

std::int32_t Nanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int32_t>(now.tv_nsec);
}

std::int32_t Count(Object* self, std::int32_t step) {
    static std::int32_t calls = 0;
    if (kFault == kRememberCalls) return ++calls;
    if (kFault == kForgetfulResult) return Nanoseconds();
    if (kFault == kMinusOneCrash && step == -1) Crash();
    volatile bool forever = kFault == kEndlessLoop && step > 100'000;
    while (forever) {
    }
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(DataOf(self)->number) +
                                     static_cast<std::uint32_t>(step));
}

Object* Block(Object*) {
    Object* block = CallHost(sdk::knewMemoryBlock, 16);
    if (!block && kFault != kIgnoreFailedBlock) return nullptr;
    std::uint8_t* bytes = CallHost(sdk::kmemoryBlockGetPtr, block);
    if (bytes || kFault == kIgnoreFailedBlock) *bytes = 7;
    return block;
}

std::int32_t Work(Object* self) {
    const std::int32_t* storage = DataOf(self)->storage;
    if (!storage) return -1;
    const bool asked = DataOf(self)->yieldTicks > 0 && kFault != kNeverYield;
    if (asked || kFault == kYieldUnasked) CallHost(sdk::kREALYieldToRB);
    if (kFault != kTrustAfterYield && !DataOf(self)->storage) return -1;
    return *DataOf(self)->storage;
}

constexpr std::int32_t kPropertyFlags = kFault == kWrongFlags ? 4 : 6;

const sdk::PropertyRecord properties[] = {
    {"YieldTicks", "Integer", kPropertyFlags, sdk::FieldAt(offsetof(Data, yieldTicks)),
     sdk::FieldAt(offsetof(Data, yieldTicks))},
    {"Number", "Integer", 6, sdk::FieldAt(offsetof(Data, number)), sdk::kNoAccess},
};

const sdk::ConstantRecord constants[] = {{"NumberLow = 1", nullptr, 0}, {"NumberHigh = &h00000064", nullptr, 0}};

sdk::ClassDefinition faulty{.version = sdk::kInterfaceVersion,
                            .name = "Faulty",
                            .instanceDataSize = sizeof(Data),
                            .properties = properties,
                            .propertyCount = 2,
                            .constants = constants,
                            .constantCount = 2};

}  // namespace

TEST_PLUGIN_ENTRY(sdk::EntryFunction entry) {
    KeepResolver(entry);
    using sdk::Method;
    constexpr auto flags = sdk::kMemberPortable;
    static const sdk::MethodRecord methods[] = {
        Method<"Constructor(number as integer)", &Construct>(flags),
        Method<"Close", &Close>(flags),
        Method<"Link(other as Faulty) as Faulty", &Link>(flags),
        Method<"Clear(bytes as MemoryBlock)", &Clear>(flags),
        Method<"Count(by as integer) as integer", &Count>(flags),
        Method<"Block as MemoryBlock", &Block>(flags),
        Method<"Work as integer", &Work>(flags),
    };
    faulty.methods = methods;
    faulty.methodCount = static_cast<std::int32_t>(std::size(methods));
    return CallHost(sdk::kPluginRegisterClass, &faulty);
}
