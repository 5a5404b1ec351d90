// Classes, members, routines and variables that a program declares.
#include <algorithm>

#include "host/calls/Runtime.h"
#include "host/objects/NearestName.h"
#include "host/script/Check.h"
#include "host/script/Checker.h"
#include "host/script/Literal.h"

namespace script {

namespace {

// Names that the program can't give to a routine or class of its own without confusion.
bool IsTypeName(std::string_view name) { return SimpleTypeNamed(name) != kNoType; }

std::string LineOf(Position at) { return ", in line " + std::to_string(at.line); }

// Methods that operators call in other versions of the language.
bool IsOperatorName(std::string_view name) { return host::SameName(name.substr(0, 9), "Operator_"); }

// Events that a class inherits.
std::vector<std::string> EventNames(const ClassSymbol& symbol) {
    std::vector<std::string> names;
    for (const ClassSymbol* type = symbol.base; type; type = type->base)
        if (type->native && !type->declaration)
            for (const host::Event& event : type->native->events()) names.push_back(event.declaration.name);
    return names;
}

}  // namespace

void Checker::DeclareClasses() {
    for (ClassDeclaration& declaration : program_.classes) {
        if (IsTypeName(declaration.name) || symbols_.FindClass(declaration.name)) {
            const ClassSymbol* other = symbols_.FindClass(declaration.name);
            const bool own = other && other->declaration;
            diagnostics_.Add(declaration.at, "there is a class " + declaration.name + " already" +
                                                 (own ? LineOf(other->declaration->at) : "") + "; choose another name");
            continue;
        }
        ClassSymbol* symbol = symbols_.AddClass(declaration.name);
        symbol->declaration = &declaration;
        symbols_.scriptClasses.push_back(symbol);
        classes_.push_back(symbol);
    }
}

void Checker::ResolveBases() {
    for (ClassSymbol* symbol : classes_) {
        const ClassDeclaration& declaration = *symbol->declaration;
        if (declaration.base.empty()) continue;
        ClassSymbol* base = symbols_.FindClass(declaration.base);
        if (!base) {
            diagnostics_.Add(declaration.baseAt, "there is no class " + declaration.base + " to inherit" +
                                                     host::DidYouMean(declaration.base, TypeNames()));
        } else if (Inherits(base, symbol)) {
            diagnostics_.Add(declaration.baseAt, declaration.name + " can't inherit itself");
        } else {
            symbol->base = base;
        }
    }
}

void Checker::OrderClasses() {
    const auto depth = [this](const ClassSymbol* symbol) { return Distance(symbol, symbols_.object); };
    for (auto* classes : {&symbols_.scriptClasses, &classes_})
        std::stable_sort(classes->begin(), classes->end(),
                         [&](const ClassSymbol* a, const ClassSymbol* b) { return depth(a) < depth(b); });
}

void Checker::DeclareField(ClassSymbol& symbol, FieldDeclaration& declaration) {
    Declarator& declarator = declaration.declarator;
    FieldSymbol* field = symbols_.AddField();
    field->name = declarator.name;
    field->owner = &symbol;
    field->isPrivate = declaration.isPrivate;
    field->declaration = &declaration;
    field->type = declaration.constant && declarator.type.name.empty() ? kWrongType : ResolveType(declarator.type);
    if (declaration.constant || declaration.shared) {
        field->shared = symbols_.AddVariable(declarator.name, field->type,
                                             declaration.constant ? Storage::Constant : Storage::Global, declarator.at);
    } else {
        field->slot = symbol.slotCount++;
    }
    const auto [at, added] = symbol.fields.emplace(host::LowerName(field->name), field);
    if (!added)
        diagnostics_.Add(declarator.at, symbol.name + " has a " + field->name + " already" +
                                            LineOf(at->second->declaration->declarator.at));
    symbol.ownFields.push_back(field);
}

void Checker::DeclareMembers(ClassSymbol& symbol) {
    for (FieldDeclaration& field : symbol.declaration->fields) DeclareField(symbol, field);
    for (RoutineDeclaration& declaration : symbol.declaration->routines) {
        RoutineSymbol* routine = DeclareRoutine(declaration, &symbol);
        const std::string lower = host::LowerName(declaration.name);
        if (const auto field = symbol.fields.find(lower); field != symbol.fields.end())
            diagnostics_.Add(declaration.at, symbol.name + " has a " + field->second->name + " already" +
                                                 LineOf(field->second->declaration->declarator.at));
        AddRoutine(symbol.routines[lower], *routine, symbol.name + " has a ");
        WarnOfUncalled(*routine);
    }
}

// One more of a name; `there` begins the message for one too many.
void Checker::AddRoutine(std::vector<RoutineSymbol*>& overloads, RoutineSymbol& routine, const std::string& there) {
    for (const RoutineSymbol* other : overloads)
        if (SameParameters(other->signature, routine.signature))
            diagnostics_.Add(
                routine.declaration->at,
                there + routine.signature.name + " with these parameters already" + LineOf(other->declaration->at));
    overloads.push_back(&routine);
}

// Methods that look as if the language called them.
void Checker::WarnOfUncalled(const RoutineSymbol& routine) {
    const std::string& name = routine.signature.name;
    if (IsOperatorName(name))
        diagnostics_.Warn(routine.declaration->at, "no operator calls " + name + " here; it is a method like others");
    if (host::SameName(name, routine.owner->name))
        diagnostics_.Warn(routine.declaration->at,
                          "New does not call a Sub with the name of its class; a constructor is Sub Constructor");
}

void Checker::DeclareParameters(RoutineSymbol& routine) {
    bool optional = false;
    bool open = false;
    for (Parameter& parameter : routine.declaration->parameters) {
        if (open)
            diagnostics_.Add(parameter.at, "nothing is left for a parameter after a ParamArray, which comes last");
        open |= parameter.paramArray;
        ParameterSymbol& symbol = routine.signature.parameters.emplace_back();
        static_cast<host::ParameterFlags&>(symbol) = parameter;
        symbol.name = parameter.name;
        symbol.type = ResolveType(parameter.type);
        if (parameter.paramArray && !IsWrong(symbol.type) && !symbol.type.array) symbol.type.array = true;
        if (optional && !parameter.optional && !parameter.paramArray)
            diagnostics_.Add(parameter.at, "a parameter after an optional one is optional too");
        optional |= parameter.optional;
        if (!parameter.defaultValue) continue;
        CheckValue(parameter.defaultValue);
        Convert(parameter.defaultValue, symbol.type, "the default of " + parameter.name);
        if (IsLiteral(*parameter.defaultValue)) {
            symbol.defaultValue = LiteralValue(*parameter.defaultValue);
        } else if (!IsWrong(parameter.defaultValue->type)) {
            diagnostics_.Add(parameter.defaultValue->at, "a default is made of literals and constants");
        }
    }
}

RoutineSymbol* Checker::DeclareRoutine(RoutineDeclaration& declaration, ClassSymbol* owner) {
    RoutineSymbol* routine = symbols_.AddRoutine();
    routine->declaration = &declaration;
    routine->owner = owner;
    routine->shared = declaration.shared;
    routine->isPrivate = declaration.isPrivate;
    routine->signature.name = declaration.name;
    if (!declaration.result.name.empty()) routine->signature.result = ResolveType(declaration.result);
    DeclareParameters(*routine);
    const bool special =
        owner && (host::SameName(declaration.name, "Constructor") || host::SameName(declaration.name, "Destructor"));
    if (special && (routine->shared || routine->signature.result != kNoType))
        diagnostics_.Add(declaration.at, declaration.name + " is a Sub of an object");
    if (special && host::SameName(declaration.name, "Destructor") && !routine->signature.parameters.empty())
        diagnostics_.Add(declaration.at, "a Destructor takes no parameters");
    return routine;
}

// A method that overrides another gives what that one gives.
void Checker::CheckOverride(const RoutineSymbol& routine) {
    if (!routine.owner || routine.shared || routine.event || !routine.owner->base) return;
    for (const Candidate& inherited : MethodCandidates(*routine.owner->base, routine.signature.name, false)) {
        if (!SameParameters(*inherited.signature, routine.signature)) continue;
        if (host::SameName(routine.signature.name, "Constructor")) continue;
        if (inherited.signature->result == routine.signature.result) continue;
        diagnostics_.Add(routine.declaration->at, routine.signature.name + " overrides one that gives " +
                                                      NameOf(inherited.signature->result) + ":\n    " +
                                                      TextOf(*inherited.signature));
    }
}

void Checker::CheckEvent(RoutineSymbol& routine) {
    if (routine.declaration->kind != RoutineKind::Event) return;
    const host::Event* event = nullptr;
    for (const ClassSymbol* type = routine.owner->base; type && !event; type = type->base)
        if (type->native && !type->declaration) event = type->native->FindEvent(routine.signature.name);
    const Position at = routine.declaration->at;
    if (!event) {
        return diagnostics_.Add(at, routine.owner->name + " inherits no event " + routine.signature.name +
                                        host::DidYouMean(routine.signature.name, EventNames(*routine.owner)));
    }
    const auto fromHost = [this](const host::Type& type) { return symbols_.FromHost(type); };
    const auto wanted = host::WithTypes<Type>(event->declaration, fromHost);
    if (!SameParameters(wanted, routine.signature) || wanted.result != routine.signature.result)
        return diagnostics_.Add(at, "the event is declared as " + TextOf(wanted) + "; the handler must be the same");
    routine.event = event;
}

// Variables of the program's own level exist for its routines too, so they are known first.
void Checker::DeclareGlobals(Block& block) {
    for (StatementPtr& statement : block) {
        if (statement->action != Action::Dim && statement->action != Action::Const) continue;
        for (Declarator& declarator : statement->declarators) {
            const bool constant = statement->action == Action::Const;
            const std::string lower = host::LowerName(declarator.name);
            if (!declared_.insert(lower).second) continue;  // told when the second is met
            auto& known = globals_[lower];
            if (constant) {
                known = symbols_.AddVariable(declarator.name, kWrongType, Storage::Constant, declarator.at);
                CheckConst(declarator);
            } else {
                known =
                    symbols_.AddVariable(declarator.name, ResolveType(declarator.type), Storage::Global, declarator.at);
            }
        }
    }
}

void Checker::CheckField(FieldSymbol& field) {
    Declarator& declarator = field.declaration->declarator;
    if (field.declaration->constant) {
        CheckValue(declarator.value);
        if (!declarator.type.name.empty()) Convert(declarator.value, field.type, "the constant");
        if (IsLiteral(*declarator.value)) {
            field.type = field.shared->type = declarator.value->type;
            field.shared->value = CloneLiteral(*declarator.value, declarator.at);
        } else if (!IsWrong(declarator.value->type)) {
            diagnostics_.Add(declarator.value->at, "a constant's value is made of literals and other constants");
        }
        return;
    }
    if (declarator.size) {
        CheckValue(declarator.size);
        Convert(declarator.size, kIntegerType, "the highest index");
    }
    if (declarator.isNew) {
        declarator.value = MakeExpression(Node::New, kNoType, declarator.type.at);
        declarator.value->typeName = declarator.type;
        declarator.value->operands = std::move(declarator.arguments);
    }
    if (!declarator.value) return;
    CheckValue(declarator.value);
    Convert(declarator.value, field.type, "the value of " + field.name);
}

void Checker::CheckRoutine(RoutineSymbol& routine) {
    context_ = {};
    context_.routine = &routine;
    context_.owner = routine.owner;
    context_.hasSelf = routine.HasReceiver();
    context_.scopes.emplace_back();
    for (std::size_t i = 0; i < routine.signature.parameters.size(); ++i) {
        const ParameterSymbol& parameter = routine.signature.parameters[i];
        routine.parameterVariables.push_back(Declare(parameter.name, parameter.type,
                                                     parameter.byRef ? Storage::ByRef : Storage::Local,
                                                     routine.declaration->parameters[i].at));
    }
    for (StatementPtr& statement : routine.declaration->body) CheckStatement(*statement);
    context_ = {};
}

void Checker::CheckClassBodies(ClassSymbol& symbol) {
    for (FieldSymbol* field : symbol.ownFields) {
        if (field->declaration->constant) continue;
        context_ = {};
        context_.owner = &symbol;
        context_.hasSelf = !field->declaration->shared;
        context_.scopes.emplace_back();
        CheckField(*field);
    }
    context_ = {};
}

void Checker::CheckMainProgram() {
    context_ = {};
    context_.scopes.emplace_back();
    for (StatementPtr& statement : program_.body) CheckStatement(*statement);
}

void Checker::Run() {
    DeclareClasses();
    ResolveBases();
    OrderClasses();
    context_.scopes.emplace_back();
    DeclareGlobals(program_.body);
    context_ = {};
    for (ClassSymbol* symbol : classes_) {
        context_.owner = symbol;
        DeclareMembers(*symbol);
        for (FieldSymbol* field : symbol->ownFields)
            if (field->declaration->constant) CheckField(*field);
    }
    context_ = {};
    for (RoutineDeclaration& declaration : program_.routines) {
        RoutineSymbol* routine = DeclareRoutine(declaration, nullptr);
        if (IsTypeName(declaration.name))
            diagnostics_.Add(declaration.at, declaration.name + " is a type; choose another name");
        auto& overloads = symbols_.routines[host::LowerName(declaration.name)];
        std::erase_if(overloads, [&](const RoutineSymbol* other) {
            return other->code && SameParameters(other->signature, routine->signature);  // of a step before
        });
        AddRoutine(overloads, *routine, "there is a ");
    }
    ForEachRoutine([this](RoutineSymbol& routine) { CheckEvent(routine); });
    ForEachRoutine([this](RoutineSymbol& routine) { CheckOverride(routine); });
    CheckMainProgram();
    for (ClassSymbol* symbol : classes_) CheckClassBodies(*symbol);
    ForEachRoutine([this](RoutineSymbol& routine) { CheckRoutine(routine); });
}

void Check(Program& program, Symbols& symbols, Diagnostics& diagnostics) {
    Checker(program, symbols, diagnostics).Run();
}

}  // namespace script
