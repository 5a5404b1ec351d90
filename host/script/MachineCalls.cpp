// Calls of routines and of the host's members, and the properties and places behind references.
#include <memory>
#include <new>

#include "host/calls/Call.h"
#include "host/messages/RunningMessages.h"
#include "host/objects/Handlers.h"
#include "host/script/Machine.h"
#include "host/script/MachineAccess.h"
#include "host/script/Place.h"

namespace script {

namespace {

using host::Value;

// The arguments of a call of the host, kept alive for its time whatever the script does meanwhile.
class Arguments {
  public:
    Arguments(const CallSite& site, const Value* r) : count_(site.arguments.size() - (site.hasReceiver ? 1 : 0)) {
        const std::size_t first = site.hasReceiver ? 1 : 0;
        if (count_ > kFew) all_ = static_cast<Value*>(::operator new(count_ * sizeof(Value)));
        for (std::size_t i = 0; i < count_; ++i) new (all_ + i) Value(r[site.arguments[first + i]]);
    }
    ~Arguments() {
        std::destroy_n(all_, count_);
        if (count_ > kFew) ::operator delete(all_);
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;
    std::span<Value> All() { return {all_, count_}; }

  private:
    static constexpr std::size_t kFew = 8;

    std::size_t count_;
    Value* all_ = few_;
    union {
        Value few_[kFew];  // not made before they are needed
    };
};

host::Object* ReceiverOf(const CallSite& site, const Value* r) {
    return site.hasReceiver ? r[site.arguments[0]].object() : nullptr;
}

}  // namespace

// Lays the frame of a script's routine with the caller's arguments.
void Machine::EnterCall(Instruction instruction, const Function& caller, Value* r) {
    // Sites remember what a virtual call met; nothing else of a function changes.
    auto& site = const_cast<CallSite&>(caller.sites[instruction.Number()]);
    const Function* callee = site.routine ? site.routine->code : site.seenCode;
    if (site.hasReceiver) {
        const host::Object* self = ReceiverOf(site, r);
        if (!self) Throw(host::kScriptRaises.calledOnNil(site.routine->signature.name));
        if (instruction.op == Op::CallVirtual) {
            if (site.seen != self->type) {
                site.seenCode = FindOverride(*self->type, *site.routine);
                site.seen = self->type;
            }
            callee = site.seenCode;
        }
    }
    Value* result = instruction.a == kNoRegister ? nullptr : &r[instruction.a];
    Value* registers = PushFrame(*callee, result);
    for (std::size_t i = 0; i < site.arguments.size(); ++i) registers[callee->parameters[i]] = r[site.arguments[i]];
}

// What a delegate calls, and the object it calls it on.
const Function& Machine::CodeOf(const Value& delegate, Value& target) const {
    host::Object* const object = delegate.object();
    if (!object) Throw(host::kScriptRaises.calledOnNil("Invoke"));
    const Value* const slots = object->type->SlotsOf(object);
    const auto* routine = reinterpret_cast<const RoutineSymbol*>(slots[1].bits());
    target = slots[0];
    if (!routine || (routine->HasReceiver() && !target.object())) Throw(host::kScriptRaises.emptyDelegate());
    return *(routine->HasReceiver() ? FindOverride(*target.object()->type, *routine) : routine->code);
}

void Machine::EnterDelegate(Instruction instruction, const Function& caller, Value* r) {
    const CallSite& site = caller.sites[instruction.Number()];
    Value target;
    const Function& callee = CodeOf(r[site.arguments[0]], target);
    Value* registers = PushFrame(callee, instruction.a == kNoRegister ? nullptr : &r[instruction.a]);
    std::size_t next = 0;
    if (callee.parameters.size() == site.arguments.size()) registers[callee.parameters[next++]] = target;
    for (std::size_t i = 1; i < site.arguments.size(); ++i) registers[callee.parameters[next++]] = r[site.arguments[i]];
}

// From now on an object's event of the host calls a delegate, with the object as the first argument.
void Machine::AddHandler(Instruction instruction, const Function& function, Value* r) {
    host::Object* const object = r[instruction.a].object();
    const host::Event& event = *function.events[instruction.c];
    if (!object) Throw(host::kScriptRaises.askedOfNil(event.declaration.name));
    const Value delegate = r[instruction.b];
    if (!delegate.object()) return host::RemoveHandler(*object, event);
    const auto body = [this, delegate](host::Object* self, std::span<Value> arguments) {
        std::vector<Value> all = {Value(host::Ref<host::Object>::Share(self))};
        all.insert(all.end(), arguments.begin(), arguments.end());
        Value target;
        const Function& code = CodeOf(delegate, target);
        return Invoke(code, target.object(), all);
    };
    host::SetHandler(*object, event, body, this);
}

void Machine::FailOnNil(MemberUse use, const host::RaisedMessage& what) const {
    use.at = Here();
    for (MemberObserver* observer : observers) observer->OnNil(use);
    Throw(what(use.Name()));
}

// An object that outlived its destructors has nothing left for the host's members to work on.
inline void Machine::RefuseHusk(const MemberUse& use) {
    if (use.self && use.self->destroyed) FailOnHusk(use);
}

void Machine::FailOnHusk(const MemberUse& use) {
    Throw(host::kScriptRaises.destroyed(use.Name(), use.self->type->name()));
}

// Whatever becomes of the work, the observers see its end.
template <class Work>
Value Machine::Observe(MemberUse use, const Work& work) {
    if (observers.empty()) return work();
    use.at = Here();
    Value result;
    const auto end = [&] {
        for (MemberObserver* observer : observers) observer->After(use, result);
    };
    for (MemberObserver* observer : observers) observer->Before(use);
    try {
        result = work();
    } catch (...) {
        end();
        throw;
    }
    end();
    return result;
}

// Calls a member's form for scripts. False where the object is none that has members, which CallNative tells.
bool Machine::CallQuick(const CallSite& site, Value* r, std::uint16_t target) {
    host::Object* const self = ReceiverOf(site, r);
    if (site.hasReceiver && (!self || self->destroyed)) return false;
    const Value* arguments[host::kMostQuickArguments];
    const std::size_t first = site.hasReceiver ? 1 : 0;
    for (std::size_t i = first; i < site.arguments.size(); ++i) arguments[i - first] = &r[site.arguments[i]];
    Value unwanted;
    site.quick(self, arguments, target == kNoRegister ? unwanted : r[target]);
    return true;
}

void Machine::CallNative(Instruction instruction, const Function& function, Value* r) {
    const CallSite& site = function.sites[instruction.Number()];
    Arguments arguments(site, r);
    const MemberUse use{.method = site.native, .self = ReceiverOf(site, r), .arguments = arguments.All()};
    if (site.hasReceiver && !use.self) FailOnNil(use, host::kScriptRaises.calledOnNil);
    RefuseHusk(use);
    Value result = Observe(use, [&] { return host::Invoke(*use.method, use.self, arguments.All()); });
    CheckRaised();
    if (instruction.a != kNoRegister && !result.IsNothing()) r[instruction.a] = std::move(result);
}

void Machine::CallSetter(Instruction instruction, const Function& function, Value* r) {
    const CallSite& site = function.sites[instruction.Number()];
    if (site.quick && CallQuick(site, r, kNoRegister)) return;
    Arguments all(site, r);
    const std::span<Value> arguments = all.All().first(all.All().size() - 1);
    const Value& assigned = all.All().back();
    const MemberUse use{
        .method = site.native, .self = ReceiverOf(site, r), .arguments = arguments, .assigned = &assigned};
    if (site.hasReceiver && !use.self) FailOnNil(use, host::kScriptRaises.calledOnNil);
    RefuseHusk(use);
    Observe(use, [&] {
        host::InvokeSetter(*use.method, use.self, all.All());
        return Value();
    });
    CheckRaised();
}

void Machine::GetProperty(Instruction instruction, const Function& function, Value* r) {
    const host::Property& property = *function.properties[instruction.c];
    if (instruction.b == kNoRegister) return ReadProperty(property, nullptr, r[instruction.a]);
    host::Object* const self = r[instruction.b].object();
    if (!self) FailOnNil({.property = &property}, host::kScriptRaises.askedOfNil);
    const bool plain = observers.empty() && !self->destroyed;
    if (plain && host::ReadWholeField(property, *self, r[instruction.a])) return;
    ReadProperty(property, self, r[instruction.a]);
}

void Machine::ReadProperty(const host::Property& property, host::Object* self, Value& target) {
    const MemberUse use{.property = &property, .self = self};
    const bool husk = self && self->destroyed;
    Value result =
        Observe(use, [&] { return husk ? host::DefaultOf(property.type) : host::GetProperty(property, self); });
    CheckRaised();
    if (!result.IsNothing()) target = std::move(result);
}

void Machine::SetProperty(Instruction instruction, const Function& function, Value* r) {
    const host::Property& property = *function.properties[instruction.c];
    const Value value = r[instruction.b];
    if (instruction.a == kNoRegister) return WriteProperty(property, nullptr, value);
    host::Object* const self = r[instruction.a].object();
    if (!self) FailOnNil({.property = &property, .assigned = &value}, host::kScriptRaises.setOnNil);
    WriteProperty(property, self, value);
}

void Machine::WriteProperty(const host::Property& property, host::Object* self, const Value& value) {
    const MemberUse use{.property = &property, .self = self, .assigned = &value};
    RefuseHusk(use);
    const auto keepAlive = host::Ref<host::Object>::Share(self);
    Observe(use, [&] {
        host::SetProperty(property, self, value);
        return Value();
    });
    CheckRaised();
}

// --- References to places that are no variables

void Machine::LoadPlace(const Value& reference, Value& target) {
    const Place place = PlaceBehind(reference);
    switch (place.kind) {
        case Place::Kind::Element:
            target = Value(ElementOf(place.holder, place.index));
            return;
        case Place::Kind::Field:
            target = Value(FieldOf(place.holder, static_cast<std::size_t>(place.index)));
            return;
        case Place::Kind::Property:
            return ReadProperty(*place.property, place.holder.object(), target);
    }
}

void Machine::StorePlace(const Value& reference, const Value& value) {
    const Place place = PlaceBehind(reference);
    if (place.kind == Place::Kind::Property) return WriteProperty(*place.property, place.holder.object(), Value(value));
    Value& target = place.kind == Place::Kind::Element ? ElementOf(place.holder, place.index)
                                                       : FieldOf(place.holder, static_cast<std::size_t>(place.index));
    // The place has the new value before the old one's destructor can look at it.
    const Value old = std::exchange(target, value);
}

void Machine::MakePropertyReference(Instruction instruction, const Function& function, Value* r) {
    const host::Property& property = *function.properties[instruction.c];
    const bool ofObject = instruction.b != kNoRegister;
    if (ofObject && !r[instruction.b].object()) FailOnNil({.property = &property}, host::kScriptRaises.askedOfNil);
    r[instruction.a] = ReferenceToProperty(ofObject ? r[instruction.b] : Value(nullptr), property);
}

void Machine::NewObject(Instruction instruction, const Function& function, Value* r) {
    const TypeEntry& entry = function.types[instruction.Number()];
    const ClassSymbol& symbol = *entry.type.of;
    const host::Class* type = symbol.declaration ? symbol.made : symbol.native;
    if (!type) Throw(host::kScriptRaises.noObjects(symbol.name));
    host::Ref<host::Object> object = host::NewObject(*type);
    CheckRaised();
    if (!object) throw std::bad_alloc();
    // An address that is used again belongs to another exception than the one traced last.
    if (object.get() == traced_) traced_ = nullptr;
    r[instruction.a] = Value(std::move(object));
}

}  // namespace script
