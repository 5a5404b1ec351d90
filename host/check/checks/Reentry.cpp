// Scripts that run while a call yields.
#include <ctime>

#include "host/calls/Call.h"
#include "host/calls/Overload.h"
#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Passes.h"
#include "host/check/Watch.h"
#include "host/check/Yields.h"

namespace host::check {

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
        Runtime::Get().TakeRaised();
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
    Runtime::Get().TakeRaised();
}

Complaint PerformDisturbed(const Case& one, Meanwhile meanwhile) {
    const Watch watch;
    {
        Prepared prepared(one);
        Runtime::Get().TakeRaised();
        if (!prepared.IsReady()) return {};
        SetProperty(*YieldProperty(*one.type), prepared.self().get(), Value(1));
        const int at = meanwhile == Meanwhile::CommandsLater ? 2 : 1;
        int yields = 0;
        const int callback = Runtime::Get().OnYield([&] {
            if (++yields == at)
                DoMeanwhile(meanwhile, one, prepared);
            else if (yields < at)
                nanosleep(&kLongerThanATick, nullptr);
        });
        const Value result = prepared.Perform();
        Runtime::Get().RemoveYield(callback);
        Runtime::Get().TakeRaised();
        const std::string problem = prepared.ObjectProblem(result);
        if (!problem.empty()) return {kReferences, problem};
    }
    const Complaint damage = watch.Damage();
    return damage.text.empty() ? watch.LeftAlive() : damage;
}

}  // namespace

Outcomes CheckReentry(Context& context) {
    const std::vector<Case> cases = YieldCases(context.TheSupply(), true);
    if (cases.empty()) return Only("re-entry", {CheckStatus::Skip, 0, "no class asks for yields", "", {}});
    ChildrenJob job = context.Job();
    job.count = cases.size() * kMeanwhileCount;
    const auto caseOf = [&](std::size_t i) -> const Case& { return cases[i % cases.size()]; };
    const auto meanwhileOf = [&](std::size_t i) { return static_cast<Meanwhile>(i / cases.size()); };
    // Waiting for a second yield takes its time: on the first instance only.
    job.skip = [&](std::size_t i) {
        return meanwhileOf(i) == Meanwhile::CommandsLater && caseOf(i).instance != cases.front().instance;
    };
    job.run = [&](std::size_t i) { return PerformDisturbed(caseOf(i), meanwhileOf(i)); };
    const auto script = [&](std::size_t i) { return MeanwhileText(meanwhileOf(i)) + YieldScript(caseOf(i), 1); };
    const ChildrenReport report = RunInChildren(job);
    Outcome outcome{CheckStatus::Pass, report.run, Counted(report.run, "call") + " disturbed in a yield", "", {}};
    JudgeSlow(outcome, report, script);
    Judge(outcome, report, script);
    return Only("re-entry", outcome);
}

}  // namespace host::check
