// From values to registers and back: a call planned once for each function, then made through libffi or straight.
#include "host/calls/Call.h"

#include <ffi.h>

#include <array>
#include <cassert>
#include <cstring>
#include <vector>

#include "host/calls/Border.h"
#include "host/calls/Runtime.h"
#include "host/objects/Handlers.h"
#include "platform/RegisterCall.h"

namespace host {

// The shape of a call: what libffi needs to know of a signature, and whether it can be done
// without.
struct CallPlan {
    ffi_cif cif{};
    std::vector<ffi_type*> types;
    Declaration declaration;
    bool inRegisters = false;
    bool reals = false;  // there are doubles or singles among the arguments
};

namespace {

// The instance, the arguments and an assigned value.
constexpr std::size_t kMostCells = kMostParameters + 2;

// One argument or result as it is passed.
union Cell {
    std::uint8_t byte;
    std::uint16_t half;
    std::uint32_t word;
    std::int64_t int64;
    double real;
    float single;
    void* pointer;
    ffi_arg whole;
};

bool IsReference(Kind kind) { return kind == Kind::String || kind == Kind::Array || kind == Kind::Object; }

// What libffi calls whole numbers of 1, 2, 4 and 8 bytes.
ffi_type* WholeFfiType(const KindRow& row) {
    switch (row.size) {
        case 1:
            return row.isSigned ? &ffi_type_sint8 : &ffi_type_uint8;
        case 2:
            return row.isSigned ? &ffi_type_sint16 : &ffi_type_uint16;
        case 4:
            return row.isSigned ? &ffi_type_sint32 : &ffi_type_uint32;
        default:
            return row.isSigned ? &ffi_type_sint64 : &ffi_type_uint64;
    }
}

ffi_type* FfiTypeOf(Kind kind) {
    const KindRow& row = RowOf(kind);
    if (kind == Kind::None) return &ffi_type_void;
    if (row.form == NumberForm::Real) return row.size == 8 ? &ffi_type_double : &ffi_type_float;
    return IsReference(kind) ? &ffi_type_pointer : WholeFfiType(row);
}

const Type& TypeOfArgument(const Declaration& declaration, std::size_t index) {
    return index < declaration.parameters.size() ? declaration.parameters[index].type : declaration.result;
}

// Variants take the general way, which puts them into boxes.
void ChooseRegisters(CallPlan& plan, bool passSelf, std::size_t count) {
    std::size_t whole = passSelf ? 1 : 0, real = 0;
    bool variants = plan.declaration.result.IsVariant();
    for (std::size_t i = 0; i < count; ++i) {
        const Type& type = TypeOfArgument(plan.declaration, i);
        variants |= type.IsVariant();
        ++(IsRealKind(type.kind) ? real : whole);
    }
    plan.reals = real > 0;
    plan.inRegisters = platform::kRegisterCalls && !variants && whole <= platform::Registers::kWhole &&
                       real <= platform::Registers::kReal;
}

std::shared_ptr<CallPlan> MakePlan(const Declaration& declaration, bool passSelf, std::size_t count) {
    auto plan = std::make_shared<CallPlan>();
    plan->declaration = declaration;
    ChooseRegisters(*plan, passSelf, count);
    if (passSelf) plan->types.push_back(&ffi_type_pointer);
    for (const Parameter& parameter : declaration.parameters) plan->types.push_back(FfiTypeOf(parameter.type.kind));
    // A setter takes one more, of the result's type, and gives nothing.
    const bool setter = count > declaration.parameters.size();
    if (setter) plan->types.push_back(FfiTypeOf(declaration.result.kind));
    ffi_type* result = setter ? &ffi_type_void : FfiTypeOf(declaration.result.kind);
    [[maybe_unused]] const ffi_status status = ffi_prep_cif(
        &plan->cif, FFI_DEFAULT_ABI, static_cast<unsigned>(plan->types.size()), result, plan->types.data());
    assert(status == FFI_OK);
    return plan;
}

void* ReferenceIn(const Value& value) {
    if (value.kind() == Kind::String) return value.string();
    if (value.kind() == Kind::Array) return value.array();
    return static_cast<sdk::Object*>(value.object());
}

// The low bytes of a number, as many as its kind has.
void SetWhole(Cell& cell, std::int32_t size, std::int64_t bits) {
    if (size == 1) cell.byte = static_cast<std::uint8_t>(bits);
    if (size == 2) cell.half = static_cast<std::uint16_t>(bits);
    if (size == 4) cell.word = static_cast<std::uint32_t>(bits);
    if (size == 8) cell.int64 = bits;
}

std::int64_t WholeIn(const Cell& cell, std::int32_t size) {
    if (size == 1) return cell.byte;
    if (size == 2) return cell.half;
    return size == 4 ? std::int64_t{cell.word} : cell.int64;
}

// What a number, Boolean or colour of a kind is kept as. A value of another kind is brought into it.
std::int64_t WholeOf(const Value& value, Kind kind) {
    if (value.kind() == kind) return value.bits();
    if (IsWholeKind(kind)) return NumberAs(value, kind).bits();
    return kind == Kind::Boolean ? value.ToBoolean() : value.ToInt64();
}

// A borrowed value as an argument.
Cell CellOf(const Value& value, Kind kind) {
    Cell cell{};
    if (kind == Kind::None) return cell;
    if (kind == Kind::Double)
        cell.real = value.ToDouble();
    else if (kind == Kind::Single)
        cell.single = static_cast<float>(value.ToDouble());
    else if (IsReference(kind))
        cell.pointer = value.kind() == kind ? ReferenceIn(value) : nullptr;
    else
        SetWhole(cell, RowOf(kind).size, WholeOf(value, kind));
    return cell;
}

// A result as libffi gives it: narrow ones widened to a whole register, of which the low bytes
// count, wherever in it they are.
Cell NarrowedResult(const Cell& result, Kind kind) {
    Cell cell = result;
    const KindRow& row = RowOf(kind);
    const bool whole = row.form != NumberForm::Real && !IsReference(kind);
    if (whole && row.size < static_cast<std::int32_t>(sizeof(ffi_arg)))
        SetWhole(cell, row.size, static_cast<std::int64_t>(result.whole));
    return cell;
}

// A cell as a value. References are taken over when `owned`, else shared.
template <class T>
Ref<T> Take(void* pointer, bool owned) {
    auto* counted = static_cast<T*>(pointer);
    return owned ? Ref<T>::Adopt(counted) : Ref<T>::Share(counted);
}

// A number, Boolean or colour by its low bytes.
Value WholeValue(std::int64_t bits, Kind kind) {
    if (kind == Kind::Boolean) return Value((bits & 0xFF) != 0);
    return Value::OfKind(kind, WrapTo(bits, kind));
}

Value ReferenceValue(void* pointer, Kind kind, bool owned) {
    if (kind == Kind::String) return Value(Take<String>(pointer, owned));
    if (kind == Kind::Array) return Value(Take<Array>(pointer, owned));
    return Value(Take<Object>(pointer, owned));
}

Value ValueOf(const Cell& cell, const Type& type, bool owned) {
    if (type.kind == Kind::None) return Value();
    if (type.kind == Kind::Double) return Value(cell.real);
    if (type.kind == Kind::Single) return Value(cell.single);
    if (!IsReference(type.kind)) return WholeValue(WholeIn(cell, RowOf(type.kind).size), type.kind);
    Value value = ReferenceValue(cell.pointer, type.kind, owned);
    return type.IsVariant() ? Unbox(Ref<Object>::Share(value.object())) : value;
}

// --- Calls in registers ---------------------------------------------------------------------

// A single lies in the low half of its register.
double RegisterOf(float value) {
    double whole = 0;
    std::memcpy(&whole, &value, sizeof(value));
    return whole;
}

platform::Registers RegistersOf(const CallPlan& plan, bool passSelf, Object* self, std::span<const Value> arguments) {
    platform::Registers in{};
    std::size_t whole = 0, real = 0;
    if (passSelf) in.whole[whole++] = reinterpret_cast<std::intptr_t>(static_cast<sdk::Object*>(self));
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Kind kind = TypeOfArgument(plan.declaration, i).kind;
        if (kind == Kind::Double)
            in.real[real++] = arguments[i].ToDouble();
        else if (kind == Kind::Single)
            in.real[real++] = RegisterOf(static_cast<float>(arguments[i].ToDouble()));
        else
            in.whole[whole++] = WholeOf(arguments[i], kind);
    }
    return in;
}

// A call without libffi, with the result as a value.
Value CallDirectly(sdk::AnyFunction function, const platform::Registers& in, bool reals, Kind result) {
    if (result == Kind::None) {
        platform::CallInRegisters<void>(function, in, reals);
        return Value();
    }
    if (result == Kind::Double) return Value(platform::CallInRegisters<double>(function, in, reals));
    if (result == Kind::Single) return Value(platform::CallInRegisters<float>(function, in, reals));
    if (IsReference(result)) return ReferenceValue(platform::CallInRegisters<void*>(function, in, reals), result, true);
    return WholeValue(platform::CallInRegisters<std::int64_t>(function, in, reals), result);
}

// The value whose reference the callee gets to see: itself, or its box for a variant.
Value Passed(const Value& value, const Type& type) { return type.IsVariant() ? Value(Box(value)) : value; }

void WriteReferenceField(std::uint8_t* field, const Value& value, Kind kind) {
    Value old;
    void* pointer = nullptr;
    std::memcpy(&pointer, field, sizeof(pointer));
    if (kind == Kind::String)
        old = Value(Ref<String>::Adopt(static_cast<String*>(pointer)));
    else if (kind == Kind::Array)
        old = Value(Ref<Array>::Adopt(static_cast<Array*>(pointer)));
    else
        old = Value(Ref<Object>::Adopt(static_cast<Object*>(pointer)));
    void* held = nullptr;
    if (kind == Kind::String)
        held = Ref<String>::Share(value.string()).Detach();
    else if (kind == Kind::Array)
        held = Ref<Array>::Share(value.array()).Detach();
    else
        held = Ref<Object>::Share(value.object()).Detach();
    // The field holds the new one before the old one's destructor can look at it.
    std::memcpy(field, &held, sizeof(held));
}

std::size_t FieldSize(Kind kind) { return FfiTypeOf(kind)->size; }

std::uint8_t* FieldOf(const Property& property, Object* self, std::int32_t offset) {
    return DataAt<std::uint8_t>(self, property.owner->dataOffset() + offset);
}

Declaration AccessorDeclaration(const Property& property) { return {property.name, {}, property.type}; }

}  // namespace

namespace {

Value CallPlanned(sdk::AnyFunction function, const CallPlan& plan, bool passSelf, Object* self,
                  std::span<const Value> arguments) {
    const Declaration& declaration = plan.declaration;
    const auto keepAlive = Ref<Object>::Share(self);
    const bool setter = arguments.size() > declaration.parameters.size();
    if (plan.inRegisters)
        return CallDirectly(function, RegistersOf(plan, passSelf, self, arguments), plan.reals,
                            setter ? Kind::None : declaration.result.kind);
    std::array<Cell, kMostCells> cells;
    std::array<void*, kMostCells> pointers;
    std::size_t count = 0;
    const auto pass = [&](const Cell& cell) {
        cells[count] = cell;
        pointers[count] = &cells[count];
        ++count;
    };
    std::vector<Value> boxes;  // hold what variants are passed as
    if (passSelf) pass({.pointer = static_cast<sdk::Object*>(self)});
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const Type& type = TypeOfArgument(declaration, i);
        if (type.IsVariant()) boxes.emplace_back(Box(arguments[i]));
        pass(CellOf(type.IsVariant() ? boxes.back() : arguments[i], type.kind));
    }
    Cell result{};
    // libffi takes the shape as one that it could change, which it doesn't.
    ffi_call(const_cast<ffi_cif*>(&plan.cif), function, &result, pointers.data());
    if (setter) return Value();
    return ValueOf(NarrowedResult(result, declaration.result.kind), declaration.result, true);
}

}  // namespace

Value CallFunction(sdk::AnyFunction function, const Declaration& declaration, bool passSelf, Object* self,
                   std::span<const Value> arguments, std::shared_ptr<CallPlan>& plan) {
    if (!plan) plan = MakePlan(declaration, passSelf, arguments.size());
    return CallPlanned(function, *plan, passSelf, self, arguments);
}

Value Invoke(const Method& method, Object* self, std::span<Value> arguments) {
    if (!method.function) return method.body(self, arguments);
    return CallFunction(method.function, method.declaration, !method.shared, self, arguments, method.plan);
}

void InvokeSetter(const Method& method, Object* self, std::span<Value> arguments, const Value& assigned) {
    std::vector<Value> all(arguments.begin(), arguments.end());
    all.push_back(assigned);
    InvokeSetter(method, self, all);
}

void InvokeSetter(const Method& method, Object* self, std::span<Value> all) {
    if (!method.function)
        method.assign(self, all);
    else
        CallFunction(method.setter, method.declaration, !method.shared, self, all, method.setterPlan);
}

Value GetProperty(const Property& property, Object* self) {
    if (property.read) return property.read(self, {});
    if (property.slot >= 0) return property.owner->SlotsOf(self)[property.slot];
    if (property.getter.function) {
        if (!property.plan) property.plan = MakePlan(AccessorDeclaration(property), true, 0);
        return CallPlanned(property.getter.function, *property.plan, true, self, {});
    }
    Cell cell{};
    std::memcpy(&cell, FieldOf(property, self, property.getter.fieldOffset), FieldSize(property.type.kind));
    return ValueOf(cell, property.type, false);
}

void SetProperty(const Property& property, Object* self, const Value& value) {
    if (property.write) {
        Value argument = value;
        property.write(self, {&argument, 1});
        return;
    }
    if (property.slot >= 0) {
        // Through a copy, so that the slot is whole before the old value's destructor runs.
        Value old = std::exchange(property.owner->SlotsOf(self)[property.slot], value);
        return;
    }
    if (property.setter.function) {
        if (!property.setterPlan) property.setterPlan = MakePlan(AccessorDeclaration(property), true, 1);
        CallPlanned(property.setter.function, *property.setterPlan, true, self, {&value, 1});
        return;
    }
    std::uint8_t* field = FieldOf(property, self, property.setter.fieldOffset);
    const Kind kind = property.type.kind;
    if (IsReference(kind)) return WriteReferenceField(field, Passed(value, property.type), kind);
    const Cell cell = CellOf(value, kind);
    std::memcpy(field, &cell, FieldSize(kind));
}

bool RaiseEvent(const Event& event, Object* self, std::span<Value> arguments, Value& result) {
    const EventHandler* handler = self ? HandlerOf(*self, event.number) : nullptr;
    if (!handler) return false;
    result = handler->body(self, arguments);
    return true;
}

// --- Closures -----------------------------------------------------------------------------

struct Closure::Parts {
    Declaration declaration;
    Callable body;
    std::shared_ptr<CallPlan> plan;
    ffi_closure* closure = nullptr;

    Value Run(void** arguments) const;
    void Give(const Value& value, void* result) const;
    static void Called(ffi_cif*, void* result, void** arguments, void* parts) noexcept;
};

// Gives the body copies of the arguments and converts what it gives to the declared type.
Value Closure::Parts::Run(void** arguments) const {
    Object* self = static_cast<Object*>(*static_cast<sdk::Object**>(arguments[0]));
    std::vector<Value> values;
    for (std::size_t i = 0; i < declaration.parameters.size(); ++i) {
        const Type& type = declaration.parameters[i].type;
        Cell cell{};
        std::memcpy(&cell, arguments[i + 1], FieldSize(type.kind));
        values.push_back(ValueOf(cell, type, false));
    }
    const auto keepAlive = Ref<Object>::Share(self);
    return Runtime::Get().RunGuarded([&] { return body(self, values); });
}

void Closure::Parts::Called(ffi_cif*, void* result, void** arguments, void* context) noexcept {
    const auto* parts = static_cast<const Parts*>(context);
    const Type& type = parts->declaration.result;
    const Value value = AtBorder([&] { return Passed(parts->Run(arguments), type); });
    if (type.kind != Kind::None) parts->Give(value, result);
}

// Hands a value of the declared type, or nothing for zero, to the caller.
void Closure::Parts::Give(const Value& value, void* result) const {
    const Type& type = declaration.result;
    const Cell cell = CellOf(value, type.kind);
    // The caller gets a reference of its own.
    if (type.kind == Kind::String) Retain(value.string());
    if (type.kind == Kind::Array) Retain(value.array());
    if (type.kind == Kind::Object) Retain(value.object());
    const std::size_t size = FieldSize(type.kind);
    if (size < sizeof(ffi_arg) && type.kind != Kind::Single) {
        const auto whole = static_cast<ffi_arg>(WholeOf(value, type.kind));
        std::memcpy(result, &whole, sizeof(whole));
    } else {
        std::memcpy(result, &cell, size);
    }
}

Closure::Closure(const Declaration& declaration, Callable body) : parts_(new Parts) {
    parts_->declaration = declaration;
    parts_->body = std::move(body);
    parts_->plan = MakePlan(declaration, true, declaration.parameters.size());
    void* code = nullptr;
    parts_->closure = static_cast<ffi_closure*>(ffi_closure_alloc(sizeof(ffi_closure), &code));
    if (!parts_->closure) throw std::bad_alloc();
    [[maybe_unused]] const ffi_status status =
        ffi_prep_closure_loc(parts_->closure, &parts_->plan->cif, &Parts::Called, parts_.get(), code);
    assert(status == FFI_OK);
    std::memcpy(&function_, &code, sizeof(code));
}

Closure::~Closure() { ffi_closure_free(parts_->closure); }

sdk::AnyFunction FunctionOf(const Method& method) {
    if (method.function) return method.function;
    if (!method.closure) method.closure = std::make_shared<Closure>(method.declaration, method.body);
    return method.closure->function();
}

sdk::AnyFunction FunctionOf(const EventHandler& handler) {
    if (!handler.closure) handler.closure = std::make_shared<Closure>(handler.event->declaration, handler.body);
    return handler.closure->function();
}

}  // namespace host
