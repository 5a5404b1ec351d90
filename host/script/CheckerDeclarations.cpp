// Classes, members, routines and variables that a program declares.
#include <algorithm>
#include <unordered_map>

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

// The name without what marks an accessor or event.
std::string PlainName(std::string_view name) { return std::string(name.substr(name.find(' ') + 1)); }

std::string_view WordOf(ClassForm form) {
    constexpr std::string_view words[] = {"class", "module", "interface", "enumeration", "delegate"};
    return words[static_cast<int>(form)];
}

// Events that a class inherits.
std::vector<std::string> EventNames(const ClassSymbol& symbol) {
    std::vector<std::string> names;
    for (const ClassSymbol* type = symbol.base; type; type = type->base)
        if (type->native && !type->declaration) {
            for (const host::Event& event : type->native->events()) names.push_back(event.declaration.name);
        } else if (type->declaration) {
            for (const RoutineDeclaration& routine : type->declaration->routines)
                if (routine.declaresEvent) names.push_back(PlainName(routine.name));
        }
    return names;
}

}  // namespace

void Checker::DeclareClasses() {
    for (ClassDeclaration& declaration : program_.classes) {
        if (IsTypeName(declaration.name) || symbols_.FindClass(declaration.name)) {
            const ClassSymbol* other = symbols_.FindClass(declaration.name);
            const bool own = other && other->declaration;
            diagnostics_.Add(declaration.at,
                             kDeclarationSays.classTwice(declaration.name, own ? LineOf(other->declaration->at) : ""));
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
        const TypeName& name = declaration.base;
        if (name.name.empty() || declaration.form == ClassForm::Enum) continue;
        ClassSymbol* base = FindTypeSymbol(name.name);
        const bool ownKind = base && FormOf(*base) == declaration.form;
        if (!base) {
            diagnostics_.Add(name.at, kDeclarationSays.noBase(name.name, host::DidYouMean(name.name, TypeNames())));
        } else if (!ownKind) {
            const bool implements = FormOf(*base) == ClassForm::Interface;
            diagnostics_.Add(
                name.at, implements ? kDeclarationSays.inheritsInterface(name.name, WordOf(FormOf(*base)), name.name)
                                    : kDeclarationSays.inheritsOther(name.name, WordOf(FormOf(*base))));
        } else if (Inherits(base, symbol)) {
            diagnostics_.Add(name.at, kDeclarationSays.inheritsItself(declaration.name));
        } else {
            symbol->base = base;
        }
    }
    for (ClassSymbol* symbol : classes_) ResolveInterfaces(*symbol);
}

void Checker::ResolveInterfaces(ClassSymbol& symbol) {
    for (const TypeName& name : symbol.declaration->interfaces) {
        ClassSymbol* interface = FindTypeSymbol(name.name);
        if (!interface || FormOf(*interface) != ClassForm::Interface) {
            diagnostics_.Add(name.at, interface ? kDeclarationSays.noInterface(name.name) : UnknownType(name.name));
        } else if (symbol.declaration->form != ClassForm::Class) {
            diagnostics_.Add(name.at, kDeclarationSays.implementsInInterface());
        } else {
            symbol.interfaces.push_back(interface);
            for (ClassSymbol* above = interface; above && above->declaration;
                 above = const_cast<ClassSymbol*>(above->base))
                above->implementers.push_back(&symbol);
        }
    }
}

// A class has every method of its interfaces, its own or inherited.
void Checker::CheckInterfaces(const ClassSymbol& symbol) {
    for (const ClassSymbol* interface : symbol.interfaces)
        for (const ClassSymbol* at = interface; at; at = at->base)
            for (const auto& [name, wanted] : at->routines)
                for (const RoutineSymbol* method : wanted) {
                    const auto own = symbols_.FindRoutines(symbol, name);
                    const bool has = std::any_of(own.begin(), own.end(), [&](const RoutineSymbol* routine) {
                        return SameParameters(routine->signature, method->signature) && !routine->shared &&
                               routine->signature.result == method->signature.result;
                    });
                    if (has) continue;
                    diagnostics_.Add(
                        symbol.declaration->at,
                        kDeclarationSays.missingMethod(symbol.name, interface->name, TextOf(method->signature)));
                }
}

void Checker::OrderClasses() {
    // Each depth is counted once: in a long chain it takes as many steps as there are classes.
    std::unordered_map<const ClassSymbol*, int> depths;
    for (auto* classes : {&symbols_.scriptClasses, &classes_}) {
        for (const ClassSymbol* symbol : *classes) depths.try_emplace(symbol, Distance(symbol, symbols_.object));
        std::stable_sort(classes->begin(), classes->end(), [&](const ClassSymbol* a, const ClassSymbol* b) {
            return depths.find(a)->second < depths.find(b)->second;
        });
    }
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
        diagnostics_.Add(declarator.at, kDeclarationSays.memberTwice(symbol.name, field->name,
                                                                     LineOf(at->second->declaration->declarator.at)));
    symbol.ownFields.push_back(field);
}

void Checker::DeclareMembers(ClassSymbol& symbol) {
    for (FieldDeclaration& field : symbol.declaration->fields) DeclareField(symbol, field);
    for (RoutineDeclaration& declaration : symbol.declaration->routines) {
        RoutineSymbol* routine = DeclareRoutine(declaration, &symbol);
        const std::string lower = host::LowerName(declaration.name);
        const auto field = symbol.fields.find(PlainName(lower));
        if (field != symbol.fields.end() && declaration.kind != RoutineKind::Event)
            diagnostics_.Add(declaration.at,
                             kDeclarationSays.memberTwice(symbol.name, field->second->name,
                                                          LineOf(field->second->declaration->declarator.at)));
        AddRoutine(symbol.routines[lower], *routine, symbol.name + " has a ");
        if (declaration.declaresEvent) DeclareEvent(symbol, *routine);
    }
    if (symbol.declaration->form != ClassForm::Delegate) return;
    symbol.invoke = std::make_unique<Signature>(symbol.routines["invoke"][0]->signature);
    symbol.routines.clear();
}

// A delegate type that no script names.
ClassSymbol* Checker::MakeDelegate(const std::string& name, Signature signature, Position at) {
    ClassSymbol* symbol = symbols_.AddClass(name);
    ClassDeclaration& declaration = symbols_.AddDeclaration();
    declaration.name = name;
    declaration.at = at;
    declaration.form = ClassForm::Delegate;
    symbol->declaration = &declaration;
    symbol->invoke = std::make_unique<Signature>(std::move(signature));
    symbols_.scriptClasses.push_back(symbol);
    return symbol;
}

// How a handler of an event is called: with the object that has it first.
Signature Checker::HandlerOf(const Signature& event, const ClassSymbol& sender) {
    Signature signature = event;
    ParameterSymbol first;
    first.name = "sender";
    first.type = {Base::Object, false, &sender};
    signature.parameters.insert(signature.parameters.begin(), std::move(first));
    return signature;
}

namespace {

ExpressionPtr Written(Node node, Position at, std::string text = {}) {
    ExpressionPtr expression = MakeExpression(node, kNoType, at);
    expression->text = std::move(text);
    return expression;
}

// "handler.Invoke(Self, parameters)", by itself or as what is returned.
StatementPtr CallOfHandler(const std::string& field, const RoutineSymbol& event) {
    const Position at = event.declaration->at;
    ExpressionPtr member = Written(Node::Member, at, "Invoke");
    member->operands.push_back(Written(Node::Name, at, field));
    ExpressionPtr call = Written(Node::Apply, at);
    call->operands.push_back(std::move(member));
    call->operands.push_back(Written(Node::Self, at));
    for (const ParameterSymbol& parameter : event.signature.parameters)
        call->operands.push_back(Written(Node::Name, at, parameter.name));
    auto statement = std::make_unique<Statement>();
    statement->action = event.signature.result == kNoType ? Action::Call : Action::Return;
    statement->at = at;
    statement->expressions.push_back(std::move(call));
    return statement;
}

}  // namespace

// An event is a method that subclasses override with their handlers. Its own body calls the handler
// that AddHandler gave to this object, which a property without a speakable name holds.
void Checker::DeclareEvent(ClassSymbol& symbol, RoutineSymbol& event) {
    const Position at = event.declaration->at;
    const std::string name = "handler " + PlainName(event.signature.name);
    const ClassSymbol* delegate = MakeDelegate(name + " of " + symbol.name, HandlerOf(event.signature, symbol), at);
    FieldDeclaration& declaration = symbols_.AddFieldDeclaration();
    declaration.declarator.name = name;
    declaration.declarator.at = at;
    FieldSymbol* field = symbols_.AddField();
    field->name = name;
    field->owner = &symbol;
    field->declaration = &declaration;
    field->type = {Base::Object, false, delegate};
    field->slot = symbol.slotCount++;
    symbol.fields.emplace(host::LowerName(name), field);
    symbol.ownFields.push_back(field);
    auto check = std::make_unique<Statement>();
    check->action = Action::If;
    check->at = at;
    ExpressionPtr isThere = Written(Node::Binary, at);
    isThere->op = Operator::NotEqual;
    isThere->operands.push_back(Written(Node::Name, at, name));
    isThere->operands.push_back(Written(Node::NilLiteral, at));
    check->expressions.push_back(std::move(isThere));
    check->blocks.emplace_back().push_back(CallOfHandler(name, event));
    event.declaration->body.push_back(std::move(check));
}

// One more of a name; `there` begins the message for one too many.
void Checker::AddRoutine(std::vector<RoutineSymbol*>& overloads, RoutineSymbol& routine, const std::string& there) {
    for (const RoutineSymbol* other : overloads)
        if (SameParameters(other->signature, routine.signature))
            diagnostics_.Add(routine.declaration->at, kDeclarationSays.routineTwice(there + routine.signature.name,
                                                                                    other->declaration->at.line));
    overloads.push_back(&routine);
}

void Checker::DeclareParameters(RoutineSymbol& routine) {
    bool optional = false;
    bool open = false;
    for (Parameter& parameter : routine.declaration->parameters) {
        if (open) diagnostics_.Add(parameter.at, kDeclarationSays.afterParamArray());
        open |= parameter.paramArray;
        ParameterSymbol& symbol = routine.signature.parameters.emplace_back();
        static_cast<host::ParameterFlags&>(symbol) = parameter;
        symbol.name = parameter.name;
        symbol.type = ResolveType(parameter.type);
        if (parameter.paramArray && !IsWrong(symbol.type) && !symbol.type.array) symbol.type.array = true;
        if (parameter.extends && &parameter != &routine.declaration->parameters.front())
            diagnostics_.Add(parameter.at, kDeclarationSays.extendsPlace());
        if (parameter.extends && routine.owner && FormOf(*routine.owner) != ClassForm::Module)
            diagnostics_.Add(parameter.at, kDeclarationSays.extendsInClass());
        if (parameter.assigns && &parameter != &routine.declaration->parameters.back())
            diagnostics_.Add(parameter.at, kDeclarationSays.assignsPlace());
        if (optional && !parameter.optional && !parameter.paramArray && !parameter.assigns)
            diagnostics_.Add(parameter.at, kDeclarationSays.optionalOrder());
        optional |= parameter.optional;
        if (!parameter.defaultValue) continue;
        CheckValue(parameter.defaultValue);
        Convert(parameter.defaultValue, symbol.type, "the default of " + parameter.name);
        if (IsLiteral(*parameter.defaultValue)) {
            symbol.defaultValue = LiteralValue(*parameter.defaultValue);
        } else if (!IsWrong(parameter.defaultValue->type)) {
            diagnostics_.Add(parameter.defaultValue->at, kDeclarationSays.defaultNotConstant());
        }
    }
}

RoutineSymbol* Checker::DeclareRoutine(RoutineDeclaration& declaration, ClassSymbol* owner) {
    RoutineSymbol* routine = symbols_.AddRoutine();
    routine->declaration = &declaration;
    routine->owner = owner;
    routine->shared = declaration.shared;
    routine->isPrivate = declaration.isPrivate;
    routine->needsPrefix = declaration.needsPrefix;
    routine->signature.name = declaration.name;
    if (!declaration.result.name.empty()) routine->signature.result = ResolveType(declaration.result);
    DeclareParameters(*routine);
    const bool special =
        owner && (host::SameName(declaration.name, "Constructor") || host::SameName(declaration.name, "Destructor"));
    if (special && (routine->shared || routine->signature.result != kNoType))
        diagnostics_.Add(declaration.at, kDeclarationSays.notASub(declaration.name));
    if (special && host::SameName(declaration.name, "Destructor") && !routine->signature.parameters.empty())
        diagnostics_.Add(declaration.at, kDeclarationSays.destructorParameters());
    return routine;
}

// A method that overrides another gives what that one gives.
void Checker::CheckOverride(const RoutineSymbol& routine) {
    if (!routine.owner || routine.shared || routine.event || !routine.owner->base) return;
    for (const Candidate& inherited : MethodCandidates(*routine.owner->base, routine.signature.name, false)) {
        if (!SameParameters(*inherited.signature, routine.signature)) continue;
        if (host::SameName(routine.signature.name, "Constructor")) continue;
        if (inherited.signature->result == routine.signature.result) continue;
        diagnostics_.Add(routine.declaration->at,
                         kDeclarationSays.overrideType(routine.signature.name, NameOf(inherited.signature->result),
                                                       TextOf(*inherited.signature)));
    }
}

void Checker::CheckEvent(RoutineSymbol& routine) {
    if (routine.declaration->kind != RoutineKind::Event || routine.declaration->declaresEvent) return;
    const std::string name = PlainName(routine.signature.name);
    const host::Event* event = FindNativeEvent(*routine.owner->base, name);
    const Position at = routine.declaration->at;
    if (!event) {
        const auto inherited = symbols_.FindRoutines(*routine.owner->base, routine.signature.name);
        if (inherited.empty())
            return diagnostics_.Add(
                at, kDeclarationSays.noEventToHandle(routine.owner->name,
                                                     name + host::DidYouMean(name, EventNames(*routine.owner))));
        if (!SameParameters(inherited[0]->signature, routine.signature) ||
            inherited[0]->signature.result != routine.signature.result)
            diagnostics_.Add(
                at, kDeclarationSays.handlerDiffers(TextOf(inherited[0]->signature).substr(kEventMark.size())));
        return;
    }
    const auto fromHost = [this](const host::Type& type) { return symbols_.FromHost(type); };
    const auto wanted = host::WithTypes<Type>(event->declaration, fromHost);
    if (!SameParameters(wanted, routine.signature) || wanted.result != routine.signature.result)
        return diagnostics_.Add(at, kDeclarationSays.handlerDiffers(TextOf(wanted)));
    routine.event = event;
}

const host::Event* Checker::FindNativeEvent(const ClassSymbol& type, std::string_view name) const {
    for (const ClassSymbol* at = &type; at; at = at->base)
        if (at->native && !at->declaration) return at->native->FindEvent(name);
    return nullptr;
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
            diagnostics_.Add(declarator.value->at, kDeclarationSays.constantNotConstant());
        }
        return;
    }
    CheckSizes(declarator.sizes);
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
    CheckStatements(routine.declaration->body);
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
    CheckStatements(program_.body);
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
            diagnostics_.Add(declaration.at, kDeclarationSays.nameOfType(declaration.name));
        auto& overloads = symbols_.routines[host::LowerName(declaration.name)];
        std::erase_if(overloads, [&](const RoutineSymbol* other) {
            return other->code && SameParameters(other->signature, routine->signature);  // of a step before
        });
        AddRoutine(overloads, *routine, "there is a ");
    }
    ForEachRoutine([this](RoutineSymbol& routine) { CheckEvent(routine); });
    ForEachRoutine([this](RoutineSymbol& routine) { CheckOverride(routine); });
    for (ClassSymbol* symbol : classes_) CheckInterfaces(*symbol);
    CheckMainProgram();
    for (ClassSymbol* symbol : classes_) CheckClassBodies(*symbol);
    ForEachRoutine([this](RoutineSymbol& routine) { CheckRoutine(routine); });
}

void Check(Program& program, Symbols& symbols, Diagnostics& diagnostics) {
    Checker(program, symbols, diagnostics).Run();
}

}  // namespace script
