#include "host/script/ScriptClasses.h"

#include <algorithm>
#include <map>
#include <set>

#include "host/script/MachineState.h"

namespace script {

namespace {

host::Value FirstValueOf(Type type) {
    if (type.array) return host::Value(host::Ref<host::Array>());
    if (TakesNil(type)) return host::Value(nullptr);
    return host::DefaultOf(ToHost(type));
}

host::Declaration DeclarationOf(const Signature& signature) {
    host::Declaration declaration;
    declaration.name = signature.name;
    if (signature.result != kNoType) declaration.result = ToHost(signature.result);
    for (const ParameterSymbol& parameter : signature.parameters) {
        host::Parameter& copy = declaration.parameters.emplace_back();
        copy.name = parameter.name;
        copy.type = ToHost(parameter.type);
        copy.byRef = parameter.byRef;
        copy.paramArray = parameter.paramArray;
    }
    return declaration;
}

host::Callable BodyOf(RoutineSymbol& routine, Machine& machine) {
    return [&routine, &machine](host::Object* self, std::span<host::Value> arguments) {
        const Function* code = routine.code;
        if (self && !routine.event) code = machine.FindOverride(*self->type, routine);
        return machine.Invoke(*code, self, arguments);
    };
}

// A destructor's exceptions can't go through a release: they wait until the machine looks.
void Destroy(const RoutineSymbol& routine, Machine& machine, host::Object* self) {
    try {
        machine.Invoke(*routine.code, self, {});
    } catch (const host::Raised& raised) {
        host::Runtime::Get().Raise(raised.exception);
        WantAttention();
    }
}

void AddRoutine(host::Class& type, RoutineSymbol& routine, Machine& machine) {
    if (routine.event) {
        host::EventHandler handler;
        handler.event = routine.event;
        handler.body = BodyOf(routine, machine);
        type.AddEventHandler(std::move(handler));
        return;
    }
    if (host::SameName(routine.signature.name, "Destructor")) {
        type.SetDestructor([&routine, &machine](host::Object* self) { Destroy(routine, machine, self); });
        return;
    }
    host::Method method;
    method.declaration = DeclarationOf(routine.signature);
    method.shared = routine.shared;
    method.body = BodyOf(routine, machine);
    routine.method = &type.AddMethod(std::move(method));
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
        const host::Class* base = symbol->base->declaration ? symbol->base->made : symbol->base->native;
        auto type = std::make_unique<host::Class>(symbol->name, base);
        for (const FieldSymbol* field : symbol->ownFields) AddField(*type, *field);
        for (auto& [name, overloads] : symbol->routines)
            for (RoutineSymbol* routine : overloads) AddRoutine(*type, *routine, machine);
        symbol->made = host::Runtime::Get().AddClass(std::move(type));
    }
}

namespace {

bool IsOfScript(const host::Object* object, const Symbols& symbols) {
    return std::any_of(symbols.scriptClasses.begin(), symbols.scriptClasses.end(),
                       [&](const ClassSymbol* symbol) { return symbol->made && host::IsA(object, *symbol->made); });
}

std::vector<std::string> Counted(const std::map<std::string, int>& counts) {
    std::vector<std::string> lines;
    for (const auto& [name, count] : counts) lines.push_back(std::to_string(count) + " × " + name);
    return lines;
}

// Empties the properties that the script gave an object.
void ClearSlots(host::Object* object) {
    for (const host::Class* type = object->type; type; type = type->superclass()) {
        for (std::size_t i = 0; i < type->slotDefaults().size(); ++i) {
            host::Value& slot = type->SlotsOf(object)[i];
            const host::Value old = std::exchange(slot, type->slotDefaults()[i]);
        }
    }
}

}  // namespace

bool UnregisterClasses(Symbols& symbols) {
    for (const host::Object* object : host::LiveObjects())
        if (IsOfScript(object, symbols)) return false;
    for (auto symbol = symbols.scriptClasses.rbegin(); symbol != symbols.scriptClasses.rend(); ++symbol) {
        if ((*symbol)->made) host::Runtime::Get().RemoveClass(*(*symbol)->made);
        (*symbol)->made = nullptr;
    }
    return true;
}

namespace {

template <class Held>
std::vector<host::Ref<Held>> HoldNew(const std::vector<Held*>& alive, const std::vector<Held*>& before) {
    const std::set<const Held*> known(before.begin(), before.end());
    std::vector<host::Ref<Held>> held;
    for (Held* one : alive)
        if (!known.contains(one)) held.push_back(host::Ref<Held>::Share(one));
    return held;
}

// Counts the objects of the script and the arrays that still live, and empties them. Arrays that
// go with their objects don't count.
std::map<std::string, int> BreakCycles(const Symbols& symbols, const Alive& before) {
    std::map<std::string, int> counts;
    auto objects = HoldNew(host::LiveObjects(), before.objects);
    std::erase_if(objects, [&](const auto& object) { return !IsOfScript(object.get(), symbols); });
    for (const auto& object : objects) ++counts[object->type->name()];
    for (const auto& object : objects) ClearSlots(object.get());
    const auto arrays = HoldNew(host::LiveArrays(), before.arrays);
    if (!arrays.empty()) counts["array"] = static_cast<int>(arrays.size());
    for (const auto& array : arrays) {
        const std::vector<host::Value> dropped = std::exchange(array->values, {});
    }
    return counts;
}

}  // namespace

Leftovers ReleaseLeftovers(const Symbols& symbols, const Alive& before) {
    const std::set<const host::Object*> known(before.objects.begin(), before.objects.end());
    std::map<std::string, int> cycles = BreakCycles(symbols, before), leaks;
    for (const host::Object* object : host::LiveObjects()) {
        if (known.contains(object)) continue;
        ++leaks[object->type->name()];
        const auto counted = cycles.find(object->type->name());
        if (counted != cycles.end() && --counted->second == 0) cycles.erase(counted);
    }
    return {Counted(cycles), Counted(leaks)};
}

}  // namespace script
