// The host's classes and functions under the script's records, and the symbols of a program.
#include "host/script/Symbols.h"

#include <algorithm>

#include "host/calls/Runtime.h"

namespace script {

std::string NameOf(Type type) {
    if (type.base == Base::None) return "nothing";
    if (type.base == Base::Wrong) return "?";
    if (type.base == Base::Nil) return "Nil";
    if (type.base == Base::Address) return "an address";
    std::string name = host::TypeText(ToHost(type));
    if (IsGrid(type)) name.insert(name.size() - 1, std::string(type.furtherDimensions, ','));
    return name;
}

// The simple type of a name; kNoType when it is none.
Type SimpleTypeNamed(std::string_view name) {
    if (host::SameName(name, "Variant")) return kVariantType;
    const host::Kind kind = host::TypeNamed(name).kind;
    return kind == host::Kind::Object ? kNoType : Type{static_cast<Base>(kind)};
}

host::Type ToHost(Type type) {
    host::Type element{KindOf(type.base), host::Kind::None, {}};
    if (element.kind == host::Kind::Object) element.className = type.of ? type.of->name : "Variant";
    return type.array ? host::ArrayOf(element) : element;
}

host::Value FirstValueOf(Type type) {
    return type.array ? host::Value(host::Ref<host::Array>()) : host::DefaultOf(ToHost(type));
}

bool Inherits(const ClassSymbol* type, const ClassSymbol* base) { return Distance(type, base) >= 0; }

bool MayBecome(Type from, Type to) {
    if (!IsObject(from) || !IsObject(to)) return false;
    return Inherits(to.of, from.of) || FormOf(*from.of) == ClassForm::Interface ||
           (FormOf(*to.of) == ClassForm::Interface && !Inherits(from.of, to.of));
}

int Distance(const ClassSymbol* type, const ClassSymbol* base) {
    int steps = 0;
    for (; type; type = type->base, ++steps) {
        if (type == base) return steps;
        for (const ClassSymbol* interface : type->interfaces)
            if (const int further = Distance(interface, base); further >= 0) return steps + 1 + further;
    }
    return -1;
}

ClassForm FormOf(const ClassSymbol& symbol) { return symbol.declaration ? symbol.declaration->form : ClassForm::Class; }

bool TakesAssignment(const Signature& signature) {
    return !signature.parameters.empty() && signature.parameters.back().assigns;
}

bool SameParameters(const Signature& a, const Signature& b) {
    return std::equal(a.parameters.begin(), a.parameters.end(), b.parameters.begin(), b.parameters.end(),
                      [](const ParameterSymbol& x, const ParameterSymbol& y) {
                          return x.type == y.type && x.extends == y.extends && x.assigns == y.assigns;
                      });
}

std::string TextOf(const Signature& signature) {
    std::string text = signature.name;
    std::string_view separator = "(";
    for (const ParameterSymbol& parameter : signature.parameters) {
        text += separator;
        if (parameter.byRef) text += "ByRef ";
        if (parameter.paramArray) text += "ParamArray ";
        if (parameter.assigns) text += "Assigns ";
        if (parameter.extends) text += "Extends ";
        text += parameter.name + " As " + NameOf(parameter.paramArray ? ElementOf(parameter.type) : parameter.type);
        if (parameter.optional) text += " = …";
        separator = ", ";
    }
    if (!signature.parameters.empty()) text += ")";
    if (signature.result != kNoType) text += " As " + NameOf(signature.result);
    return text;
}

Symbols::Symbols() { object = AddClass("Object"); }

ClassSymbol* Symbols::AddClass(std::string name) {
    ClassSymbol& symbol = classes_.emplace_back();
    symbol.name = name;
    symbol.base = object;
    classIndex_[std::move(name)] = &symbol;
    return &symbol;
}

ClassSymbol* Symbols::FindClass(std::string_view name) {
    const auto found = classIndex_.find(name);
    if (found != classIndex_.end()) return found->second;
    const host::Class* native = host::Runtime::Get().FindClass(name);
    if (!native || host::SameName(name, "Variant")) return nullptr;
    ClassSymbol* symbol = AddClass(native->name());
    symbol->native = native;
    if (native->superclass()) symbol->base = FindClass(native->superclass()->name());
    return symbol;
}

ClassSymbol* Symbols::FindHolder(std::string_view name) {
    if (!host::SameName(name, "Variant")) return FindClass(name);
    if (!variant_) {
        variant_ = &classes_.emplace_back();
        variant_->name = "Variant";
        variant_->base = object;
        variant_->native = host::Runtime::Get().FindClass("Variant");
    }
    return variant_;
}

Type Symbols::FromHost(const host::Type& type) {
    if (type.kind == host::Kind::None) return kNoType;
    const bool array = type.kind == host::Kind::Array;
    const host::Kind kind = array ? type.element : type.kind;
    if (kind == host::Kind::Object) {
        if (host::SameName(type.className, "Variant")) return {Base::Variant, array};
        ClassSymbol* symbol = FindClass(type.className);
        return {Base::Object, array, symbol ? symbol : object};
    }
    return {static_cast<Base>(kind), array};
}

const NativeMethod* Symbols::Wrap(const host::Method& method) {
    std::unique_ptr<NativeMethod>& wrapped = natives_[&method];
    if (wrapped) return wrapped.get();
    wrapped = std::make_unique<NativeMethod>();
    wrapped->method = &method;
    wrapped->signature =
        host::WithTypes<Type>(method.declaration, [this](const host::Type& type) { return FromHost(type); });
    return wrapped.get();
}

std::vector<const NativeMethod*> Symbols::WrapAll(const std::vector<const host::Method*>& methods) {
    std::vector<const NativeMethod*> wrapped;
    for (const host::Method* method : methods) wrapped.push_back(Wrap(*method));
    return wrapped;
}

std::vector<const NativeMethod*> Symbols::Functions(std::string_view name) {
    return WrapAll(host::Runtime::Get().FindFunctions(name));
}

namespace {

// The nearest class of the host on the way up.
const host::Class* NativeOf(const ClassSymbol& type) {
    const ClassSymbol* at = &type;
    while (at && at->declaration) at = at->base;
    return at ? at->native : nullptr;
}

}  // namespace

std::vector<const NativeMethod*> Symbols::Methods(const ClassSymbol& type, std::string_view name) {
    const host::Class* native = NativeOf(type);
    return native ? WrapAll(native->FindMethods(name)) : std::vector<const NativeMethod*>();
}

std::vector<const NativeMethod*> Symbols::SharedMethods(const ClassSymbol& type, std::string_view name) {
    const host::Class* native = NativeOf(type);
    return native ? WrapAll(native->FindSharedMethods(name)) : std::vector<const NativeMethod*>();
}

const host::Property* Symbols::FindProperty(const ClassSymbol& type, std::string_view name) {
    const host::Class* native = NativeOf(type);
    return native ? native->FindProperty(name) : nullptr;
}

Variable* Symbols::AddVariable(std::string name, Type type, Storage storage, Position at) {
    Variable& variable = variables_.emplace_back();
    variable.name = std::move(name);
    variable.type = type;
    variable.storage = storage;
    variable.at = at;
    if (storage == Storage::Global) globals.push_back(&variable);
    return &variable;
}

void Symbols::Restore(const Declared& before) {
    for (const ClassSymbol* symbol : scriptClasses)
        if (std::find(before.scriptClasses.begin(), before.scriptClasses.end(), symbol) == before.scriptClasses.end())
            classIndex_.erase(symbol->name);
    routines = before.routines;
    globalNames = before.globalNames;
    scriptClasses = before.scriptClasses;
    globals.resize(before.globals);
    while (routines_.size() > before.allRoutines) routines_.pop_back();
}

FieldSymbol* Symbols::FindField(const ClassSymbol& type, std::string_view name) const {
    const std::string lower = host::LowerName(name);
    for (const ClassSymbol* at = &type; at; at = at->base) {
        const auto found = at->fields.find(lower);
        if (found != at->fields.end()) return found->second;
    }
    return nullptr;
}

std::vector<RoutineSymbol*> Symbols::FindRoutines(const ClassSymbol& type, std::string_view name) const {
    const std::string lower = host::LowerName(name);
    std::vector<RoutineSymbol*> found;
    for (const ClassSymbol* at = &type; at; at = at->base) {
        const auto own = at->routines.find(lower);
        if (own == at->routines.end()) continue;
        for (RoutineSymbol* routine : own->second) {
            const bool overridden = std::any_of(found.begin(), found.end(), [&](const RoutineSymbol* nearer) {
                return SameParameters(nearer->signature, routine->signature);
            });
            if (!overridden) found.push_back(routine);
        }
        // A class with constructors of its own does not inherit any.
        if (lower == "constructor") break;
    }
    return found;
}

}  // namespace script
