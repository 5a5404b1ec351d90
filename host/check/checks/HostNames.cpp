// The names of host functions, those included that a plug-in asks for only when it needs them.
#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Passes.h"
#include "host/check/Startup.h"
#include "host/check/Watch.h"

namespace host::check {

namespace {

// The first name from one on that the host does not have; empty when it has all.
std::string FirstUnknown(const std::vector<std::string>& names, std::size_t from) {
    for (std::size_t i = from; i < names.size(); ++i)
        if (!Runtime::Get().FindHostFunction(names[i])) return names[i];
    return "";
}

void PerformQuietly(const Case& one) {
    Prepared prepared(one);
    if (prepared.IsReady()) prepared.Perform();
    Runtime::Get().TakeRaised();
}

std::string AskedText(const std::string& name) { return "it asks for " + name + ", which no host is known to have"; }

}  // namespace

Outcomes CheckHostNames(Context& context) {
    const std::vector<Case> cases = FirstLists(context.TheSupply());
    const std::vector<std::string>& names = StartRecorded(context.path()).names;
    Outcome outcome{CheckStatus::Pass, 0, "all are known", "", {}};
    if (const std::string unknown = FirstUnknown(names, 0); !unknown.empty())
        outcome.Convict(CheckStatus::Warn, AskedText(unknown) + ", when it is loaded");
    const std::size_t known = names.size();
    ChildrenJob job = context.Job();
    job.run = [&](std::size_t i) -> Complaint {
        PerformQuietly(cases[i]);
        const std::string unknown = FirstUnknown(names, known);
        return unknown.empty() ? Complaint{} : Complaint{kWrongResult, AskedText(unknown)};
    };
    const ChildrenReport report = RunCases(cases, job);
    outcome.cases = report.run;
    for (const Failure& failure : report.failures)
        if (!failure.crashed) outcome.Convict(CheckStatus::Warn, failure.complaint.text, cases[failure.index].Script());
    return Only("host-names", outcome);
}

}  // namespace host::check
