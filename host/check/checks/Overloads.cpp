// Overloads that a call can't tell apart.
#include <algorithm>

#include "host/calls/Declaration.h"
#include "host/calls/Overload.h"
#include "host/check/Checks.h"
#include "host/check/Findings.h"
#include "host/check/Passes.h"

namespace host::check {

namespace {

// A call that passes the first `count` arguments, each exactly of the type that one overload declares.
std::optional<Fit> FitOfTypes(const Method& method, const Declaration& passed, std::size_t count) {
    const auto costOf = [&](std::size_t index, const Parameter& parameter, Passing) {
        return passed.parameters[index].type == parameter.type ? 0 : kNoConversion;
    };
    return FitOf(method.declaration.parameters, count, costOf);
}

void LookAtOverloads(Findings& findings, const Class& type, const Method& method,
                     const std::vector<const Method*>& overloads) {
    for (std::size_t count = method.declaration.RequiredCount(); count <= method.declaration.parameters.size();
         ++count) {
        const auto best = BestFits<const Method*>(
            overloads, [&](const Method* other) { return FitOfTypes(*other, method.declaration, count); });
        const bool ambiguous = best.size() > 1 && *best[0] == &method;
        findings.Expect(!ambiguous, type.name() + "." + method.declaration.name,
                        "with " + Counted(static_cast<std::int64_t>(count), "argument") + " may mean " +
                            (ambiguous ? DeclarationText((*best[0])->declaration) + " or " +
                                             DeclarationText((*best[1])->declaration)
                                       : ""));
    }
}

}  // namespace

Outcomes CheckOverloads(Context& context) {
    Findings findings;
    for (const Class* type : context.Classes()) {
        for (const Method& method : type->methods())
            LookAtOverloads(findings, *type, method, type->FindMethods(method.declaration.name));
        for (const Method& method : type->sharedMethods())
            LookAtOverloads(findings, *type, method, type->FindSharedMethods(method.declaration.name));
    }
    return Only("overloads", findings.Judged(Counted(findings.looked(), "call") + " looked at"));
}

}  // namespace host::check
