// Every case once, watched for all that must not happen.
#include <map>

#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Passes.h"
#include "host/check/Watch.h"

namespace host::check {

namespace {

// An exception's text is made to be read: some text, without control characters.
Complaint ComplainOfException(const Object* exception) {
    if (!exception) return {};
    const std::string text = MessageOf(exception);
    const std::string name = exception->type->name();
    if (SameName(name, "RuntimeException") && text == "An exception without an object was raised.")
        return {kExceptions, "it raises an exception without an object"};
    if (text.empty()) return {kExceptions, "it raises a " + name + " without a text"};
    for (const unsigned char byte : text)
        if (byte < ' ') return {kExceptions, "it raises a " + name + " whose text has control characters"};
    return {};
}

// Makes the case's objects, does it and lets go of everything.
Complaint PerformOnce(const Case& one) {
    Runtime& runtime = Runtime::Get();
    Prepared prepared(one);
    runtime.TakeRaised();
    if (!prepared.IsReady()) return {};
    const Value result = prepared.Perform();
    const Ref<Object> raised = runtime.TakeRaised();
    const std::string problem = prepared.ObjectProblem(result);
    return problem.empty() ? ComplainOfException(raised.get()) : Complaint{kReferences, problem};
}

Complaint PerformWatched(const Case& one) {
    const Watch watch;
    Complaint complaint = PerformOnce(one);
    if (complaint.text.empty()) complaint = watch.Damage();
    if (complaint.text.empty() && watch.Yields() > 0) complaint = {kYields, "it yields without being asked to"};
    if (!complaint.text.empty() || watch.LeavesNothing()) return complaint;
    // Something may be kept for good reason, once; a second time it is a leak.
    const Watch again;
    PerformOnce(one);
    return again.LeftAlive();
}

std::string InstancesText(const Supply& supply) {
    std::set<std::string> labels;
    for (const InstancePtr& instance : supply.instances) labels.insert(instance->label);
    std::string text;
    for (const std::string& label : labels) text += (text.empty() ? "" : ", ") + label;
    return Counted(static_cast<std::int64_t>(supply.instances.size()), "instance") + " (" + text + ")";
}

Outcome OfKind(const ChildrenReport& report, const ScriptOfCase& script, ComplaintKind kind, const char* praise) {
    Outcome outcome{CheckStatus::Pass, report.run, praise, "", {}};
    Judge(outcome, report, script, {kind});
    return outcome;
}

}  // namespace

Outcomes CheckCalls(Context& context) {
    const Supply& supply = context.TheSupply();
    const std::vector<Case> cases = AllCases(supply);
    ChildrenJob job = context.Job();
    job.run = [&](std::size_t i) { return PerformWatched(cases[i]); };
    job.endsChild = [&](std::size_t i) { return cases[i].action == Action::CallShared; };
    const ChildrenReport report = RunCases(cases, job);
    const auto script = [&](std::size_t i) { return cases[i].Script(); };
    Outcome calls{CheckStatus::Pass, report.run, Counted(report.run, "call") + " on " + InstancesText(supply), "", {}};
    JudgeSlow(calls, report, script);
    Judge(calls, CrashesOf(report), script);
    for (const Failure& failure : report.failures)
        if (failure.complaint.kind != kExceptions || failure.crashed) calls.members.insert(cases[failure.index].Name());
    return {{"calls", calls},
            {"references", OfKind(report, script, kReferences, "every count is as it was")},
            {"guard-bytes", OfKind(report, script, kGuards, "all are whole")},
            {"unasked-yields", OfKind(report, script, kYields, "none")},
            {"exceptions", OfKind(report, script, kExceptions, "all have both")}};
}

}  // namespace host::check
