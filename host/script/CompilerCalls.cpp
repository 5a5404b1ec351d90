// Calls, new objects, properties and assignments as instructions.
#include <algorithm>

#include "host/script/FunctionCompiler.h"

namespace script {

// Whether some subclass has its own form of the method, so that the receiver's class decides.
bool FunctionCompiler::IsOverridden(const RoutineSymbol& routine) const {
    if (!routine.HasReceiver()) return false;
    if (FormOf(*routine.owner) == ClassForm::Interface) return true;
    const std::string lower = host::LowerName(routine.signature.name);
    return std::any_of(symbols_.scriptClasses.begin(), symbols_.scriptClasses.end(), [&](const ClassSymbol* symbol) {
        if (symbol == routine.owner || !Inherits(symbol, routine.owner)) return false;
        const auto found = symbol->routines.find(lower);
        if (found == symbol->routines.end()) return false;
        return std::any_of(found->second.begin(), found->second.end(), [&](const RoutineSymbol* other) {
            return SameParameters(other->signature, routine.signature);
        });
    });
}

// A reference to what the argument names.
Operand FunctionCompiler::CompileByRef(Expression& argument) {
    const Operand reference = Temporary(kVariantType);
    switch (argument.node) {
        case Node::Local:
        case Node::Global:
            RefVariable(*argument.variable, reference.index);
            break;
        case Node::Element: {
            const Operand array = CompileKept(argument, 0);
            const Operand index = CompileIndex(argument, array, nullptr);
            Emit(Op::RefElement, reference.index, array.index, index.index);
            Free(index);
            Free(array);
            break;
        }
        case Node::Field:
            CompileUnaryInto(Op::RefField, *argument.operands[0], reference.index, FieldOffset(argument));
            break;
        default:
            RefProperty(argument, reference.index);
    }
    return reference;
}

void FunctionCompiler::RefVariable(const Variable& variable, std::uint16_t target) {
    if (variable.storage == Storage::ByRef)
        Emit(Op::Move, target, variable.index);
    else if (variable.storage == Storage::Local || isMain_)
        Emit(Op::RefLocal, target, variable.index);
    else
        EmitNumber(Op::RefGlobal, target, variable.index);
}

void FunctionCompiler::RefProperty(Expression& argument, std::uint16_t target) {
    const std::uint16_t property = PropertyIndex(argument.property);
    if (argument.operands.empty())
        Emit(Op::RefProperty, target, kNoRegister, property);
    else
        CompileUnaryInto(Op::RefProperty, *argument.operands[0], target, property);
}

// Where a field lies, in values from the object's address.
std::uint16_t FunctionCompiler::FieldOffset(const ClassSymbol& owner, std::int32_t slot) {
    return static_cast<std::uint16_t>(FirstField(owner) + static_cast<std::size_t>(slot));
}

// Arguments in order. `first` is the operand of the signature's first parameter; those before it
// are the receiver.
void FunctionCompiler::CompileArguments(CallSite& site, Expression& expression, std::size_t first,
                                        const Signature* signature, std::vector<Operand>& temporaries) {
    for (std::size_t i = 0; i < expression.operands.size(); ++i) {
        const bool byRef = signature && i >= first && i - first < signature->parameters.size() &&
                           signature->parameters[i - first].byRef;
        const Operand operand = byRef ? CompileByRef(*expression.operands[i]) : CompileKept(expression, i);
        temporaries.push_back(operand);
        site.arguments.push_back(operand.index);
    }
}

void FunctionCompiler::EmitCall(CallSite site, Expression& expression, std::uint16_t target,
                                const std::vector<Operand>& temporaries) {
    Op op = Op::CallNative;
    if (site.routine) op = !expression.direct && IsOverridden(*site.routine) ? Op::CallVirtual : Op::Call;
    if (expression.node == Node::CallSetter) op = Op::CallSetter;
    if (op == Op::CallNative && (site.quick = host::QuickFormOf(*site.native))) op = Op::CallQuick;
    if (op == Op::CallSetter) site.quick = host::QuickSetterOf(*site.native);
    function_.sites.push_back(std::move(site));
    EmitNumber(op, target, function_.sites.size() - 1);
    for (const Operand& temporary : temporaries) Free(temporary);
}

void FunctionCompiler::CompileCall(Expression& expression, std::uint16_t target) {
    const Position at = at_;
    CallSite site;
    const Signature* signature = nullptr;
    std::size_t first = 0;
    if (expression.routine) {
        site.routine = expression.routine;
        signature = &expression.routine->signature;
        site.hasReceiver = expression.routine->HasReceiver();
    } else {
        site.native = expression.native->method;
        site.hasReceiver = expression.native->method->owner && !expression.native->method->shared;
    }
    first = site.hasReceiver ? 1 : 0;
    std::vector<Operand> temporaries;
    CompileArguments(site, expression, first, signature, temporaries);
    at_ = at;
    EmitCall(std::move(site), expression, target, temporaries);
}

// A new object gets the first values of its fields, class by class from the base, and then its
// constructor runs. The variable that is to have it gets it last.
void FunctionCompiler::CompileNew(Expression& expression, std::uint16_t target) {
    const Position at = at_;
    const Operand object = Temporary(expression.type);
    EmitNumber(Op::NewObject, object.index, TypeIndex(expression.type));
    std::vector<const ClassSymbol*> chain;
    for (const ClassSymbol* type = expression.type.of; type; type = type->base) chain.push_back(type);
    for (auto type = chain.rbegin(); type != chain.rend(); ++type) {
        if (!(*type)->initializer) continue;
        CallSite site;
        site.seenCode = (*type)->initializer;
        site.arguments.push_back(object.index);
        function_.sites.push_back(std::move(site));
        EmitNumber(Op::Call, kNoRegister, function_.sites.size() - 1);
    }
    if (expression.routine || expression.native) {
        CallSite site;
        site.hasReceiver = true;
        site.arguments.push_back(object.index);
        const Signature* signature = nullptr;
        if (expression.routine) {
            site.routine = expression.routine;
            signature = &expression.routine->signature;
        } else {
            site.native = expression.native->method;
        }
        std::vector<Operand> temporaries;
        CompileArguments(site, expression, 0, signature, temporaries);
        at_ = at;
        expression.direct = true;
        EmitCall(std::move(site), expression, kNoRegister, temporaries);
    }
    Emit(Op::Move, target, object.index);
    Free(object);
}

// An object that holds the receiver, or Nil, and the routine's address, which no script reads.
void FunctionCompiler::CompileNewDelegate(Expression& expression, std::uint16_t target) {
    const Operand receiver =
        expression.operands.empty() ? Constant(kNilType, host::Value(nullptr)) : Compile(*expression.operands[0]);
    const Operand object = Temporary(expression.type);
    EmitNumber(Op::NewObject, object.index, TypeIndex(expression.type));
    const ClassSymbol& delegate = *expression.type.of;
    Emit(Op::StoreField, object.index, receiver.index, FieldOffset(delegate, 0));
    const auto address = static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(expression.routine));
    Emit(Op::StoreFieldBits, object.index, Constant(kInt64Type, host::Value(address)).index, FieldOffset(delegate, 1));
    Emit(Op::Move, target, object.index);
    Free(object);
    Free(receiver);
}

void FunctionCompiler::CompileCallDelegate(Expression& expression, std::uint16_t target) {
    const Position at = at_;
    CallSite site;
    site.hasReceiver = true;
    std::vector<Operand> temporaries;
    CompileArguments(site, expression, 1, expression.operands[0]->type.of->invoke.get(), temporaries);
    at_ = at;
    function_.sites.push_back(std::move(site));
    EmitNumber(Op::CallDelegate, target, function_.sites.size() - 1);
    for (const Operand& temporary : temporaries) Free(temporary);
}

void FunctionCompiler::CompileHandle(Expression& expression) {
    const Position at = at_;
    const Operand object = CompileKept(expression, 0);
    const Operand handler = Compile(*expression.operands[1]);
    at_ = at;
    if (function_.events.size() >= kMostRegisters) throw FunctionTooLarge();
    function_.events.push_back(expression.event);
    Emit(Op::Handle, object.index, handler.index, static_cast<std::uint16_t>(function_.events.size() - 1));
    Free(handler);
    Free(object);
}

std::uint16_t FunctionCompiler::PropertyIndex(const host::Property* property) {
    auto& known = function_.properties;
    const auto found = std::find(known.begin(), known.end(), property);
    if (found != known.end()) return static_cast<std::uint16_t>(found - known.begin());
    if (known.size() >= kMostRegisters) throw FunctionTooLarge();
    known.push_back(property);
    return static_cast<std::uint16_t>(known.size() - 1);
}

void FunctionCompiler::CompileProperty(Expression& expression, std::uint16_t target) {
    const Position at = at_;
    const std::uint16_t property = PropertyIndex(expression.property);
    const bool sets = expression.node == Node::SetProperty;
    const bool hasObject = expression.operands.size() == (sets ? 2u : 1u);
    Operand object{kNoRegister, false};
    if (hasObject) object = CompileKept(expression, 0);
    if (sets) {
        const Operand value = Compile(*expression.operands.back());
        at_ = at;
        Emit(Op::SetProperty, object.index, value.index, property);
        Free(value);
    } else {
        at_ = at;
        Emit(Op::GetProperty, target, object.index, property);
    }
    if (hasObject) Free(object);
}

// --- Assignments

void FunctionCompiler::StoreVariable(const Expression& target, Operand value) {
    const Variable& variable = *target.variable;
    const bool reference = HoldsReference(variable.type);
    if (variable.storage == Storage::ByRef) {
        Emit(Op::StoreRef, variable.index, value.index);
    } else if (variable.storage == Storage::Local || isMain_) {
        Emit(reference ? Op::Move : Op::MoveBits, variable.index, value.index);
    } else {
        EmitNumber(reference ? Op::StoreGlobal : Op::StoreGlobalBits, value.index, variable.index);
    }
}

void FunctionCompiler::StoreElementOrField(const Expression& target, Operand object, Operand index, Operand value) {
    const bool reference = HoldsReference(target.type);
    if (target.node == Node::Element) {
        Emit(reference ? Op::StoreElement : Op::StoreElementBits, object.index, index.index, value.index);
        return;
    }
    Emit(reference ? Op::StoreField : Op::StoreFieldBits, object.index, value.index, FieldOffset(target));
}

namespace {

bool IsConcatenation(const Expression& expression) {
    return expression.node == Node::Intrinsic && expression.intrinsic == IntrinsicKind::Concatenate;
}

// Whether both name the same variable, or the same field of the same object.
bool SamePlace(const Expression& a, const Expression& b) {
    if (a.node != b.node) return false;
    switch (a.node) {
        case Node::Local:
        case Node::Global:
            return a.variable == b.variable && a.variable->storage != Storage::ByRef;
        case Node::Self:
            return true;
        case Node::Field:
            return a.owner == b.owner && a.fieldIndex == b.fieldIndex && SamePlace(*a.operands[0], *b.operands[0]);
        default:
            return false;
    }
}

// Takes `place` off the front of "place + a + b", which leaves "a + b". Null, with the value as it
// was, when it is no such sum.
ExpressionPtr TakeAddend(const Expression& place, Expression& value) {
    if (!IsConcatenation(value)) return nullptr;
    if (SamePlace(place, *value.operands[0])) return std::move(value.operands[1]);
    ExpressionPtr inner = TakeAddend(place, *value.operands[0]);
    if (!inner) return nullptr;
    auto rest = std::make_unique<Expression>(std::move(value));
    rest->operands[0] = std::move(inner);
    return rest;
}

}  // namespace

// "text = text + more": the text grows where it is. False when the assignment is none.
bool FunctionCompiler::AssignGrown(Expression& target, Expression& value) {
    const ExpressionPtr addend = TakeAddend(target, value);
    if (!addend) return false;
    const Position at = at_;
    const bool field = target.node == Node::Field;
    const Operand object = field ? CompileBefore(*target.operands[0], *addend) : Operand{};
    Operand before{kNoRegister, false};
    if (MayRunScript(*addend)) {
        before = Temporary(kStringType);
        if (field)
            Emit(Op::LoadField, before.index, object.index, FieldOffset(target));
        else
            LoadVariable(target, before.index);
    }
    const Operand more = Compile(*addend);
    at_ = at;
    if (field) {
        Emit(Op::GrowField, object.index, more.index, FieldOffset(target));
        Emit(Op::Jump, before.index);
    } else {
        const bool ownRegister = target.node == Node::Local || isMain_;
        Emit(ownRegister ? Op::Grow : Op::GrowGlobal, target.variable->index, before.index, more.index);
    }
    Free(more);
    Free(before);
    Free(object);
    return true;
}

void FunctionCompiler::Assign(Expression& target, Expression& value) {
    if (AssignGrown(target, value)) return;
    if (target.node == Node::Local || target.node == Node::Global) {
        const Variable& variable = *target.variable;
        const bool ownRegister = variable.storage == Storage::Local || (target.node == Node::Global && isMain_);
        if (ownRegister) return CompileTo(value, variable.index);
        const Operand operand = Compile(value);
        StoreVariable(target, operand);
        return Free(operand);
    }
    const Position at = at_;
    const bool element = target.node == Node::Element;
    const bool indexRuns = element && std::any_of(target.operands.begin() + 1, target.operands.end(),
                                                  [](const ExpressionPtr& index) { return MayRunScript(*index); });
    const Operand object = indexRuns ? CompileKept(target, 0) : CompileBefore(*target.operands[0], value);
    Operand index;
    if (element) index = CompileIndex(target, object, &value);
    const Operand operand = Compile(value);
    at_ = at;
    StoreElementOrField(target, object, index, operand);
    Free(operand);
    if (element) Free(index);
    Free(object);
}

}  // namespace script
