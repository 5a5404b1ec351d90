// Properties written and read back.
#include "host/calls/Call.h"
#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Digest.h"
#include "host/check/Passes.h"
#include "host/check/Watch.h"

namespace host::check {

namespace {

Value ReadQuietly(const Property& property, Object* self) {
    Value value = GetProperty(property, self);
    Runtime::Get().TakeRaised();
    return value;
}

bool Same(const Value& a, const Value& b) {
    return a.object() || b.object() ? a.object() == b.object() : DigestOf(a) == DigestOf(b);
}

// A field has what it was given. What goes through a function may be brought into a range or refused,
// but a value that was read can be assigned and stays.
Complaint WriteAndRead(const Case& one) {
    Prepared prepared(one);
    Runtime::Get().TakeRaised();
    if (!prepared.IsReady()) return {};
    Object* const self = prepared.self().get();
    const Property& property = *one.property;
    prepared.Perform();
    Runtime::Get().TakeRaised();
    const Value first = ReadQuietly(property, self);
    const bool field = !property.getter.function && !property.setter.function;
    if (field && !Same(first, prepared.arguments().front()))
        return {kWrongResult, "it has another value than was assigned"};
    SetProperty(property, self, first);
    Runtime::Get().TakeRaised();
    if (!Same(ReadQuietly(property, self), first)) return {kWrongResult, "assigning its own value changes it"};
    return {};
}

}  // namespace

Outcomes CheckProperties(Context& context) {
    std::vector<Case> cases = AllCases(context.TheSupply());
    std::erase_if(cases, [](const Case& one) { return one.action != Action::Write || !one.property->readable(); });
    if (cases.empty()) return Only("properties", {CheckStatus::Skip, 0, "none can be assigned to", "", {}});
    ChildrenJob job = context.Job();
    job.run = [&](std::size_t i) { return WriteAndRead(cases[i]); };
    const ChildrenReport report = RunCases(cases, job);
    Outcome outcome{CheckStatus::Pass, report.run, Counted(report.run, "assignment"), "", {}};
    const auto script = [&](std::size_t i) { return cases[i].Script() + "Print p." + cases[i].property->name + "\n"; };
    JudgeSlow(outcome, report, script);
    Judge(outcome, report, script);
    return Only("properties", outcome);
}

}  // namespace host::check
