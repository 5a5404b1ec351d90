// Properties as slots, methods and handlers as bodies that run on the machine.
#include "host/script/ScriptClasses.h"

#include <algorithm>

#include "host/script/MachineAccess.h"

namespace script {

namespace {

host::Callable BodyOf(RoutineSymbol& routine, Machine& machine) {
    return [&routine, &machine](host::Object* self, std::span<host::Value> arguments) {
        const Function* code = routine.code;
        if (self && !routine.event) code = machine.FindOverride(*self->type, routine);
        return machine.Invoke(*code, self, arguments);
    };
}

// A destructor's exceptions can't go through a release: they wait until the machine looks. One that waits
// already is none of this destructor's, and stays.
void Destroy(const RoutineSymbol& routine, Machine& machine, host::Object* self) {
    host::Ref<host::Object> waiting = host::Runtime::Get().TakeRaised();
    try {
        machine.Invoke(*routine.code, self, {});
    } catch (const host::Raised& raised) {
        if (!waiting) waiting = raised.exception;
    }
    if (!waiting) return;
    host::Runtime::Get().Raise(waiting);
    WantAttention();
}

void AddRoutine(host::Class& type, RoutineSymbol& routine, Machine& machine) {
    if (routine.event) {
        host::EventHandler handler;
        handler.event = routine.event;
        handler.body = BodyOf(routine, machine);
        type.AddEventHandler(std::move(handler));
        return;
    }
    if (routine.signature.name.find(' ') != std::string::npos) return;  // an accessor or event of the script's own
    if (host::SameName(routine.signature.name, "Destructor")) {
        type.SetDestructor([&routine, &machine](host::Object* self) { Destroy(routine, machine, self); });
        return;
    }
    host::Method method;
    method.declaration = host::WithTypes<host::Type>(routine.signature, ToHost);
    method.shared = routine.shared;
    method.body = BodyOf(routine, machine);
    routine.method = &type.AddMethod(std::move(method));
}

// What a delegate calls its routine on, and the routine's address.
void AddDelegateSlots(host::Class& type) {
    type.AddSlot(host::Value(nullptr));
    type.AddSlot(host::Value(std::int64_t{0}));
}

// A computed property, for whoever comes from outside.
void AddAccessor(host::Class& type, const ClassSymbol& symbol, RoutineSymbol& getter, Machine& machine) {
    host::Property property;
    property.name = getter.signature.name.substr(kGetterMark.size());
    property.type = ToHost(getter.signature.result);
    property.shared = getter.shared;
    property.read = BodyOf(getter, machine);
    const auto setter = symbol.routines.find(std::string(kSetterMark) + host::LowerName(property.name));
    if (setter != symbol.routines.end()) property.write = BodyOf(*setter->second.front(), machine);
    type.AddProperty(std::move(property));
}

void AddField(host::Class& type, const FieldSymbol& field) {
    if (field.shared) return;
    host::Property property;
    property.name = field.name;
    property.type = ToHost(field.type);
    property.slot = type.AddSlot(FirstValueOf(field.type));
    type.AddProperty(std::move(property));
}

}  // namespace

void RegisterClasses(Symbols& symbols, Machine& machine) {
    for (ClassSymbol* symbol : symbols.scriptClasses) {
        if (symbol->made) continue;
        const host::Class* base = symbol->base->declaration ? symbol->base->made : symbol->base->native;
        auto type = std::make_unique<host::Class>(symbol->name, base);
        for (const FieldSymbol* field : symbol->ownFields) AddField(*type, *field);
        if (symbol->invoke) AddDelegateSlots(*type);
        for (auto& [name, overloads] : symbol->routines)
            for (RoutineSymbol* routine : overloads) {
                AddRoutine(*type, *routine, machine);
                if (name.starts_with(kGetterMark)) AddAccessor(*type, *symbol, *routine, machine);
            }
        symbol->made = host::Runtime::Get().AddClass(std::move(type));
    }
}

bool IsOfScript(const host::Object& object, const Symbols& symbols) {
    return std::any_of(symbols.scriptClasses.begin(), symbols.scriptClasses.end(),
                       [&](const ClassSymbol* symbol) { return symbol->made && host::IsA(&object, *symbol->made); });
}

bool UnregisterClasses(Symbols& symbols) noexcept {
    for (const host::Object* object = host::NewestLiveObject(); object; object = object->next)
        if (IsOfScript(*object, symbols)) return false;
    UnregisterClasses(symbols, {});
    return true;
}

void UnregisterClasses(Symbols& symbols, const std::vector<ClassSymbol*>& kept) noexcept {
    for (auto symbol = symbols.scriptClasses.rbegin(); symbol != symbols.scriptClasses.rend(); ++symbol) {
        if (std::find(kept.begin(), kept.end(), *symbol) != kept.end()) continue;
        if ((*symbol)->made) host::Runtime::Get().RemoveClass(*(*symbol)->made);
        (*symbol)->made = nullptr;
    }
}

}  // namespace script
