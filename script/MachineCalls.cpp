#include <array>

#include "host/Call.h"
#include "script/Machine.h"
#include "script/MachineState.h"

namespace script {

namespace {

using host::Value;

// The arguments of a call of the host, kept alive for its time whatever the script does meanwhile.
class Arguments {
  public:
    Arguments(const CallSite& site, const Value* r) : count_(site.arguments.size() - (site.hasReceiver ? 1 : 0)) {
        const std::size_t first = site.hasReceiver ? 1 : 0;
        if (count_ > few_.size()) many_.resize(count_);
        for (std::size_t i = 0; i < count_; ++i) All()[i] = r[site.arguments[first + i]];
    }
    std::span<Value> All() { return {count_ > few_.size() ? many_.data() : few_.data(), count_}; }

  private:
    std::size_t count_;
    std::array<Value, 8> few_;
    std::vector<Value> many_;
};

host::Object* ReceiverOf(const CallSite& site, const Value* r, std::string_view name) {
    host::Object* self = r[site.arguments[0]].object();
    if (!self) Throw("NilObjectException", std::string(name) + " is called on Nil");
    return self;
}

}  // namespace

// Lays the frame of a script's routine with the caller's arguments.
void Machine::EnterCall(Instruction instruction, const Function& caller, Value* r) {
    // Sites remember what a virtual call met; nothing else of a function changes.
    auto& site = const_cast<CallSite&>(caller.sites[instruction.Number()]);
    const Function* callee = site.routine ? site.routine->code : site.seenCode;
    if (site.hasReceiver) {
        const host::Object* self = ReceiverOf(site, r, site.routine->signature.name);
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

void Machine::CallNative(Instruction instruction, const Function& function, Value* r) {
    const CallSite& site = function.sites[instruction.Number()];
    const host::Method& method = *site.native;
    host::Object* self = site.hasReceiver ? ReceiverOf(site, r, method.declaration.name) : nullptr;
    Arguments arguments(site, r);
    for (CallObserver* observer : observers) observer->BeforeCall(method, self, arguments.All(), Here());
    Value result = host::Invoke(method, self, arguments.All());
    for (CallObserver* observer : observers) observer->AfterCall(method, self, arguments.All(), result, Here());
    CheckRaised();
    if (instruction.a != kNoRegister && !result.IsNothing()) r[instruction.a] = std::move(result);
}

void Machine::CallSetter(Instruction instruction, const Function& function, Value* r) {
    const CallSite& site = function.sites[instruction.Number()];
    host::Object* self = site.hasReceiver ? ReceiverOf(site, r, site.native->declaration.name) : nullptr;
    Arguments arguments(site, r);
    const std::span<Value> all = arguments.All();
    for (CallObserver* observer : observers) observer->BeforeCall(*site.native, self, all, Here());
    host::InvokeSetter(*site.native, self, all.first(all.size() - 1), all.back());
    for (CallObserver* observer : observers) observer->AfterCall(*site.native, self, all, Value(), Here());
    CheckRaised();
}

void Machine::GetProperty(Instruction instruction, const Function& function, Value* r) {
    const host::Property& property = *function.properties[instruction.c];
    host::Object* self = instruction.b == kNoRegister ? nullptr : r[instruction.b].object();
    if (!self && instruction.b != kNoRegister) Throw("NilObjectException", property.name + " of Nil is asked for");
    Value result = host::GetProperty(property, self);
    CheckRaised();
    if (!result.IsNothing()) r[instruction.a] = std::move(result);
}

void Machine::SetProperty(Instruction instruction, const Function& function, Value* r) {
    const host::Property& property = *function.properties[instruction.c];
    host::Object* self = instruction.a == kNoRegister ? nullptr : r[instruction.a].object();
    if (!self && instruction.a != kNoRegister) Throw("NilObjectException", property.name + " of Nil is set");
    const Value value = r[instruction.b];
    const auto keepAlive = host::Ref<host::Object>::Share(self);
    host::SetProperty(property, self, value);
    CheckRaised();
}

void Machine::NewObject(Instruction instruction, const Function& function, Value* r) {
    const TypeEntry& entry = function.types[instruction.Number()];
    const ClassSymbol& symbol = *entry.type.of;
    const host::Class* type = symbol.declaration ? symbol.made : symbol.native;
    if (!type) Throw("RuntimeException", "There are no objects of class " + symbol.name);
    host::Ref<host::Object> object = host::NewObject(*type);
    CheckRaised();
    if (!object) Throw("RuntimeException", "There is not enough memory for a " + symbol.name);
    // An address that is used again belongs to another exception than the one traced last.
    if (object.get() == traced_) traced_ = nullptr;
    r[instruction.a] = Value(std::move(object));
}

}  // namespace script
