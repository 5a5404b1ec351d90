// A plug-in that is sound but for one fault, chosen when it is built. FAULT 0 is none.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
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
    kRememberCalls,
    kCrashAtStart,
    kExportMore,
    kNeedLibrary,  // linked to one
    kStateVersionLate,
    kAskForUnknown,
    kMisalignField,
    kOverlapFields,
    kAmbiguousOverloads,
    kForeignCode,
    kUncallableEvent,
    kDriftingProperty,
    kChangeSource,
    kSilentException,
    kUncheckedMalloc,
    kKeepFileOpen,
    kUnreadableDeclaration,
    kNoVersionInClass,
    kContradictingConstant,
    kExit,
    kHangAtStart
};

constexpr int kFault = FAULT;

struct Data {
    std::int32_t yieldTicks;
    std::int32_t number;
    std::int32_t* storage;  // gone after Close
    std::int32_t cell;
    std::int32_t spare[2];
};

extern sdk::ClassDefinition faulty;

Data* DataOf(Object* self) {
    return reinterpret_cast<Data*>(reinterpret_cast<std::uint8_t*>(self) + faulty.instanceDataOffset);
}

// As a bad address does it, past whatever sanitizer would rather tell of one.
void Crash() {
    std::signal(SIGSEGV, SIG_DFL);
    std::raise(SIGSEGV);
}

// Without a descriptor by which anybody could know of its end.
void Hang() {
    for (int file = 0; file < 64; ++file) close(file);
    for (;;) pause();
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

// A number of its own for each string of the same length.
std::int32_t Weigh(Object*, String* text) {
    if (!text || text->length < 1) return 0;
    auto* const copy = static_cast<std::uint8_t*>(std::malloc(static_cast<std::size_t>(text->length)));
    if (!copy && kFault != kUncheckedMalloc) return -1;
    std::memcpy(copy, text->data, static_cast<std::size_t>(text->length));
    const std::int32_t weight = copy[text->length - 1];
    std::free(copy);
    return weight;
}

bool Report(Object*) {
    const int file = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (file < 0) return false;
    const bool written = write(file, "x", 1) == 1;
    if (written || kFault != kKeepFileOpen) close(file);
    return written;
}

void Take(Object* self, Object* source) {
    if (!source) return;
    DataOf(self)->number = DataOf(source)->number;
    if (kFault == kChangeSource && source != self) ++DataOf(source)->number;
}

void Refuse(Object*, std::int32_t number) {
    if (number >= 0) return;
    Object* exception = CallHost(sdk::kPluginNewInstance, "OutOfBoundsException");
    CallHost(sdk::kRuntimeRaiseException, exception);
    String* text = CallHost(sdk::kREALBuildString, "The number is negative.", std::int64_t{23});
    if (kFault != kSilentException && exception) CallHost(sdk::kREALSetPropValueString, exception, "Message", text);
    CallHost(sdk::kREALUnlockString, text);
    CallHost(sdk::kREALUnlockObject, exception);
}

std::int32_t Level(Object* self) { return DataOf(self)->spare[0]; }
void SetLevel(Object* self, std::int32_t level) {
    DataOf(self)->spare[0] = kFault == kDriftingProperty ? (level & 255) + 1 : level & 255;
}

std::int32_t PickOne(Object*, std::int32_t) { return 1; }
std::int32_t PickTwo(Object*, std::int32_t, std::int32_t) { return 2; }
std::int32_t PickOther(Object*, std::int32_t, double) { return 3; }

std::int32_t Odd(Object*) {
    if (kFault == kExit) _exit(0);
    return 4;
}

sdk::EventRecord events[] = {
    {kFault == kUncallableEvent ? "Told(ByRef number as integer)" : "Told(number as integer)", 0}};

constexpr std::int32_t kPropertyFlags = kFault == kWrongFlags ? 4 : 6;

const sdk::PropertyRecord properties[] = {
    {"YieldTicks", "Integer", kPropertyFlags, sdk::FieldAt(offsetof(Data, yieldTicks)),
     sdk::FieldAt(offsetof(Data, yieldTicks))},
    {"Number", "Integer", 6, sdk::FieldAt(offsetof(Data, number)), sdk::kNoAccess},
    {"Level", "Integer", 6, sdk::ComputedAs<"Integer", &Level>(), sdk::AssignedAs<"Integer", &SetLevel>()},
    {"Spare", "Integer", 6, sdk::FieldAt(offsetof(Data, spare) + (kFault == kMisalignField ? 1 : 4)), sdk::kNoAccess},
    {"Wide", kFault == kOverlapFields ? "Int64" : "Integer", 6,
     sdk::FieldAt(kFault == kOverlapFields ? offsetof(Data, yieldTicks) : offsetof(Data, cell)), sdk::kNoAccess},
};

const sdk::ConstantRecord constants[] = {{"NumberLow = 1", nullptr, kFault == kContradictingConstant ? 2 : 0},
                                         {"NumberHigh = &h00000064", nullptr, 0}};

sdk::ClassDefinition faulty{.version = kFault == kNoVersionInClass ? 1 : sdk::kInterfaceVersion,
                            .name = "Faulty",
                            .instanceDataSize = sizeof(Data),
                            .properties = properties,
                            .propertyCount = 5,
                            .events = events,
                            .eventCount = 1,
                            .constants = constants,
                            .constantCount = 2};

}  // namespace

#if FAULT == 16
extern "C" __attribute__((visibility("default"))) int FaultyExtra() { return 1; }
#elif FAULT == 17
extern "C" const char* zlibVersion();
#endif

TEST_PLUGIN_ENTRY(sdk::EntryFunction entry) {
    KeepResolver(entry);
    if (kFault == kCrashAtStart) Crash();
    if (kFault == kHangAtStart) Hang();
    if (kFault == kAskForUnknown) resolver("FlyToTheMoon");
    if (kFault != kStateVersionLate) CallHost(sdk::kRegisterPluginVersion, sdk::kInterfaceVersion);
#if FAULT == 17
    if (!zlibVersion()) return 0;
#endif
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
        Method<"Weigh(text as string) as integer", &Weigh>(flags),
        Method<"Report as boolean", &Report>(flags),
        Method<"Take(source as Faulty)", &Take>(flags),
        Method<"Refuse(number as integer)", &Refuse>(flags),
        Method<"Pick(a as integer) as integer", &PickOne>(flags),
        Method<"Pick(a as integer, b as integer) as integer", &PickTwo>(flags),
        kFault == kAmbiguousOverloads ? Method<"Other(a as integer, b as integer = 1) as integer", &PickTwo>(flags)
                                      : Method<"Other(a as integer, b as integer) as integer", &PickTwo>(flags),
        Method<"Other(a as integer, b as double = 1) as integer", &PickOther>(flags),
        kFault == kForeignCode
            ? sdk::MethodRecord{reinterpret_cast<sdk::AnyFunction>(&getpagesize), nullptr, "Odd as integer", flags}
            : Method<"Odd as integer", &Odd>(flags),
        kFault == kUnreadableDeclaration
            ? sdk::MethodRecord{reinterpret_cast<sdk::AnyFunction>(&Odd), nullptr, "Even as", flags}
            : Method<"Even as integer", &Odd>(flags),
    };
    faulty.methods = methods;
    faulty.methodCount = static_cast<std::int32_t>(std::size(methods));
    const std::int32_t registered = CallHost(sdk::kPluginRegisterClass, &faulty);
    if (kFault == kStateVersionLate) CallHost(sdk::kRegisterPluginVersion, sdk::kInterfaceVersion);
    return registered;
}
