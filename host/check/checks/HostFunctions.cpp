// Host functions that fail.
#include <algorithm>

#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Passes.h"
#include "host/check/Watch.h"

namespace host::check {

namespace {

// Functions that a plug-in calls only while it is loaded, and the one whose failure it can't see:
// without its reference an object may be gone, whatever the plug-in does.
bool IsSpared(std::string_view name) {
    const char* const spared[] = {sdk::kPluginRegisterClass.name, sdk::kRegisterPluginVersion.name,
                                  sdk::kREALGetRBVersion.name, sdk::kREALenterMovies.name, sdk::kREALLockObject.name};
    return std::find(std::begin(spared), std::end(spared), name) != std::end(spared);
}

// Without these references stay by nature.
bool GivesUpReferences(std::string_view name) {
    return name == sdk::kREALUnlockObject.name || name == sdk::kREALUnlockString.name;
}

constexpr std::int64_t kMostNumbered = 3;

struct Failing {
    HostFunctionRecord* record;
    std::int64_t call;  // 0: every call

    std::string Text() const {
        return "' " + std::string(record->name) +
               (call == 0 ? " always fails" : " fails at call " + std::to_string(call)) + " in the last line\n";
    }

    void Arm() const {
        if (call == 0)
            record->FailAlways();
        else
            record->FailCall(call);
    }
};

std::vector<Failing> AllFailing() {
    std::vector<Failing> all;
    for (HostFunctionRecord* record : Runtime::Get().HostFunctions()) {
        if (IsSpared(record->name)) continue;
        for (std::int64_t call = 0; call <= kMostNumbered; ++call) all.push_back({record, call});
    }
    return all;
}

// Whether the function was called; or a complaint.
Complaint PerformArmed(const Case& one, const Failing& failing, bool& called) {
    Prepared prepared(one);
    Runtime::Get().TakeRaised();
    if (!prepared.IsReady()) return {};
    const std::int64_t before = failing.record->calls;
    failing.Arm();
    const Value result = prepared.Perform();
    failing.record->FailNever();
    Runtime::Get().TakeRaised();
    called = failing.record->calls > before;
    return {kReferences, prepared.ObjectProblem(result)};
}

Complaint PerformFailing(const Case& one, const Failing& failing) {
    const Watch watch;
    bool called = false;
    if (const Complaint complaint = PerformArmed(one, failing, called); !complaint.text.empty()) return complaint;
    if (const Complaint damage = watch.Damage(); !damage.text.empty()) return damage;
    return called && !GivesUpReferences(failing.record->name) ? watch.LeftAlive() : Complaint{};
}

}  // namespace

Outcomes CheckHostFunctions(Context& context) {
    const Supply narrowed = Narrowed(context.TheSupply(), true);
    std::vector<Case> cases = FirstLists(narrowed);
    std::erase_if(cases, [](const Case& one) { return one.action == Action::CallShared; });
    const std::vector<Failing> failing = AllFailing();
    ChildrenJob job = context.Job();
    job.count = cases.size() * failing.size();
    const auto caseOf = [&](std::size_t i) -> const Case& { return cases[i % cases.size()]; };
    const auto failingOf = [&](std::size_t i) -> const Failing& { return failing[i / cases.size()]; };
    const auto script = [&](std::size_t i) { return failingOf(i).Text() + caseOf(i).Script(); };
    job.run = [&](std::size_t i) { return PerformFailing(caseOf(i), failingOf(i)); };
    const ChildrenReport report = RunInChildren(job);
    const auto functions = static_cast<std::int64_t>(failing.size()) / (kMostNumbered + 1);
    Outcome outcome{CheckStatus::Pass, report.run, Counted(functions, "function") + " failing in turn", "", {}};
    JudgeSlow(outcome, report, script);
    Judge(outcome, report, script);
    return Only("host-functions", outcome);
}

}  // namespace host::check
