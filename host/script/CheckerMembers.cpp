// Names and members: variables, fields, properties, constants, and what a bracket behind them
// means.
#include <algorithm>

#include "host/calls/Runtime.h"
#include "host/objects/NearestName.h"
#include "host/script/BuildConstants.h"
#include "host/script/Checker.h"
#include "host/script/Literal.h"

namespace script {

Variable* Checker::FindLocal(std::string_view name) {
    const std::string lower = host::LowerName(name);
    for (auto scope = context_.scopes.rbegin(); scope != context_.scopes.rend(); ++scope) {
        const auto found = scope->find(lower);
        if (found != scope->end()) return found->second;
    }
    return nullptr;
}

Variable* Checker::FindGlobal(std::string_view name) {
    const auto found = globals_.find(host::LowerName(name));
    return found == globals_.end() ? nullptr : found->second;
}

// Whether the program's own statements have not come to a variable's declaration. Routines may use
// it: they can be called afterwards.
bool Checker::IsAhead(const Variable& variable, Position at) const {
    const bool ownStatement = !context_.routine && !context_.owner && !context_.scopes.empty();
    if (!ownStatement || variable.storage == Storage::Constant) return false;
    const bool declared = context_.scopes.front().contains(host::LowerName(variable.name));
    return !declared &&
           (at.line < variable.at.line || (at.line == variable.at.line && at.column != variable.at.column));
}

bool Checker::MayReach(const ClassSymbol* owner, bool isPrivate) const {
    return !isPrivate || (context_.owner && Inherits(context_.owner, owner));
}

namespace {

// What other languages call things.
constexpr std::pair<std::string_view, std::string_view> kOtherNames[] = {
    {"null", "Nil"}, {"nothing", "Nil"}, {"this", "Self"}, {"echo", "Print"}, {"println", "Print"},
};

// Words that begin a statement: a line that begins with another is taken for a call.
constexpr std::string_view kStatementWords[] = {"Print",  "Quit", "Dim",    "Const", "If",     "For",
                                                "While",  "Do",   "Select", "Exit",  "Return", "Raise",
                                                "Static", "Try",  "ReDim",  "Sub",   "Class",  "Function"};

// Names of members that a host's class has of its own.
void AddNames(const host::Class& type, std::vector<std::string>& names) {
    for (const auto& method : type.methods()) names.push_back(method.declaration.name);
    for (const auto& method : type.sharedMethods()) names.push_back(method.declaration.name);
    for (const auto& property : type.properties()) names.push_back(property.name);
    for (const auto& constant : type.constants()) names.push_back(constant.name);
}

}  // namespace

host::Said Checker::UnknownName(std::string_view name, bool wantsValue) {
    std::vector<std::string> known = host::Runtime::Get().FunctionNames();
    for (const auto& scope : context_.scopes)
        for (const auto& [lower, variable] : scope) known.push_back(variable->name);
    for (const auto& [lower, variable] : globals_) known.push_back(variable->name);
    for (const auto& [lower, routines] : symbols_.routines) known.push_back(routines[0]->signature.name);
    for (const ClassSymbol* symbol : symbols_.scriptClasses) known.push_back(symbol->name);
    if (context_.owner) AddMemberNames(*context_.owner, known);
    known.insert(known.end(), {"Array", "Ubound"});
    if (!wantsValue) known.insert(known.end(), std::begin(kStatementWords), std::end(kStatementWords));
    std::string nearest = host::NearestName(name, known);
    for (const auto& [other, own] : kOtherNames)
        if (host::SameName(other, name)) nearest = own;
    return kNameSays.unknown(name,
                             nearest.empty() ? "a variable is declared with Dim" : "did you mean " + nearest + "?");
}

// Names that may be used here, of a class and those it inherits.
void Checker::AddMemberNames(const ClassSymbol& type, std::vector<std::string>& names) const {
    for (const ClassSymbol* at = &type; at; at = at->base) {
        for (const auto& [lower, field] : at->fields)
            if (MayReach(field->owner, field->isPrivate)) names.push_back(field->name);
        for (const auto& [lower, routines] : at->routines)
            for (const RoutineSymbol* routine : routines)
                if (MayReach(routine->owner, routine->isPrivate)) names.push_back(routine->signature.name);
        if (at->native && !at->declaration) AddNames(*at->native, names);
    }
}

// A method of this name that may not be called from here; null if there is none.
const RoutineSymbol* Checker::FindPrivate(const ClassSymbol& type, std::string_view name) const {
    for (const RoutineSymbol* routine : symbols_.FindRoutines(type, name))
        if (!MayReach(routine->owner, routine->isPrivate)) return routine;
    return nullptr;
}

host::Said Checker::UnknownMember(const ClassSymbol& type, std::string_view name) {
    if (const RoutineSymbol* hidden = FindPrivate(type, name))
        return kNameSays.isPrivate(hidden->signature.name, hidden->owner->name);
    std::vector<std::string> known;
    AddMemberNames(type, known);
    return kNameSays.noMember(type.name, std::string(name) + host::DidYouMean(name, known));
}

void Checker::UseVariable(Expression& expression, Variable& variable) {
    const Position at = expression.at;
    expression = std::move(*UseOf(variable, at));
}

// array(index), where what stands before the bracket is resolved.
void Checker::ApplyIndex(ExpressionPtr& expression, std::vector<ExpressionPtr> arguments) {
    if (arguments.empty() || IsWrong(expression->type)) return;  // "values()" is the array itself
    if (ResolveSubscript(expression, arguments)) return;
    if (!expression->type.array) {
        return Wrong(*expression, kCallSays.noIndex(NameOf(expression->type)));
    }
    const std::size_t dimensions = expression->type.furtherDimensions + 1u;
    if (arguments.size() != dimensions)
        return Wrong(*expression, dimensions == 1 ? kCallSays.oneIndex() : kCallSays.indices(dimensions));
    ExpressionPtr element = MakeExpression(Node::Element, ElementOf(expression->type), expression->at);
    element->depth = expression->depth + 1;
    element->operands.push_back(std::move(expression));
    for (ExpressionPtr& index : arguments) {
        Convert(index, kIntegerType, "the index");
        element->operands.push_back(std::move(index));
    }
    expression = std::move(element);
}

bool Checker::ResolveField(ExpressionPtr& expression, FieldSymbol& field, ExpressionPtr& receiver) {
    if (!MayReach(field.owner, field.isPrivate)) {
        Wrong(*expression, kNameSays.isPrivate(field.name, field.owner->name));
        return true;
    }
    if (field.shared) {
        UseVariable(*expression, *field.shared);
        return true;
    }
    if (!receiver) {
        Wrong(*expression, kNameSays.needsObject(field.name, field.owner->name));
        return true;
    }
    ExpressionPtr access = MakeExpression(Node::Field, field.type, expression->at);
    access->fieldIndex = field.slot;
    access->owner = field.owner;
    access->depth = expression->depth;
    access->operands.push_back(std::move(receiver));
    expression = std::move(access);
    return true;
}

// A member of an object: a field, a property, a constant or a method. False, with nothing
// reported, when the class has none of this name.
bool Checker::ResolveObjectMember(ExpressionPtr& expression, const ClassSymbol& type, ExpressionPtr& receiver,
                                  std::vector<ExpressionPtr>& arguments, bool hasArguments, bool wantsValue) {
    const std::string name = expression->text;
    if (FieldSymbol* field = symbols_.FindField(type, name)) {
        ResolveField(expression, *field, receiver);
        ApplyIndex(expression, std::move(arguments));
        return true;
    }
    if (ResolveAccessor(expression, type, receiver, arguments, wantsValue)) return true;
    std::vector<Candidate> candidates = MethodCandidates(type, name, false);
    if (!candidates.empty()) {
        if (!receiver) return false;
        // "Arguments(0)": the index of what a method without arguments gives.
        const bool indexed = hasArguments && arguments.size() == 1 && candidates.size() == 1 &&
                             candidates[0].signature->parameters.empty() && candidates[0].signature->result.array;
        std::vector<ExpressionPtr> none;
        ResolveCall(expression, candidates, std::move(receiver), indexed ? none : arguments, wantsValue);
        if (indexed) ApplyIndex(expression, std::move(arguments));
        return true;
    }
    if (const host::Property* property = symbols_.FindProperty(type, name);
        property && (receiver || property->shared)) {
        ExpressionPtr access = MakeExpression(Node::GetProperty, symbols_.FromHost(property->type), expression->at);
        access->property = property;
        access->depth = expression->depth;
        if (receiver) access->operands.push_back(std::move(receiver));
        expression = std::move(access);
        ApplyIndex(expression, std::move(arguments));
        return true;
    }
    return ResolveSharedMember(expression, type, arguments, hasArguments, wantsValue);
}

bool Checker::ResolveSharedMember(ExpressionPtr& expression, const ClassSymbol& type,
                                  std::vector<ExpressionPtr>& arguments, bool hasArguments, bool wantsValue) {
    const std::string name = expression->text;
    if (FieldSymbol* field = symbols_.FindField(type, name); field && field->shared) {
        ExpressionPtr none;
        ResolveField(expression, *field, none);
        ApplyIndex(expression, std::move(arguments));
        return true;
    }
    ExpressionPtr noReceiver;
    if (ResolveAccessor(expression, type, noReceiver, arguments, wantsValue)) return true;
    for (const ClassSymbol* at = &type; at; at = at->base) {
        const host::Constant* constant = at->native && !at->declaration ? at->native->FindConstant(name) : nullptr;
        if (!constant) continue;
        expression = LiteralOf(constant->value, expression->at);
        if (hasArguments) Wrong(*expression, kNameSays.constantArguments(name));
        return true;
    }
    const std::vector<Candidate> candidates = MethodCandidates(type, name, true);
    if (candidates.empty()) return false;
    const bool indexed = arguments.size() == 1 && candidates.size() == 1 &&
                         candidates[0].signature->parameters.empty() && candidates[0].signature->result.array;
    std::vector<ExpressionPtr> none;
    ResolveCall(expression, candidates, nullptr, indexed ? none : arguments, wantsValue);
    if (indexed) ApplyIndex(expression, std::move(arguments));
    return true;
}

// A bare name inside a class's method may be a member of Self.
bool Checker::ResolveSelfMember(ExpressionPtr& expression, std::vector<ExpressionPtr>& arguments, bool hasArguments,
                                bool wantsValue) {
    if (!context_.owner) return false;
    const ClassSymbol& owner = *context_.owner;
    const std::string& name = expression->text;
    const bool known = symbols_.FindField(owner, name) || !MethodCandidates(owner, name, false).empty() ||
                       !MethodCandidates(owner, name, true).empty() || symbols_.FindProperty(owner, name) ||
                       HasAccessor(owner, name);
    if (!known) {
        return ResolveSharedMember(expression, owner, arguments, hasArguments, wantsValue);
    }
    ExpressionPtr self;
    if (context_.hasSelf) self = MakeExpression(Node::Self, {Base::Object, false, &owner}, expression->at);
    if (ResolveObjectMember(expression, owner, self, arguments, hasArguments, wantsValue)) return true;
    Wrong(*expression, kNameSays.needsObjectInShared(name, owner.name));
    return true;
}

void Checker::CheckName(ExpressionPtr& expression, std::vector<ExpressionPtr> arguments, bool hasArguments,
                        bool wantsValue) {
    const std::string name = expression->text;
    CheckArguments(arguments);
    if (Variable* variable = FindLocal(name)) {
        UseVariable(*expression, *variable);
        return ApplyIndex(expression, std::move(arguments));
    }
    if (ResolveSelfMember(expression, arguments, hasArguments, wantsValue)) return;
    if (Variable* variable = FindGlobal(name)) {
        if (IsAhead(*variable, expression->at)) return Wrong(*expression, kNameSays.beforeDim(name, variable->at.line));
        UseVariable(*expression, *variable);
        return ApplyIndex(expression, std::move(arguments));
    }
    std::vector<Candidate> candidates = OwnRoutines(name);
    if (candidates.empty() && ResolveModuleMember(expression, arguments, hasArguments, wantsValue)) return;
    if (candidates.empty() && ResolveIntrinsic(expression, arguments)) return;
    if (candidates.empty()) candidates = FunctionCandidates(name, false);
    if (!candidates.empty()) {
        ResolveCall(expression, candidates, nullptr, arguments, wantsValue);
        return;
    }
    if (const Type simple = SimpleTypeNamed(name); simple != kNoType) return MakeCast(expression, simple, arguments);
    if (symbols_.FindClass(name)) {
        TypeName typeName{name, false, 1, expression->at, {}};
        const Type type = ResolveType(typeName);
        return IsWrong(type) ? Wrong(*expression, {}) : MakeCast(expression, type, arguments);
    }
    if (const std::optional<bool> constant = BuildConstantNamed(name); constant && !hasArguments) {
        expression = LiteralOf(host::Value(*constant), expression->at);
        return;
    }
    if (const std::size_t mark = name.find(' '); mark != std::string::npos)
        return Wrong(*expression, kNameSays.noEventToRaise(name.substr(mark + 1)));
    Wrong(*expression, UnknownName(name, wantsValue));
}

void Checker::MakeCast(ExpressionPtr& expression, Type type, std::vector<ExpressionPtr>& arguments) {
    if (arguments.size() != 1) return Wrong(*expression, kCallSays.castTakesOne(NameOf(type)));
    ExpressionPtr& operand = arguments[0];
    const bool downwards = MayBecome(operand->type, type);
    if (!downwards) {
        Convert(operand, type, "what is cast", Casting::Explicit);
        if (operand->type == type || IsWrong(operand->type)) {
            expression = std::move(operand);
            return;
        }
    }
    ExpressionPtr cast = MakeExpression(Node::Convert, type, expression->at);
    cast->depth = expression->depth;
    cast->operands.push_back(std::move(operand));
    expression = std::move(cast);
}

// The class, module or enumeration that a bare name means before a member; null where it means a
// value. EndOfLine is a text, and EndOfLine.Windows a member of the class.
ClassSymbol* Checker::FindHolder(const Expression& name, std::string_view member) {
    if (name.node != Node::Name || FindLocal(name.text) || FindGlobal(name.text)) return nullptr;
    if (context_.owner && (symbols_.FindField(*context_.owner, name.text) || HasAccessor(*context_.owner, name.text)))
        return nullptr;
    const bool isRoutine = symbols_.routines.contains(host::LowerName(name.text));
    if (isRoutine) return nullptr;
    ClassSymbol* symbol = symbols_.FindHolder(name.text);
    const bool isFunction = !FunctionCandidates(name.text, false).empty();
    if (symbol && isFunction && MethodCandidates(*symbol, member, true).empty()) return nullptr;
    const bool isProperty = symbol && context_.owner && symbols_.FindProperty(*context_.owner, name.text);
    return isProperty ? nullptr : symbol;
}

// "Module.Type" before a dot is the type, whose name is enough.
void Checker::UnfoldModule(ExpressionPtr& object) {
    if (object->node != Node::Member || !FindHolder(*object->operands[0])) return;
    ClassSymbol* inner = FindTypeSymbol(object->operands[0]->text + '.' + object->text);
    if (!inner) return;
    object->node = Node::Name;
    object->text = inner->name;
    object->operands.clear();
}

void Checker::CheckMember(ExpressionPtr& expression, std::vector<ExpressionPtr> arguments, bool hasArguments,
                          bool wantsValue) {
    ExpressionPtr& object = expression->operands[0];
    const std::string name = expression->text;
    if (object->node == Node::Super) {
        CheckArguments(arguments);
        if (!context_.hasSelf || !context_.owner->base) return Wrong(*expression, kNameSays.noSuper());
        if (host::SameName(name, context_.owner->base->name)) expression->text = "Constructor";
        ExpressionPtr receiver = std::move(object);
        if (!ResolveObjectMember(expression, *context_.owner->base, receiver, arguments, hasArguments, wantsValue))
            Wrong(*expression, UnknownMember(*context_.owner->base, name));
        return;
    }
    UnfoldModule(object);
    if (ClassSymbol* symbol = FindHolder(*object, name)) {
        CheckArguments(arguments);
        if (ResolveSharedMember(expression, *symbol, arguments, hasArguments, wantsValue)) return;
        const bool needsObject = symbols_.FindField(*symbol, name) || symbols_.FindProperty(*symbol, name) ||
                                 HasAccessor(*symbol, name) || !MethodCandidates(*symbol, name, false).empty();
        return Wrong(*expression,
                     needsObject ? kNameSays.needsObjectOfClass(name, symbol->name) : UnknownMember(*symbol, name));
    }
    CheckValue(object);
    CheckArguments(arguments);
    if (IsWrong(object->type)) return Wrong(*expression, {});
    ExpressionPtr receiver = std::move(object);
    const Type type = receiver->type;
    if (type.array) {
        if (ResolveArrayMember(expression, receiver, arguments)) return;
    } else if (IsObject(type)) {
        if (ResolveInvoke(expression, receiver, arguments, wantsValue) ||
            ResolveObjectMember(expression, *type.of, receiver, arguments, hasArguments, wantsValue))
            return;
    } else if (ResolveValueMember(expression, receiver, arguments, wantsValue)) {
        return;
    }
    if (expression->node == Node::Nothing) return;
    if (ResolveExtension(expression, receiver, arguments, wantsValue)) return;
    if (IsObject(type)) {
        if (!ResolveLookup(expression, *type.of, receiver, arguments, wantsValue))
            Wrong(*expression, UnknownMember(*type.of, name));
        return;
    }
    Wrong(*expression, kNameSays.noMember(NameOf(type), name + host::DidYouMean(name, ValueMembers(type))));
}

void Checker::CheckApply(ExpressionPtr& expression, bool wantsValue) {
    ExpressionPtr callee = std::move(expression->operands[0]);
    std::vector<ExpressionPtr> arguments;
    for (std::size_t i = 1; i < expression->operands.size(); ++i)
        arguments.push_back(std::move(expression->operands[i]));
    const int depth = expression->depth;
    const bool bracketedName = callee->bracketed && callee->node != Node::Apply;
    if (callee->node == Node::Name && !bracketedName) {
        CheckName(callee, std::move(arguments), true, wantsValue);
    } else if (callee->node == Node::Member && !bracketedName) {
        CheckMember(callee, std::move(arguments), true, wantsValue);
    } else {
        CheckValue(callee);
        CheckArguments(arguments);
        ApplyIndex(callee, std::move(arguments));
    }
    callee->depth = std::max(callee->depth, depth);
    expression = std::move(callee);
}

}  // namespace script
