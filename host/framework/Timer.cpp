// Timers by the moment at which they are due, and the event of each that is.
#include "host/framework/Timer.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include "host/calls/Call.h"
#include "host/framework/Support.h"

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

enum Mode : std::int32_t { kOff = 0, kSingle = 1, kMultiple = 2 };

struct TimerData {
    std::int32_t period;  // milliseconds; below 1 counts as 1
    std::int32_t mode;
    Clock::rep due;
    bool handling;
};

constexpr std::int32_t kFirstPeriod = 1000;

sdk::ClassDefinition definition{.name = "Timer", .instanceDataSize = sizeof(TimerData)};
sdk::EventRecord events[] = {{"Action()", 0}};

// The timers that are not off, borrowed: each leaves the list when it goes.
std::vector<Object*>& RunningTimers() {
    static std::vector<Object*> timers;
    return timers;
}

TimerData& Data(sdk::Object* timer) { return DataOf<TimerData>(timer, definition); }

Clock::rep Now() { return Clock::now().time_since_epoch().count(); }

void SetDue(TimerData& data) {
    const auto wait = std::chrono::milliseconds(std::max(data.period, 1));
    data.due = Now() + std::chrono::duration_cast<Clock::duration>(wait).count();
}

// --- Members --------------------------------------------------------------------------------

void Construct(sdk::Object* timer) { Data(timer).period = kFirstPeriod; }
void Destroy(sdk::Object* timer) { std::erase(RunningTimers(), FromPlugin(timer)); }

std::int32_t Period(sdk::Object* timer) { return Data(timer).period; }

void SetPeriod(sdk::Object* timer, std::int32_t milliseconds) {
    Data(timer).period = milliseconds;
    SetDue(Data(timer));
}

std::int32_t GetMode(sdk::Object* timer) { return Data(timer).mode; }

void SetMode(sdk::Object* timer, std::int32_t mode) {
    if (mode < kOff || mode > kMultiple) Fail(kDataRaises.timerMode(mode));
    Data(timer).mode = mode;
    std::erase(RunningTimers(), FromPlugin(timer));
    if (mode != kOff) RunningTimers().push_back(FromPlugin(timer));
    SetDue(Data(timer));
}

void Reset(sdk::Object* timer) { SetDue(Data(timer)); }

// --- Firing ---------------------------------------------------------------------------------

void Fire(Object* timer) {
    TimerData& data = Data(timer);
    if (data.mode == kSingle) SetMode(timer, kOff);
    SetDue(data);
    data.handling = true;
    const Event* action = timer->type->FindEvent("Action");
    Runtime::Get().RunGuarded([&] {
        Value nothing;
        RaiseEvent(*action, timer, {}, nothing);
        return Value();
    });
    data.handling = false;
}

void FireWhatIsDue() {
    // A copy that keeps them alive: an event may let go of any timer.
    std::vector<Ref<Object>> timers;
    for (Object* timer : RunningTimers()) timers.push_back(Ref<Object>::Share(timer));
    for (const Ref<Object>& timer : timers) {
        const TimerData& data = Data(timer.get());
        if (data.mode != kOff && !data.handling && Now() >= data.due) Fire(timer.get());
    }
}

}  // namespace

void RegisterTimer(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::Method<"Reset", Guarded<&Reset>>(sdk::kMemberPortable),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadWrite<"Integer", &Period, &SetPeriod>("Period"),
        ReadWrite<"Integer", &GetMode, &SetMode>("Mode"),
    };
    static const sdk::ConstantRecord constants[] = {
        {"ModeOff = 0", nullptr, 0}, {"ModeSingle = 1", nullptr, 0}, {"ModeMultiple = 2", nullptr, 0}};
    definition.constructor = &Construct;
    definition.destructor = &Destroy;
    definition.events = events;
    definition.eventCount = std::size(events);
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    SetConstants(definition, constants);
    RegisterOrAbort(runtime, definition);
    runtime.OnYield(&FireWhatIsDue);
}

}  // namespace host
