// From values to registers and back: a call planned once for each function, then made through libffi or straight.
#include "host/calls/Call.h"

#include <array>
#include <cstring>
#include <vector>

#include "host/calls/Border.h"
#include "host/calls/ForeignCall.h"
#include "host/calls/Runtime.h"
#include "host/objects/Handlers.h"
#include "platform/RegisterCall.h"

namespace host {

// The shape of a call, and whether registers alone can do it.
struct CallPlan {
    Declaration declaration;
    std::vector<Kind> arguments;  // with an assigned value, without the instance
    Kind result;
    ForeignShape shape;
    bool inRegisters = false;
    bool reals = false;  // there are doubles or singles among the arguments
};

namespace {

// The instance, the arguments and an assigned value.
constexpr std::size_t kMostCells = kMostParameters + 2;

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

// A setter takes one more argument, of the result's type, and gives nothing.
std::shared_ptr<CallPlan> MakePlan(const Declaration& declaration, bool passSelf, std::size_t count) {
    std::vector<Kind> arguments;
    for (std::size_t i = 0; i < count; ++i) arguments.push_back(TypeOfArgument(declaration, i).kind);
    std::vector<Kind> all(arguments);
    if (passSelf) all.insert(all.begin(), Kind::Object);
    const bool setter = count > declaration.parameters.size();
    const Kind result = setter ? Kind::None : declaration.result.kind;
    std::shared_ptr<CallPlan> plan(new CallPlan{declaration, std::move(arguments), result, {std::move(all), result}});
    ChooseRegisters(*plan, passSelf, count);
    return plan;
}

void* ReferenceIn(const Value& value) {
    if (value.kind() == Kind::String) return value.string();
    if (value.kind() == Kind::Array) return value.array();
    return static_cast<sdk::Object*>(value.object());
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
    else if (IsReferenceKind(kind))
        cell.pointer = value.kind() == kind ? ReferenceIn(value) : nullptr;
    else
        SetWhole(cell, RowOf(kind).size, WholeOf(value, kind));
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
    if (!IsReferenceKind(type.kind)) return WholeValue(WholeIn(cell, RowOf(type.kind).size), type.kind);
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
        const Kind kind = plan.arguments[i];
        if (kind == Kind::Double)
            in.real[real++] = arguments[i].ToDouble();
        else if (kind == Kind::Single)
            in.real[real++] = RegisterOf(static_cast<float>(arguments[i].ToDouble()));
        else
            in.whole[whole++] = WholeOf(arguments[i], kind);
    }
    return in;
}

// A call by registers alone, with the result as a value.
Value CallDirectly(sdk::AnyFunction function, const platform::Registers& in, bool reals, Kind result) {
    if (result == Kind::None) {
        platform::CallInRegisters<void>(function, in, reals);
        return Value();
    }
    if (result == Kind::Double) return Value(platform::CallInRegisters<double>(function, in, reals));
    if (result == Kind::Single) return Value(platform::CallInRegisters<float>(function, in, reals));
    if (IsReferenceKind(result))
        return ReferenceValue(platform::CallInRegisters<void*>(function, in, reals), result, true);
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

std::size_t FieldSize(Kind kind) { return static_cast<std::size_t>(CellSize(kind)); }

std::uint8_t* FieldOf(const Property& property, Object* self, std::int32_t offset) {
    return DataAt<std::uint8_t>(self, property.owner->dataOffset() + offset);
}

Declaration AccessorDeclaration(const Property& property) { return {property.name, {}, property.type}; }

}  // namespace

namespace {

// The general way, with boxes around variants.
Value CallInCells(sdk::AnyFunction function, const CallPlan& plan, bool passSelf, Object* self,
                  std::span<const Value> arguments) {
    std::array<Cell, kMostCells> cells;
    std::size_t count = 0;
    std::vector<Value> boxes;  // hold what variants are passed as
    if (passSelf) cells[count++].pointer = static_cast<sdk::Object*>(self);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const bool variant = TypeOfArgument(plan.declaration, i).IsVariant();
        if (variant) boxes.emplace_back(Box(arguments[i]));
        cells[count++] = CellOf(variant ? boxes.back() : arguments[i], plan.arguments[i]);
    }
    const Cell result = plan.shape.Call(function, {cells.data(), count});
    return plan.result == Kind::None ? Value() : ValueOf(result, plan.declaration.result, true);
}

Value CallPlanned(sdk::AnyFunction function, const CallPlan& plan, bool passSelf, Object* self,
                  std::span<const Value> arguments) {
    const auto keepAlive = Ref<Object>::Share(self);
    if (!plan.inRegisters) return CallInCells(function, plan, passSelf, self, arguments);
    return CallDirectly(function, RegistersOf(plan, passSelf, self, arguments), plan.reals, plan.result);
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

bool ReadWholeField(const Property& property, const Object& self, Value& target) {
    if (property.wholeAt == 0) return false;
    const auto* field = reinterpret_cast<const std::uint8_t*>(&self) + property.wholeAt;
    const Kind kind = property.type.kind;
    if (kind == Kind::Integer) {
        std::int32_t word = 0;
        std::memcpy(&word, field, sizeof(word));
        target = Value(word);
    } else {
        Cell cell{};
        std::memcpy(&cell, field, FieldSize(kind));
        target = WholeValue(WholeIn(cell, RowOf(kind).size), kind);
    }
    return true;
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
    if (IsReferenceKind(kind)) return WriteReferenceField(field, Passed(value, property.type), kind);
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
    Callable body;
    std::shared_ptr<CallPlan> plan;
    std::unique_ptr<ForeignClosure> closure;

    Value Run(std::span<const Cell> cells) const;
    static Cell Called(std::span<const Cell> cells, void* parts) noexcept;
};

// Gives the body copies of the arguments.
Value Closure::Parts::Run(std::span<const Cell> cells) const {
    Object* self = static_cast<Object*>(static_cast<sdk::Object*>(cells[0].pointer));
    std::vector<Value> values;
    for (std::size_t i = 1; i < cells.size(); ++i)
        values.push_back(ValueOf(cells[i], plan->declaration.parameters[i - 1].type, false));
    const auto keepAlive = Ref<Object>::Share(self);
    return Runtime::Get().RunGuarded([&] { return body(self, values); });
}

// Hands what the body gives, or nothing for zero, to the caller, in the declared type.
Cell Closure::Parts::Called(std::span<const Cell> cells, void* context) noexcept {
    const auto* parts = static_cast<const Parts*>(context);
    const Type& type = parts->plan->declaration.result;
    const Value value = AtBorder([&] { return Passed(parts->Run(cells), type); });
    // The caller gets a reference of its own.
    if (type.kind == Kind::String) Retain(value.string());
    if (type.kind == Kind::Array) Retain(value.array());
    if (type.kind == Kind::Object) Retain(value.object());
    return CellOf(value, type.kind);
}

Closure::Closure(const Declaration& declaration, Callable body) : parts_(new Parts) {
    parts_->body = std::move(body);
    parts_->plan = MakePlan(declaration, true, declaration.parameters.size());
    parts_->closure = std::make_unique<ForeignClosure>(parts_->plan->shape, &Parts::Called, parts_.get());
    function_ = parts_->closure->function();
}

Closure::~Closure() = default;

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
