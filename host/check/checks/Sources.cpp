// What is only read: see the habits in Check.h.
#include <ctime>

#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Digest.h"
#include "host/check/Passes.h"
#include "host/check/Watch.h"

namespace host::check {

namespace {

bool IsSource(const Parameter& parameter) {
    const std::string name = LowerName(parameter.name);
    return name.starts_with("source") || name.starts_with("orig") || SameName(parameter.type.className, "Picture");
}

// Whether the instance is: the method gives another one of its class.
bool GivesAnother(const Case& one) {
    return one.action == Action::Call && SameName(one.method->declaration.result.className, one.type->name());
}

bool HasSource(const Case& one) {
    if (one.action != Action::Call) return false;
    bool any = GivesAnother(one);
    for (const Parameter& parameter : one.method->declaration.parameters)
        any |= parameter.type.kind == Kind::Object && IsSource(parameter);
    return any;
}

// Digests of all that is to stay as it is.
struct Before {
    std::uint64_t self = 0;
    std::vector<std::uint64_t> arguments;

    Before(const Case& one, const Prepared& prepared) {
        if (GivesAnother(one)) self = DigestOf(Value(prepared.self()));
        for (std::size_t i = 0; i < one.method->declaration.parameters.size(); ++i)
            arguments.push_back(IsSource(one.method->declaration.parameters[i]) ? DigestOf(prepared.arguments()[i])
                                                                                : 0);
        Runtime::Get().TakeRaised();
    }
};

Complaint PerformCompared(const Case& one) {
    Prepared prepared(one);
    Runtime::Get().TakeRaised();
    if (!prepared.IsReady()) return {};
    FillWithBytes(prepared.self());
    for (const Value& argument : prepared.arguments())
        if (argument.object()) FillWithBytes(Ref<Object>::Share(argument.object()));
    const Before before(one, prepared);
    const Value result = prepared.Perform();
    Runtime::Get().TakeRaised();
    const Before after(one, prepared);
    if (result.object() != prepared.self().get() && after.self != before.self)
        return {kWrongResult, "the instance is not as it was, although the method gives another"};
    for (std::size_t i = 0; i < after.arguments.size(); ++i)
        if (after.arguments[i] != before.arguments[i])
            return {kWrongResult, one.method->declaration.parameters[i].name + " is not as it was"};
    return {};
}

}  // namespace

Outcomes CheckSources(Context& context) {
    std::vector<Case> cases = AllCases(Narrowed(context.TheSupply(), false));
    std::erase_if(cases, [](const Case& one) { return !HasSource(one); });
    if (cases.empty()) return Only("sources", {CheckStatus::Skip, 0, "nothing is known to be only read", "", {}});
    ChildrenJob job = context.Job();
    job.run = [&](std::size_t i) { return PerformCompared(cases[i]); };
    const ChildrenReport report = RunCases(cases, job);
    Outcome outcome{CheckStatus::Pass, report.run, Counted(report.run, "call"), "", {}};
    const auto script = [&](std::size_t i) {
        return cases[i].Script().insert(cases[i].instance->script("p").size(), FillScript(*cases[i].type, "p"));
    };
    JudgeSlow(outcome, report, script);
    Judge(outcome, report, script);
    return Only("sources", outcome);
}

}  // namespace host::check
