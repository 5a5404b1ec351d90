// Values in registers: literals, variables, arithmetic, conversions, arrays.
#include <algorithm>

#include "host/script/FunctionCompiler.h"
#include "host/script/Literal.h"

namespace script {

bool MayRunScript(const Expression& expression) {
    switch (expression.node) {
        case Node::CallRoutine:
        case Node::CallNative:
        case Node::CallSetter:
        case Node::CallDelegate:
        case Node::Handle:
        case Node::GetProperty:
        case Node::NewObject:
            return true;
        default:
            break;
    }
    return std::any_of(expression.operands.begin(), expression.operands.end(),
                       [](const ExpressionPtr& operand) { return operand && MayRunScript(*operand); });
}

// Kept with the kind of its type, for when it becomes an argument or a variant.
Operand FunctionCompiler::CompileLiteral(const Expression& expression) {
    return Constant(expression.type, LiteralValue(expression));
}

// A value in any register, its own if it has one.
Operand FunctionCompiler::Compile(Expression& expression) {
    at_ = expression.at.line ? expression.at : at_;
    switch (expression.node) {
        case Node::IntegerLiteral:
        case Node::RealLiteral:
        case Node::BooleanLiteral:
        case Node::ColorLiteral:
            return CompileLiteral(expression);
        case Node::NilLiteral:
            if (!IsString(expression.type)) return CompileLiteral(expression);
            break;
        case Node::StringLiteral: {
            Operand text;
            if (TextConstant(expression.text, text)) return text;
            break;
        }
        case Node::Self:
            return {self_, false};
        case Node::Local:
            if (expression.variable->storage == Storage::Local) return {expression.variable->index, false};
            break;
        case Node::Global:
            if (isMain_) return {expression.variable->index, false};
            break;
        default:
            break;
    }
    const Operand result = Temporary(expression.type);
    CompileTo(expression, result.index);
    return result;
}

// A value that stays what it is while a later one is worked out.
Operand FunctionCompiler::CompileBefore(Expression& expression, const Expression& later) {
    const Operand operand = Compile(expression);
    const bool variable = expression.node == Node::Local || expression.node == Node::Global;
    if (operand.temporary || !variable || !MayRunScript(later)) return operand;
    const Operand copy = Temporary(expression.type);
    Emit(HoldsReference(expression.type) ? Op::Move : Op::MoveBits, copy.index, operand.index);
    return copy;
}

// The same among several operands: it stays while all the later ones are worked out.
Operand FunctionCompiler::CompileKept(Expression& expression, std::size_t index) {
    for (std::size_t later = index + 1; later < expression.operands.size(); ++later)
        if (MayRunScript(*expression.operands[later]))
            return CompileBefore(*expression.operands[index], *expression.operands[later]);
    return Compile(*expression.operands[index]);
}

void FunctionCompiler::LoadVariable(const Expression& expression, std::uint16_t target) {
    const Variable& variable = *expression.variable;
    const bool reference = HoldsReference(variable.type);
    if (variable.storage == Storage::ByRef) {
        Emit(Op::LoadRef, target, variable.index);
    } else if (variable.storage == Storage::Local || isMain_) {
        if (target != variable.index) Emit(reference ? Op::Move : Op::MoveBits, target, variable.index);
    } else {
        EmitNumber(reference ? Op::LoadGlobal : Op::LoadGlobalBits, target, variable.index);
    }
}

void FunctionCompiler::LoadLiteral(const Expression& literal, std::uint16_t target) {
    if (literal.node == Node::StringLiteral) {
        function_.texts.push_back(host::Value(literal.text));
        EmitNumber(Op::LoadText, target, function_.texts.size() - 1);
    } else if (IsString(literal.type)) {
        Emit(Op::Clear, target);
    } else {
        Emit(HoldsReference(literal.type) ? Op::Move : Op::MoveBits, target, CompileLiteral(literal).index);
    }
}

namespace {

Op NegationOf(Type type) {
    if (IsReal(type)) return Op::NegateD;
    return type.base == Base::Integer ? Op::NegateI : Op::NegateL;
}

Op ComplementOf(Type type) {
    if (type == kBooleanType) return Op::NotBoolean;
    return Op::NotWhole;
}

}  // namespace

void FunctionCompiler::CompileTo(Expression& expression, std::uint16_t target) {
    const Position outer = at_;
    at_ = expression.at.line ? expression.at : at_;
    CompileNode(expression, target);
    at_ = outer;
}

void FunctionCompiler::CompileNode(Expression& expression, std::uint16_t target) {
    switch (expression.node) {
        case Node::IntegerLiteral:
        case Node::RealLiteral:
        case Node::BooleanLiteral:
        case Node::ColorLiteral:
        case Node::NilLiteral:
        case Node::StringLiteral:
            return LoadLiteral(expression, target);
        case Node::Self:
            return CompileSelf(target);
        case Node::Local:
        case Node::Global:
            return LoadVariable(expression, target);
        case Node::Field:
            return CompileField(expression, target);
        case Node::Element:
            return CompileElement(expression, target);
        case Node::Convert:
            return CompileConvert(expression, target);
        case Node::Arithmetic:
            return CompileArithmetic(expression, target);
        case Node::Comparison:
            return CompileComparison(expression, target);
        case Node::Logic:
            return CompileLogic(expression, target);
        case Node::Negate:
            return CompileUnaryInto(NegationOf(expression.type), *expression.operands[0], target);
        case Node::Complement:
            return CompileUnaryInto(ComplementOf(expression.type), *expression.operands[0], target,
                                    static_cast<std::uint16_t>(KindOf(expression.type.base)));
        case Node::IsA:
            return CompileUnaryInto(Op::IsA, *expression.operands[0], target, TypeIndex(expression.typeName.resolved));
        case Node::CallRoutine:
        case Node::CallNative:
        case Node::CallSetter:
            return CompileCall(expression, target);
        case Node::GetProperty:
        case Node::SetProperty:
            return CompileProperty(expression, target);
        case Node::NewObject:
            return CompileNew(expression, target);
        case Node::NewDelegate:
            return CompileNewDelegate(expression, target);
        case Node::CallDelegate:
            return CompileCallDelegate(expression, target);
        case Node::Handle:
            return CompileHandle(expression);
        case Node::MakeArray:
            return CompileMakeArray(expression, target);
        case Node::ArrayMethod:
            return CompileArrayMethod(expression, target);
        case Node::Intrinsic:
            return CompileIntrinsic(expression, target);
        default:
            Emit(Op::Clear, target);
    }
}

void FunctionCompiler::CompileUnaryInto(Op op, Expression& operand, std::uint16_t target, std::uint16_t c) {
    const Position at = at_;
    const Operand value = Compile(operand);
    at_ = at;
    Emit(op, target, value.index, c);
    Free(value);
}

void FunctionCompiler::CompileBinaryInto(Op op, Expression& expression, std::uint16_t target, bool swapped) {
    const Position at = at_;
    const Operand left = CompileBefore(*expression.operands[0], *expression.operands[1]);
    const Operand right = Compile(*expression.operands[1]);
    at_ = at;
    Emit(op, target, swapped ? right.index : left.index, swapped ? left.index : right.index);
    Free(right);
    Free(left);
}

namespace {

Op Pick(Base base, Op integer, Op wide, Op isUnsigned, Op real, Op wideUnsigned) {
    switch (base) {
        case Base::UInt64:
            return wideUnsigned;
        case Base::Int64:
            return wide;
        case Base::UInt32:
            return isUnsigned;
        case Base::Double:
            return real;
        default:
            return integer;
    }
}

Op ArithmeticOp(Operator op, Base base) {
    switch (op) {
        case Operator::Add:
            return Pick(base, Op::AddI, Op::AddL, Op::AddU, Op::AddD, Op::AddL);
        case Operator::Subtract:
            return Pick(base, Op::SubtractI, Op::SubtractL, Op::SubtractU, Op::SubtractD, Op::SubtractL);
        case Operator::Multiply:
            return Pick(base, Op::MultiplyI, Op::MultiplyL, Op::MultiplyU, Op::MultiplyD, Op::MultiplyL);
        case Operator::IntegerDivide:
            return Pick(base, Op::DivideI, Op::DivideL, Op::DivideU, Op::DivideD, Op::DivideW);
        case Operator::Modulo:
            return Pick(base, Op::ModuloI, Op::ModuloL, Op::ModuloU, Op::ModuloI, Op::ModuloW);
        case Operator::Divide:
            return Op::DivideD;
        case Operator::Power:
            return Op::PowerD;
        case Operator::And:
            return Op::And;
        case Operator::Or:
            return Op::Or;
        default:
            return Op::Xor;
    }
}

}  // namespace

void FunctionCompiler::CompileArithmetic(Expression& expression, std::uint16_t target) {
    CompileBinaryInto(ArithmeticOp(expression.op, expression.type.base), expression, target, false);
}

namespace {

Op NumberConversion(Type from, Type to) {
    const bool wide = from.base == Base::UInt64;
    if (IsReal(to) && IsReal(from)) return to.base == Base::Single ? Op::DoubleToSingle : Op::MoveBits;
    if (to.base == Base::Single) return wide ? Op::WideToSingle : Op::WholeToSingle;
    if (to.base == Base::Double) return wide ? Op::WideToDouble : Op::WholeToDouble;
    if (host::RowOf(KindOf(to.base)).size == 8 && !IsReal(from)) return Op::MoveBits;
    switch (to.base) {
        case Base::UInt8:
            return IsReal(from) ? Op::DoubleToByte : Op::ToByte;
        case Base::Integer:
            return IsReal(from) ? Op::DoubleToInteger : Op::ToInteger;
        default:
            return IsReal(from) ? Op::DoubleToWhole : Op::ToWhole;
    }
}

}  // namespace

void FunctionCompiler::CompileConvert(Expression& expression, std::uint16_t target) {
    Expression& inner = *expression.operands[0];
    const Type from = inner.type;
    const Type to = expression.type;
    if (IsVariant(to)) return CompileUnaryInto(Op::Move, inner, target);
    if (IsNumeric(from) && IsNumeric(to))
        return CompileUnaryInto(NumberConversion(from, to), inner, target, static_cast<std::uint16_t>(KindOf(to.base)));
    const bool cast = MayBecome(from, to);
    CompileUnaryInto(cast ? Op::Cast : Op::ConvertValue, inner, target, TypeIndex(to));
}

void FunctionCompiler::CompileField(Expression& expression, std::uint16_t target) {
    CompileUnaryInto(HoldsReference(expression.type) ? Op::LoadField : Op::LoadFieldBits, *expression.operands[0],
                     target, FieldOffset(expression));
}

void FunctionCompiler::CompileElement(Expression& expression, std::uint16_t target) {
    const Op op = HoldsReference(expression.type) ? Op::LoadElement : Op::LoadElementBits;
    if (expression.operands.size() == 2) return CompileBinaryInto(op, expression, target, false);
    const Operand array = CompileKept(expression, 0);
    const Operand index = CompileIndex(expression, array, nullptr);
    Emit(op, target, array.index, index.index);
    Free(index);
    Free(array);
}

// Where an element lies in its array; it stays so while `later` is worked out.
Operand FunctionCompiler::CompileIndex(Expression& element, Operand array, const Expression* later) {
    const Position at = at_;
    if (element.operands.size() == 2)
        return later ? CompileBefore(*element.operands[1], *later) : Compile(*element.operands[1]);
    CallSite site;
    std::vector<Operand> indices;
    for (std::size_t i = 1; i < element.operands.size(); ++i) {
        indices.push_back(CompileKept(element, i));
        site.arguments.push_back(indices.back().index);
    }
    at_ = at;
    const Operand index = Temporary(kIntegerType);
    Emit(Op::GridIndex, index.index, array.index, SiteOf(std::move(site)));
    for (const Operand& operand : indices) Free(operand);
    return index;
}

std::uint16_t FunctionCompiler::SiteOf(CallSite site) {
    if (function_.sites.size() >= kMostRegisters) throw FunctionTooLarge();
    function_.sites.push_back(std::move(site));
    return static_cast<std::uint16_t>(function_.sites.size() - 1);
}

void FunctionCompiler::CompileMakeArray(Expression& expression, std::uint16_t target) {
    CallSite site;
    std::vector<Operand> operands;
    for (std::size_t i = 0; i < expression.operands.size(); ++i) {
        operands.push_back(CompileKept(expression, i));
        site.arguments.push_back(operands.back().index);
    }
    Emit(Op::MakeArray, target, SiteOf(std::move(site)), TypeIndex(ElementOf(expression.type)));
    for (const Operand& operand : operands) Free(operand);
}

// Of all operands but the first.
std::uint16_t FunctionCompiler::SiteOfRest(const std::vector<Operand>& operands) {
    CallSite site;
    for (std::size_t i = 1; i < operands.size(); ++i) site.arguments.push_back(operands[i].index);
    return SiteOf(std::move(site));
}

void FunctionCompiler::CompileArrayMethod(Expression& expression, std::uint16_t target) {
    const Position at = at_;
    std::vector<Operand> operands;
    for (std::size_t i = 0; i < expression.operands.size(); ++i) operands.push_back(CompileKept(expression, i));
    at_ = at;
    const std::uint16_t array = operands[0].index;
    const std::uint16_t first = operands.size() > 1 ? operands[1].index : 0;
    switch (expression.arrayMethod) {
        case ArrayMethodKind::Append:
            Emit(Op::Append, array, first);
            break;
        case ArrayMethodKind::Insert:
            Emit(Op::Insert, array, first, operands[2].index);
            break;
        case ArrayMethodKind::Remove:
            Emit(Op::Remove, array, first);
            break;
        case ArrayMethodKind::ReDim:
            Emit(Op::ReDim, array, first);
            break;
        case ArrayMethodKind::Sort:
            Emit(Op::Sort, array);
            break;
        case ArrayMethodKind::SortWith:
            Emit(Op::SortWith, array, SiteOfRest(operands));
            break;
        case ArrayMethodKind::Shuffle:
            Emit(Op::Shuffle, array);
            break;
        case ArrayMethodKind::Ubound:
            if (operands.size() > 1)
                Emit(Op::UboundOf, target, array, first);
            else
                Emit(Op::Ubound, target, array);
            break;
        case ArrayMethodKind::Pop:
            Emit(Op::Pop, target, array);
            break;
        case ArrayMethodKind::IndexOf:
            Emit(Op::IndexOf, target, array, SiteOfRest(operands));
            break;
    }
    for (const Operand& operand : operands) Free(operand);
}

void FunctionCompiler::CompileIntrinsic(Expression& expression, std::uint16_t target) {
    switch (expression.intrinsic) {
        case IntrinsicKind::Concatenate:
            return CompileBinaryInto(Op::Concatenate, expression, target, false);
        case IntrinsicKind::RedOf:
            return CompileUnaryInto(Op::ColorPart, *expression.operands[0], target, 16);
        case IntrinsicKind::GreenOf:
            return CompileUnaryInto(Op::ColorPart, *expression.operands[0], target, 8);
        case IntrinsicKind::BlueOf:
            return CompileUnaryInto(Op::ColorPart, *expression.operands[0], target, 0);
        case IntrinsicKind::VariantOperation:
        case IntrinsicKind::VariantCompare: {
            const bool compare = expression.intrinsic == IntrinsicKind::VariantCompare;
            const Position at = at_;
            const Operand left = CompileBefore(*expression.operands[0], *expression.operands[1]);
            const Operand right = Compile(*expression.operands[1]);
            at_ = at;
            Emit(compare ? Op::VariantCompare : Op::VariantOperation, target, left.index, right.index);
            Emit(Op::Jump, static_cast<std::uint16_t>(expression.op));
            Free(right);
            Free(left);
            return;
        }
        case IntrinsicKind::Print: {
            const Operand text = Temporary(kStringType);
            if (!expression.operands.empty()) {
                Expression& shown = *expression.operands[0];
                if (IsString(shown.type))
                    CompileTo(shown, text.index);
                else
                    CompileUnaryInto(Op::TextOf, shown, text.index);
            }
            Emit(Op::Print, text.index);
            return Free(text);
        }
        case IntrinsicKind::Quit: {
            const Operand code =
                expression.operands.empty() ? Constant(kIntegerType, host::Value(0)) : Compile(*expression.operands[0]);
            Emit(Op::Quit, code.index);
            return Free(code);
        }
    }
}

}  // namespace script
