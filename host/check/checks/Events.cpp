// Events, raised as a plug-in raises them.
#include "host/calls/Call.h"
#include "host/calls/HostFunctionSlot.h"
#include "host/calls/Overload.h"
#include "host/calls/Runtime.h"
#include "host/check/Checks.h"
#include "host/check/Digest.h"
#include "host/check/Findings.h"
#include "host/check/Passes.h"

namespace host::check {

namespace {

void LookAtEvent(Findings& findings, const Class& type, const Event& event) {
    const std::string name = type.name() + "." + event.declaration.name;
    findings.Expect(event.declaration.parameters.size() <= kMostParameters, name,
                    "takes more than " + std::to_string(kMostParameters) + " arguments");
    for (const Parameter& parameter : event.declaration.parameters)
        findings.Expect(!parameter.byRef && !parameter.paramArray, name,
                        "can't be raised: " + parameter.name + " is ByRef or a ParamArray");
}

// An instance of a class that handles the event and keeps what it was given.
struct Handled {
    std::vector<Value> seen;
    Ref<Object> object;

    Handled(const Class& type, const Event& event) {
        static int number = 0;
        auto handling = std::make_unique<Class>("Handling" + std::to_string(++number), &type);
        handling->AddEventHandler({&event,
                                   [this, &event](Object*, std::span<Value> arguments) {
                                       seen.assign(arguments.begin(), arguments.end());
                                       return DefaultOf(event.declaration.result);
                                   },
                                   nullptr});
        object = NewObject(*Runtime::Get().AddClass(std::move(handling)));
    }
};

std::vector<Value> UsualArguments(const Event& event, const Class& type, const Supply& supply) {
    const auto lists = ArgumentLists(event.declaration, type, supply, false);
    std::vector<Value> values;
    for (const Expression& expression : lists.front())
        values.push_back(ConvertTo(expression.make(), event.declaration.parameters[values.size()].type));
    return values;
}

// What is wrong with a call through the function that a plug-in gets.
std::string RaiseAndCompare(const Class& type, const Event& event, const Supply& supply) {
    Handled handled(type, event);
    const sdk::AnyFunction function =
        HostFunctionSlot<sdk::kGetEventInstancePPC>::Call(handled.object.get(), event.number);
    if (!function) return "has no function, although it is handled";
    const std::vector<Value> arguments = UsualArguments(event, type, supply);
    std::shared_ptr<CallPlan> plan;
    CallFunction(function, event.declaration, true, handled.object.get(), arguments, plan);
    if (Runtime::Get().TakeRaised()) return "raises an exception when it is handled";
    if (handled.seen.size() != arguments.size()) return "does not reach its handler";
    for (std::size_t i = 0; i < arguments.size(); ++i)
        if (DigestOf(handled.seen[i]) != DigestOf(arguments[i]))
            return "gives its handler something else for " + event.declaration.parameters[i].name;
    return "";
}

}  // namespace

Outcomes CheckEvents(Context& context) {
    Findings findings;
    std::int64_t count = 0;
    for (const Class* type : context.Classes())
        for (const Event& event : type->events()) {
            ++count;
            LookAtEvent(findings, *type, event);
            if (!findings.AllHold()) continue;
            const std::string problem = RaiseAndCompare(*type, event, context.TheSupply());
            findings.Expect(problem.empty(), type->name() + "." + event.declaration.name, problem);
        }
    if (count == 0) return Only("events", {CheckStatus::Skip, 0, "there are none", "", {}});
    return Only("events", findings.Judged(Counted(count, "event") + " raised"));
}

}  // namespace host::check
