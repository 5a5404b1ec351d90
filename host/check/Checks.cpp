#include "host/check/Checks.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <map>
#include <set>

#include "host/calls/Call.h"
#include "host/calls/Overload.h"
#include "host/calls/Runtime.h"
#include "host/check/Children.h"
#include "host/check/Digest.h"
#include "host/check/Watch.h"

namespace host::check {

namespace {

Runtime& TheRuntime() { return Runtime::Get(); }

// Makes the case's objects, does it and lets go of everything.
Complaint PerformOnce(const Case& one) {
    Prepared prepared(one);
    TheRuntime().TakeRaised();
    if (!prepared.IsReady()) return {};
    const Value result = prepared.Perform();
    TheRuntime().TakeRaised();
    const std::string problem = prepared.ObjectProblem(result);
    return {kReferences, problem};
}

// --- Reports -----------------------------------------------------------------------------------

// What other calls of a member get that was slow once: nearly all take microseconds.
constexpr double kPatienceWithSlow = 0.2;

// Runs cases so that a call that was slow once is left out on other instances.
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

// Fills in what went wrong, from the failure with the shortest script.
void Fail(CheckResult& result, const std::vector<Failure>& failures,
          const std::function<std::string(std::size_t)>& script) {
    for (const Failure& failure : failures) {
        const std::string text = script(failure.index);
        if (!result.ok && text.size() >= result.script.size()) continue;
        result.ok = false;
        result.detail = failure.complaint.text;
        result.script = text;
    }
    if (failures.size() > 1) result.detail += " (" + std::to_string(failures.size()) + " cases fail)";
}

std::vector<Failure> OfKind(const std::vector<Failure>& failures, ComplaintKind kind) {
    std::vector<Failure> found;
    for (const Failure& failure : failures)
        if (!failure.crashed && failure.complaint.kind == kind) found.push_back(failure);
    return found;
}

std::vector<Failure> Crashes(const std::vector<Failure>& failures) {
    std::vector<Failure> found;
    for (const Failure& failure : failures)
        if (failure.crashed) found.push_back(failure);
    return found;
}

std::string SlowText(const ChildrenReport& report) {
    return report.slow.empty() ? "" : ", " + std::to_string(report.slow.size()) + " ended as too slow";
}

std::string InstancesText(const Supply& supply) {
    std::set<std::string> labels;
    for (const InstancePtr& instance : supply.instances) labels.insert(instance->label);
    std::string text;
    for (const std::string& label : labels) text += (text.empty() ? "" : ", ") + label;
    return std::to_string(supply.instances.size()) + " instances (" + text + ")";
}

// A supply whose instances all get the usual arguments only; of each constructor just the first
// instance when `firstOnly`.
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

}  // namespace

// --- Calls ---------------------------------------------------------------------------------------

std::vector<CheckResult> CheckCalls(const Supply& supply, double secondsPerCall) {
    const std::vector<Case> cases = AllCases(supply);
    ChildrenJob job;
    job.secondsPerCase = secondsPerCall;
    job.run = [&](std::size_t i) {
        const Watch watch;
        Complaint complaint = PerformOnce(cases[i]);
        if (complaint.text.empty()) complaint = watch.Damage();
        if (complaint.text.empty() && watch.Yields() > 0) complaint = {kYields, "it yields without being asked to"};
        if (!complaint.text.empty() || watch.LeavesNothing()) return complaint;
        // Something may be kept for good reason, once; a second time it is a leak.
        const Watch again;
        PerformOnce(cases[i]);
        return again.LeftAlive();
    };
    job.endsChild = [&](std::size_t i) { return cases[i].action == Action::CallShared; };
    const ChildrenReport report = RunCases(cases, job);
    const auto script = [&](std::size_t i) { return cases[i].Script(); };
    const std::string tried = std::to_string(report.run) + " calls";
    CheckResult calls{"calls", true, report.run, tried + " on " + InstancesText(supply) + SlowText(report), ""};
    CheckResult references{"references", true, report.run, "nothing is left alive, nothing given up twice", ""};
    CheckResult guards{"guard bytes", true, report.run, "no write beside memory of the host", ""};
    CheckResult yields{"unasked yields", true, report.run, "none", ""};
    Fail(calls, Crashes(report.failures), script);
    Fail(references, OfKind(report.failures, kReferences), script);
    Fail(guards, OfKind(report.failures, kGuards), script);
    Fail(yields, OfKind(report.failures, kYields), script);
    return {calls, references, guards, yields};
}

// --- Repetition ------------------------------------------------------------------------------------

namespace {

std::uint64_t DigestAfter(const Case& one, int garbage) {
    std::srand(1);
    srand48(1);
    // What is read before it is written is something else each time.
    mallopt(M_PERTURB, garbage);
    Prepared prepared(one);
    TheRuntime().TakeRaised();
    if (!prepared.IsReady()) return 0;
    if (prepared.self()) FillWithBytes(prepared.self());
    const Value result = prepared.Perform();
    const Ref<Object> raised = TheRuntime().TakeRaised();
    std::uint64_t digest = DigestOf(result) + 3 * DigestOf(Value(MessageOf(raised.get())));
    if (prepared.self()) digest += 5 * DigestOf(Value(prepared.self()));
    for (const Value& argument : prepared.arguments()) digest = 7 * digest + DigestOf(argument);
    TheRuntime().TakeRaised();
    return digest;
}

}  // namespace

namespace {

// Cases that leave something else when they are done again in the same process.
ChildrenReport FindVarying(const std::vector<Case>& cases, double secondsPerCall) {
    ChildrenJob job;
    job.secondsPerCase = 2 * secondsPerCall;
    job.mostFailures = cases.size();
    job.run = [&](std::size_t i) -> Complaint {
        if (DigestAfter(cases[i], 0x55) == DigestAfter(cases[i], 0xAA)) return {};
        return {kWrongResult, "two calls with the same input leave different bytes"};
    };
    job.endsChild = [&](std::size_t i) { return cases[i].action == Action::CallShared; };
    return RunCases(cases, job);
}

// The digest of each case by itself in a process where nothing was called before.
std::map<std::size_t, std::uint64_t> DigestsAlone(const std::vector<const Case*>& cases, int garbage, double seconds) {
    ChildrenJob job;
    job.count = cases.size();
    job.secondsPerCase = seconds;
    job.run = [&](std::size_t i) { return Complaint{0, "", false, DigestAfter(*cases[i], garbage)}; };
    job.endsChild = [](std::size_t) { return true; };
    return RunInChildren(job).values;
}

std::string RepetitionScript(const Case& one) {
    std::string script = one.Script();
    if (!one.instance) return script;
    return script.insert(one.instance->script("p").size(), FillScript(*one.type, "p"));
}

}  // namespace

CheckResult CheckRepetition(const Supply& supply, double secondsPerCall) {
    const std::vector<Case> cases = AllCases(Narrowed(supply, false));
    const ChildrenReport report = FindVarying(cases, secondsPerCall);
    CheckResult result{"repetition", true, report.run, std::to_string(report.run) + " calls give the same bytes twice",
                       ""};
    Fail(result, Crashes(report.failures), [&](std::size_t i) { return RepetitionScript(cases[i]); });
    if (!result.ok) return result;
    // What varies may do so because of the calls before it. That is told, but is no failure: alone
    // in a fresh process it has to be the same.
    std::vector<const Case*> varying;
    for (const Failure& failure : report.failures) varying.push_back(&cases[failure.index]);
    const auto first = DigestsAlone(varying, 0x55, secondsPerCall);
    const auto second = DigestsAlone(varying, 0xAA, secondsPerCall);
    std::vector<Failure> failures;
    std::set<std::string> dependent;
    for (std::size_t i = 0; i < varying.size(); ++i) {
        if (first.count(i) && second.count(i) && first.at(i) == second.at(i))
            dependent.insert(varying[i]->method ? varying[i]->method->declaration.name : varying[i]->property->name);
        else
            failures.push_back(report.failures[i]);
    }
    for (const std::string& name : dependent) result.detail += ", " + name + " after the same calls only";
    Fail(result, failures, [&](std::size_t i) { return RepetitionScript(cases[i]); });
    return result;
}

// --- Failing host functions --------------------------------------------------------------------------

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

struct Failing {
    HostFunctionRecord* record;
    std::int64_t call;  // 0: every call

    std::string Text() const {
        return "' " + std::string(record->name) +
               (call == 0 ? " always fails" : " fails at call " + std::to_string(call)) + " in the last line\n";
    }
};

std::vector<Failing> AllFailing() {
    std::vector<Failing> all;
    for (HostFunctionRecord* record : TheRuntime().HostFunctions()) {
        if (IsSpared(record->name)) continue;
        for (std::int64_t call = 0; call <= 3; ++call) all.push_back({record, call});
    }
    return all;
}

Complaint PerformFailing(const Case& one, const Failing& failing) {
    const Watch watch;
    bool called = false;
    {
        Prepared prepared(one);
        TheRuntime().TakeRaised();
        if (!prepared.IsReady()) return {};
        const std::int64_t before = failing.record->calls;
        if (failing.call == 0)
            failing.record->FailAlways();
        else
            failing.record->FailCall(failing.call);
        const Value result = prepared.Perform();
        failing.record->FailNever();
        TheRuntime().TakeRaised();
        called = failing.record->calls > before;
        const std::string problem = prepared.ObjectProblem(result);
        if (!problem.empty()) return {kReferences, problem};
    }
    if (const Complaint damage = watch.Damage(); !damage.text.empty()) return damage;
    return called && !GivesUpReferences(failing.record->name) ? watch.LeftAlive() : Complaint{};
}

}  // namespace

CheckResult CheckFailingHost(const Supply& supply, double secondsPerCall) {
    const Supply narrowed = Narrowed(supply, true);
    std::vector<Case> cases = FirstLists(narrowed);
    std::erase_if(cases, [](const Case& one) { return one.action == Action::CallShared; });
    const std::vector<Failing> failing = AllFailing();
    ChildrenJob job;
    job.secondsPerCase = secondsPerCall;
    job.count = cases.size() * failing.size();
    const auto caseOf = [&](std::size_t i) -> const Case& { return cases[i % cases.size()]; };
    const auto failingOf = [&](std::size_t i) -> const Failing& { return failing[i / cases.size()]; };
    job.run = [&](std::size_t i) { return PerformFailing(caseOf(i), failingOf(i)); };
    const ChildrenReport report = RunInChildren(job);
    const std::size_t functions = failing.size() / 4;
    CheckResult result{"host functions", true, report.run,
                       "each of " + std::to_string(functions) + " failing in turn does no harm" + SlowText(report), ""};
    Fail(result, report.failures, [&](std::size_t i) { return failingOf(i).Text() + caseOf(i).Script(); });
    return result;
}

// --- Yields --------------------------------------------------------------------------------------------

namespace {

// The property that asks for yields, see Check.h; null if there is none.
const Property* YieldProperty(const Class& type) {
    for (const Property& property : type.properties())
        if (property.type.kind == Kind::Integer && property.writable() &&
            LowerName(property.name).find("yield") != std::string::npos)
            return &property;
    return nullptr;
}

std::vector<Case> YieldCases(const Supply& supply, bool firstOnly) {
    std::vector<Case> cases = FirstLists(Narrowed(supply, firstOnly));
    std::erase_if(cases, [](const Case& one) {
        const bool calls = one.action == Action::Call || one.action == Action::Assign;
        return !calls || !YieldProperty(*one.type);
    });
    return cases;
}

std::string YieldScript(const Case& one, std::int32_t interval) {
    std::string script = one.Script();
    const std::size_t made = one.instance->script("p").size();
    return script.insert(made, "p." + YieldProperty(*one.type)->name + " = " + std::to_string(interval) + "\n");
}

// Yields during a case with an interval.
std::int64_t YieldsOf(const Case& one, std::int32_t interval) {
    Prepared prepared(one);
    TheRuntime().TakeRaised();
    if (!prepared.IsReady()) return 0;
    SetProperty(*YieldProperty(*one.type), prepared.self().get(), Value(interval));
    const Watch watch;
    const Value result = prepared.Perform();
    TheRuntime().TakeRaised();
    return watch.Yields();
}

}  // namespace

CheckResult CheckAskedYields(const Supply& supply, double secondsPerCall) {
    const std::vector<Case> cases = YieldCases(supply, false);
    CheckResult result{"asked yields", true, 0, "no class asks for any", ""};
    if (cases.empty()) return result;
    ChildrenJob job;
    job.secondsPerCase = secondsPerCall;
    job.run = [&](std::size_t i) -> Complaint {
        for (const std::int32_t interval : {0, -1, INT32_MIN})
            if (YieldsOf(cases[i], interval) > 0)
                return {kYields, "it yields at an interval of " + std::to_string(interval)};
        return {0, "", YieldsOf(cases[i], 1) > 0};
    };
    const ChildrenReport report = RunCases(cases, job);
    result.cases = report.run;
    result.detail = std::to_string(report.counted) + " of " + std::to_string(cases.size()) +
                    " calls yield at an interval of 1 tick, none at 0 or below";
    std::vector<Failure> failures = OfKind(report.failures, kYields);
    const std::vector<Failure> crashes = Crashes(report.failures);
    failures.insert(failures.end(), crashes.begin(), crashes.end());
    Fail(result, failures, [&](std::size_t i) { return YieldScript(cases[i], 0); });
    if (result.ok && report.counted == 0) {
        result.ok = false;
        result.detail = "no call yields at an interval of 1 tick";
        result.script = YieldScript(cases.front(), 1);
    }
    return result;
}

// --- Re-entry ------------------------------------------------------------------------------------------

namespace {

// What script code does to the objects of a call while it yields.
enum class Meanwhile { SameCall, Construct, Commands, CommandsLater };
constexpr std::size_t kMeanwhileCount = 4;

// A yield comes again only after a tick.
constexpr timespec kLongerThanATick{0, 18'000'000};

std::string MeanwhileText(Meanwhile meanwhile) {
    switch (meanwhile) {
        case Meanwhile::SameCall:
            return "' the first yield makes the same call again\n";
        case Meanwhile::Construct:
            return "' the first yield constructs p anew\n";
        case Meanwhile::Commands:
            return "' the first yield calls all of p that has no arguments and no result\n";
        default:
            return "' the second yield calls all of p that has no arguments and no result\n";
    }
}

void RunCommands(Object* object) {
    if (!object) return;
    for (const Method& method : object->type->methods()) {
        if (!IsPlainCommand(method)) continue;
        Invoke(method, object, {});
        TheRuntime().TakeRaised();
    }
}

void DoMeanwhile(Meanwhile meanwhile, const Case& one, Prepared& prepared) {
    if (meanwhile == Meanwhile::SameCall) {
        const Value result = prepared.Perform();
    } else if (meanwhile == Meanwhile::Construct) {
        if (!one.instance->constructor) return;
        std::vector<Value> values;
        for (const Expression& argument : one.instance->arguments) values.push_back(argument.make());
        Choice choice = ChooseOverload({&one.instance->constructor, 1}, values);
        if (choice.method) Invoke(*choice.method, prepared.self().get(), choice.arguments);
    } else {
        RunCommands(prepared.self().get());
        for (const Value& argument : prepared.arguments())
            if (argument.object() && argument.object()->type == one.type) RunCommands(argument.object());
    }
    TheRuntime().TakeRaised();
}

Complaint PerformDisturbed(const Case& one, Meanwhile meanwhile) {
    const Watch watch;
    {
        Prepared prepared(one);
        TheRuntime().TakeRaised();
        if (!prepared.IsReady()) return {};
        SetProperty(*YieldProperty(*one.type), prepared.self().get(), Value(1));
        const int at = meanwhile == Meanwhile::CommandsLater ? 2 : 1;
        int yields = 0;
        const int callback = TheRuntime().OnYield([&] {
            if (++yields == at)
                DoMeanwhile(meanwhile, one, prepared);
            else if (yields < at)
                nanosleep(&kLongerThanATick, nullptr);
        });
        const Value result = prepared.Perform();
        TheRuntime().RemoveYield(callback);
        TheRuntime().TakeRaised();
        const std::string problem = prepared.ObjectProblem(result);
        if (!problem.empty()) return {kReferences, problem};
    }
    const Complaint damage = watch.Damage();
    return damage.text.empty() ? watch.LeftAlive() : damage;
}

}  // namespace

CheckResult CheckReentry(const Supply& supply, double secondsPerCall) {
    const std::vector<Case> cases = YieldCases(supply, true);
    CheckResult result{"re-entry", true, 0, "no class asks for yields", ""};
    if (cases.empty()) return result;
    ChildrenJob job;
    job.secondsPerCase = secondsPerCall;
    job.count = cases.size() * kMeanwhileCount;
    const auto caseOf = [&](std::size_t i) -> const Case& { return cases[i % cases.size()]; };
    const auto meanwhileOf = [&](std::size_t i) { return static_cast<Meanwhile>(i / cases.size()); };
    // Waiting for a second yield takes its time: on the first instance only.
    job.skip = [&](std::size_t i) {
        return meanwhileOf(i) == Meanwhile::CommandsLater && caseOf(i).instance != cases.front().instance;
    };
    job.run = [&](std::size_t i) { return PerformDisturbed(caseOf(i), meanwhileOf(i)); };
    const ChildrenReport report = RunInChildren(job);
    result.cases = report.run;
    result.detail = std::to_string(report.run) + " calls are disturbed in a yield without harm" + SlowText(report);
    Fail(result, report.failures,
         [&](std::size_t i) { return MeanwhileText(meanwhileOf(i)) + YieldScript(caseOf(i), 1); });
    return result;
}

}  // namespace host::check
