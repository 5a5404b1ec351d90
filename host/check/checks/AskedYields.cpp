// Yields at an interval.
#include "host/calls/Call.h"
#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Passes.h"
#include "host/check/Watch.h"
#include "host/check/Yields.h"

namespace host::check {

namespace {

// Yields during a case with an interval.
std::int64_t YieldsOf(const Case& one, std::int32_t interval) {
    Prepared prepared(one);
    Runtime::Get().TakeRaised();
    if (!prepared.IsReady()) return 0;
    SetProperty(*YieldProperty(*one.type), prepared.self().get(), Value(interval));
    const Watch watch;
    const Value result = prepared.Perform();
    Runtime::Get().TakeRaised();
    return watch.Yields();
}

Complaint PerformAtIntervals(const Case& one) {
    for (const std::int32_t interval : {0, -1, INT32_MIN})
        if (YieldsOf(one, interval) > 0) return {kYields, "it yields at an interval of " + std::to_string(interval)};
    return {0, "", YieldsOf(one, 1) > 0};
}

}  // namespace

Outcomes CheckAskedYields(Context& context) {
    const std::vector<Case> cases = YieldCases(context.TheSupply(), false);
    if (cases.empty()) return Only("asked-yields", {CheckStatus::Skip, 0, "no class asks for any", "", {}});
    ChildrenJob job = context.Job();
    job.run = [&](std::size_t i) { return PerformAtIntervals(cases[i]); };
    const ChildrenReport report = RunCases(cases, job);
    Outcome outcome{CheckStatus::Pass,
                    report.run,
                    std::to_string(report.counted) + " of " + Counted(report.run, "call") +
                        " yield at an interval of 1 tick, none at 0 or below",
                    "",
                    {}};
    Judge(outcome, report, [&](std::size_t i) { return YieldScript(cases[i], 0); });
    if (report.counted == 0 && !context.LeftOut().empty())
        outcome.Convict(CheckStatus::Skip, "those that yield are left out");
    else if (report.counted == 0)
        outcome.Convict(CheckStatus::Fail, "no call yields at an interval of 1 tick", YieldScript(cases.front(), 1));
    return Only("asked-yields", outcome);
}

}  // namespace host::check
