// Members that are routines behind the scenes: computed properties, members of modules known by their bare
// names, methods that extend a type.
#include <algorithm>

#include "host/script/Checker.h"

namespace script {

namespace {

std::string Getter(std::string_view name) { return std::string(kGetterMark) + std::string(name); }
std::string Setter(std::string_view name) { return std::string(kSetterMark) + std::string(name); }

}  // namespace

bool Checker::HasAccessor(const ClassSymbol& type, std::string_view name) const {
    return !symbols_.FindRoutines(type, Getter(name)).empty() || !symbols_.FindRoutines(type, Setter(name)).empty();
}

// A computed property is a call of its Get. Where no value is wanted it may be the target of an
// assignment, which ResolveAccessorSet makes of it; a property with a Set alone is that Set until then.
bool Checker::ResolveAccessor(ExpressionPtr& expression, const ClassSymbol& type, ExpressionPtr& receiver,
                              std::vector<ExpressionPtr>& arguments, bool wantsValue) {
    const std::string name = expression->text;
    std::vector<RoutineSymbol*> routines = symbols_.FindRoutines(type, Getter(name));
    const bool readable = !routines.empty();
    if (!readable) routines = symbols_.FindRoutines(type, Setter(name));
    if (routines.empty()) return false;
    RoutineSymbol& routine = *routines[0];
    if (!MayReach(routine.owner, routine.isPrivate)) {
        Wrong(*expression, kNameSays.isPrivate(name, routine.owner->name));
    } else if (!readable && (wantsValue || !arguments.empty())) {
        Wrong(*expression, kNameSays.writeOnly(name));
    } else if (routine.HasReceiver() && !receiver) {
        return false;
    } else {
        ExpressionPtr call =
            MakeExpression(Node::CallRoutine, readable ? routine.signature.result : kVariantType, expression->at);
        call->routine = &routine;
        call->depth = expression->depth;
        call->direct = receiver && receiver->node == Node::Super;
        if (call->direct) {
            receiver->node = Node::Self;
            receiver->type = {Base::Object, false, context_.owner};
        }
        if (routine.HasReceiver()) call->operands.push_back(std::move(receiver));
        expression = std::move(call);
        ApplyIndex(expression, std::move(arguments));
    }
    return true;
}

// The target of an assignment was resolved to the reading of a computed property, a subscript or a
// looked-up member: it becomes the writing.
bool Checker::ResolveAccessorSet(Statement& statement) {
    ExpressionPtr& target = statement.expressions[0];
    if (target->node != Node::CallRoutine) return false;
    const RoutineSymbol& reader = *target->routine;
    std::string name = reader.signature.name;
    const bool accessor = name.starts_with(kGetterMark) || name.starts_with(kSetterMark);
    const bool operation = host::SameName(name, "Operator_Subscript") || host::SameName(name, "Operator_Lookup");
    if (!accessor && !operation) return false;
    if (accessor) name = Setter(name.substr(kGetterMark.size()));
    std::vector<Candidate> candidates;
    const ClassSymbol* type = reader.HasReceiver() ? target->operands[0]->type.of : reader.owner;
    if (target->direct) type = reader.owner;
    for (RoutineSymbol* routine : symbols_.FindRoutines(*type, name))
        if (accessor || TakesAssignment(routine->signature))
            candidates.push_back({&routine->signature, routine, nullptr});
    if (candidates.empty()) {
        Wrong(*target, operation ? kNameSays.noAssignment(type->name, name)
                                 : kNameSays.readOnly(name.substr(kSetterMark.size())));
        return true;
    }
    std::vector<ExpressionPtr> arguments = std::move(target->operands);
    ExpressionPtr receiver;
    if (reader.HasReceiver()) {
        receiver = std::move(arguments.front());
        arguments.erase(arguments.begin());
    }
    const bool direct = target->direct;
    arguments.push_back(std::move(statement.expressions[1]));
    ExpressionPtr call = MakeExpression(Node::Nothing, kNoType, target->at);
    if (ResolveCall(call, candidates, std::move(receiver), arguments, false)) call->direct = direct;
    statement.action = Action::Call;
    statement.expressions.clear();
    statement.expressions.push_back(std::move(call));
    return true;
}

// The program's own routines of a name, but for those that are assigned to.
std::vector<Candidate> Checker::OwnRoutines(std::string_view name) const {
    std::vector<Candidate> candidates;
    const auto own = symbols_.routines.find(host::LowerName(name));
    if (own == symbols_.routines.end()) return candidates;
    for (RoutineSymbol* routine : own->second)
        if (!TakesAssignment(routine->signature)) candidates.push_back({&routine->signature, routine, nullptr});
    return candidates;
}

// Modules that have a member which may be used by its bare name.
std::vector<ClassSymbol*> Checker::ModulesWith(std::string_view name) const {
    std::vector<ClassSymbol*> found;
    const std::string lower = host::LowerName(name);
    const auto isOpen = [](const RoutineSymbol* routine) { return !routine->isPrivate && !routine->needsPrefix; };
    for (ClassSymbol* symbol : symbols_.scriptClasses) {
        if (FormOf(*symbol) != ClassForm::Module) continue;
        const auto field = symbol->fields.find(lower);
        bool has =
            field != symbol->fields.end() && !field->second->isPrivate && !field->second->declaration->needsPrefix;
        for (const std::string& key : {lower, Getter(lower), Setter(lower)}) {
            const auto routines = symbol->routines.find(key);
            has |= routines != symbol->routines.end() &&
                   std::any_of(routines->second.begin(), routines->second.end(), isOpen);
        }
        if (has) found.push_back(symbol);
    }
    return found;
}

bool Checker::ResolveModuleMember(ExpressionPtr& expression, std::vector<ExpressionPtr>& arguments, bool hasArguments,
                                  bool wantsValue) {
    const std::vector<ClassSymbol*> modules = ModulesWith(expression->text);
    if (modules.empty()) return false;
    if (modules.size() > 1) {
        Wrong(*expression, kNameSays.inTwoModules(expression->text, modules[0]->name, modules[1]->name));
        return true;
    }
    return ResolveSharedMember(expression, *modules[0], arguments, hasArguments, wantsValue);
}

// The host's functions of a name: those that extend a type, or the others.
std::vector<Candidate> Checker::FunctionCandidates(std::string_view name, bool extending) {
    std::vector<Candidate> candidates;
    for (const NativeMethod* native : symbols_.Functions(name)) {
        const auto& parameters = native->signature.parameters;
        const bool extends = !parameters.empty() && parameters[0].extends;
        if (extends == extending) candidates.push_back({&native->signature, nullptr, native});
    }
    return candidates;
}

// "value.Name(arguments)" of a routine whose first parameter extends the value's type.
bool Checker::ResolveExtension(ExpressionPtr& expression, ExpressionPtr& receiver,
                               std::vector<ExpressionPtr>& arguments, bool wantsValue) {
    if (!receiver) return false;
    std::vector<Candidate> candidates = OwnRoutines(expression->text);
    for (ClassSymbol* module : ModulesWith(expression->text))
        for (const Candidate& candidate : MethodCandidates(*module, expression->text, true))
            candidates.push_back(candidate);
    for (const Candidate& candidate : FunctionCandidates(expression->text, true))
        if (candidate.signature->parameters[0].type == receiver->type) candidates.push_back(candidate);
    std::erase_if(candidates, [&](const Candidate& candidate) {
        const auto& parameters = candidate.signature->parameters;
        return parameters.empty() || !parameters[0].extends ||
               ArgumentCost(parameters[0], *receiver, host::Passing::Plain) == host::kNoConversion;
    });
    if (candidates.empty()) return false;
    arguments.insert(arguments.begin(), std::move(receiver));
    ResolveCall(expression, candidates, nullptr, arguments, wantsValue);
    return true;
}

}  // namespace script
