// Runs the cases of a check and convicts by what became of them.
#include "host/check/Passes.h"

#include <algorithm>

namespace host::check {

namespace {

// What other calls of a member get that was slow once: nearly all take microseconds.
constexpr double kPatienceWithSlow = 0.2;

bool IsMeant(const Failure& failure, const std::set<std::int32_t>& kinds) {
    return kinds.empty() || (!failure.crashed && kinds.count(failure.complaint.kind));
}

}  // namespace

Supply Narrowed(Supply supply, bool firstOnly) {
    std::vector<InstancePtr> instances;
    for (const InstancePtr& instance : supply.instances) {
        if (!instance->constructed || (firstOnly && !instance->first)) continue;
        auto narrow = std::make_shared<Instance>(*instance);
        narrow->broad = false;
        instances.push_back(narrow);
    }
    supply.instances = std::move(instances);
    return supply;
}

std::vector<Case> FirstLists(const Supply& supply) {
    std::vector<Case> cases = AllCases(supply);
    std::erase_if(cases, [](const Case& one) { return one.list > 0; });
    return cases;
}

ChildrenReport RunCases(const std::vector<Case>& cases, ChildrenJob job) {
    std::vector<const Case*> slow;
    job.count = cases.size();
    job.skip = [&](std::size_t i) {
        return std::any_of(slow.begin(), slow.end(), [&](const Case* other) { return other->SameCall(cases[i]); });
    };
    const double seconds = job.secondsPerCase;
    job.secondsOf = [&](std::size_t i) {
        const bool suspect = std::any_of(slow.begin(), slow.end(), [&](const Case* other) {
            return other->method == cases[i].method && other->property == cases[i].property;
        });
        return suspect ? seconds * kPatienceWithSlow : seconds;
    };
    job.noteSlow = [&](std::size_t i) { slow.push_back(&cases[i]); };
    return RunInChildren(job);
}

void Judge(Outcome& outcome, const ChildrenReport& report, const ScriptOfCase& script,
           const std::set<std::int32_t>& kinds) {
    std::int64_t count = 0;
    for (const Failure& failure : report.failures) {
        if (!IsMeant(failure, kinds)) continue;
        outcome.Convict(failure.crashed ? CheckStatus::Crash : CheckStatus::Fail, failure.complaint.text,
                        script(failure.index));
        ++count;
    }
    if (count > 1) outcome.detail += " (" + Counted(count, "case") + ")";
}

ChildrenReport CrashesOf(ChildrenReport report) {
    std::erase_if(report.failures, [](const Failure& failure) { return !failure.crashed; });
    return report;
}

void JudgeSlow(Outcome& outcome, const ChildrenReport& report, const ScriptOfCase& script) {
    for (const std::size_t index : report.slow)
        outcome.Convict(CheckStatus::Timeout,
                        Counted(static_cast<std::int64_t>(report.slow.size()), "call") +
                            " ended for taking too long, not tried again on other instances",
                        script(index));
}

Outcomes Only(const char* id, Outcome outcome) { return {{id, std::move(outcome)}}; }

std::string Counted(std::int64_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace host::check
