// Calls: which of several routines or methods is meant, and its arguments as it wants them.
#include <algorithm>

#include "host/script/Checker.h"
#include "host/script/Literal.h"

namespace script {

void Checker::CheckArguments(std::vector<ExpressionPtr>& arguments) {
    for (ExpressionPtr& argument : arguments) CheckValue(argument);
}

// Every method of a name, the script's own before those of the host's class below it.
std::vector<Candidate> Checker::MethodCandidates(const ClassSymbol& type, std::string_view name, bool shared) {
    std::vector<Candidate> candidates;
    for (RoutineSymbol* routine : symbols_.FindRoutines(type, name)) {
        if (routine->shared != shared || routine->event || !MayReach(routine->owner, routine->isPrivate)) continue;
        if (!TakesAssignment(routine->signature)) candidates.push_back({&routine->signature, routine, nullptr});
    }
    const bool constructors = host::SameName(name, "Constructor");
    if (constructors && !candidates.empty()) return candidates;
    for (const NativeMethod* native : shared ? symbols_.SharedMethods(type, name) : symbols_.Methods(type, name)) {
        const bool overridden = std::any_of(candidates.begin(), candidates.end(), [&](const Candidate& nearer) {
            return SameParameters(*nearer.signature, native->signature);
        });
        if (!overridden) candidates.push_back({&native->signature, nullptr, native});
    }
    return candidates;
}

int Checker::ArgumentCost(const ParameterSymbol& parameter, const Expression& argument, host::Passing passing) const {
    const bool element = passing == host::Passing::Element;
    if (!parameter.byRef) return ConversionCost(argument, element ? ElementOf(parameter.type) : parameter.type);
    return argument.type == parameter.type || IsWrong(argument.type) ? 0 : host::kNoConversion;
}

std::optional<host::Fit> Checker::FitOfCall(const Signature& signature,
                                            const std::vector<ExpressionPtr>& arguments) const {
    return host::FitOf(signature.parameters, arguments.size(),
                       [&](std::size_t index, const ParameterSymbol& parameter, host::Passing passing) {
                           return ArgumentCost(parameter, *arguments[index], passing);
                       });
}

// Why a call does not fit the one signature there is.
host::Said Checker::MismatchText(const Signature& signature, const std::vector<ExpressionPtr>& arguments) const {
    const std::size_t required = signature.RequiredCount();
    const std::size_t most = signature.parameters.size();
    const bool open = most > 0 && signature.parameters.back().paramArray;
    const std::string declaration = TextOf(signature);
    if (arguments.size() < required || (arguments.size() > most && !open)) {
        std::string wanted = (open ? "at least " : "") + std::to_string(required);
        if (most != required && !open) wanted += " to " + std::to_string(most);
        const bool one = (open ? required : most) == 1;
        return kCallSays.wrongCount(signature.name, wanted + (one ? " argument" : " arguments"), arguments.size(),
                                    declaration);
    }
    const auto parameterOf = [&](std::size_t i) -> const ParameterSymbol& {
        return signature.parameters[std::min(i, most - 1)];
    };
    const auto fits = [&](std::size_t i) {
        const host::Passing passing = parameterOf(i).paramArray ? host::Passing::Element : host::Passing::Plain;
        return ArgumentCost(parameterOf(i), *arguments[i], passing) != host::kNoConversion;
    };
    std::size_t i = 0;
    while (i + 1 < arguments.size() && fits(i)) ++i;  // one of them does not, or the call would
    const ParameterSymbol& parameter = parameterOf(i);
    const Type type = parameter.paramArray ? ElementOf(parameter.type) : parameter.type;
    const std::string wanted = (parameter.byRef ? "a variable of type " : "") + NameOf(type);
    return kCallSays.wrongArgument(i + 1, signature.name, NameOf(arguments[i]->type), wanted, declaration);
}

void Checker::ReportNoCandidate(const std::vector<Candidate>& candidates, const std::vector<ExpressionPtr>& arguments,
                                bool wantsValue, Position at) {
    if (candidates.size() == 1 && !FitOfCall(*candidates[0].signature, arguments))
        return diagnostics_.Add(at, MismatchText(*candidates[0].signature, arguments));
    if (candidates.size() == 1) return diagnostics_.Add(at, kCallSays.givesNoValue(candidates[0].signature->name));
    std::string types;
    for (const ExpressionPtr& argument : arguments) types += (types.empty() ? "" : ", ") + NameOf(argument->type);
    std::string list;
    for (const Candidate& candidate : candidates) list += "\n    " + TextOf(*candidate.signature);
    diagnostics_.Add(
        at, kCallSays.noOverload(candidates[0].signature->name, types, wantsValue ? " and gives a value" : "", list));
}

// The candidate of the least cost; null after telling why there is none. Where a value is wanted
// only those count that give one.
const Candidate* Checker::Choose(const std::vector<Candidate>& candidates, std::vector<ExpressionPtr>& arguments,
                                 bool wantsValue, Position at) {
    for (const ExpressionPtr& argument : arguments)
        if (IsWrong(argument->type)) return nullptr;
    const auto fitOf = [&](const Candidate& candidate) {
        const bool fits = !wantsValue || candidate.signature->result != kNoType;
        return fits ? FitOfCall(*candidate.signature, arguments) : std::nullopt;
    };
    const auto best = host::BestFits(std::span<const Candidate>(candidates), fitOf);
    if (best.size() == 1) return best[0];
    if (best.empty()) {
        ReportNoCandidate(candidates, arguments, wantsValue, at);
        return nullptr;
    }
    std::string list;
    for (const Candidate* candidate : best) list += "\n    " + TextOf(*candidate->signature);
    diagnostics_.Add(at, kCallSays.ambiguous(list));
    return nullptr;
}

// A ByRef argument must be something that can be assigned to.
void Checker::FitByRef(const ParameterSymbol& parameter, ExpressionPtr& argument) {
    switch (argument->node) {
        case Node::Local:
        case Node::Global:
        case Node::Field:
        case Node::Element:
            return;
        case Node::GetProperty:
            if (argument->property->writable()) return;
            return Wrong(*argument, kCallSays.readOnlyByRef(argument->property->name, parameter.name));
        default:
            Wrong(*argument, kCallSays.valueByRef(parameter.name));
    }
}

// One argument for each parameter: converted, defaults filled in, the rest gathered in an array.
std::vector<ExpressionPtr> Checker::FitArguments(const Signature& signature, std::vector<ExpressionPtr>& arguments) {
    std::vector<ExpressionPtr> fitted;
    std::size_t next = 0;
    for (const ParameterSymbol& parameter : signature.parameters) {
        if (parameter.paramArray && !(next + 1 == arguments.size() && arguments[next]->type == parameter.type)) {
            ExpressionPtr rest = MakeExpression(Node::MakeArray, parameter.type, {});
            for (; next < arguments.size(); ++next) {
                Convert(arguments[next], ElementOf(parameter.type), "an argument");
                rest->operands.push_back(std::move(arguments[next]));
            }
            fitted.push_back(std::move(rest));
        } else if (next < arguments.size()) {
            ExpressionPtr& argument = arguments[next++];
            if (parameter.byRef)
                FitByRef(parameter, argument);
            else
                Convert(argument, parameter.type, "the argument " + parameter.name);
            fitted.push_back(std::move(argument));
        } else if (!parameter.defaultValue.IsNothing()) {
            fitted.push_back(LiteralOf(parameter.defaultValue, {}));
            ForceConvert(fitted.back(), parameter.type);
        } else {
            fitted.push_back(MakeExpression(Node::Nothing, parameter.type, {}));  // the type's own default
        }
    }
    return fitted;
}

bool Checker::ResolveCall(ExpressionPtr& expression, const std::vector<Candidate>& candidates, ExpressionPtr receiver,
                          std::vector<ExpressionPtr>& arguments, bool wantsValue) {
    const Candidate* chosen = Choose(candidates, arguments, wantsValue, expression->at);
    if (!chosen) {
        Wrong(*expression, {});
        return false;
    }
    auto call = MakeExpression(chosen->routine ? Node::CallRoutine : Node::CallNative, chosen->signature->result,
                               expression->at);
    call->routine = chosen->routine;
    call->native = chosen->native;
    call->depth = expression->depth;
    if (receiver) {
        call->direct = receiver->node == Node::Super;
        if (call->direct) {
            receiver->node = Node::Self;
            receiver->type = {Base::Object, false, context_.owner};
        }
        if (!chosen->routine || chosen->routine->HasReceiver()) call->operands.push_back(std::move(receiver));
    }
    for (ExpressionPtr& argument : FitArguments(*chosen->signature, arguments))
        call->operands.push_back(std::move(argument));
    expression = std::move(call);
    return true;
}

}  // namespace script
