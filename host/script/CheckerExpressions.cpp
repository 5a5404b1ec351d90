// Operators, literals and New: the types they take and the one they give.
#include <limits>

#include "host/script/Checker.h"
#include "host/script/Literal.h"

namespace script {

namespace {

std::string_view WordOf(Operator op) {
    switch (op) {
        case Operator::Add:
            return "+";
        case Operator::Subtract:
            return "-";
        case Operator::Multiply:
            return "*";
        case Operator::Divide:
            return "/";
        case Operator::IntegerDivide:
            return "\\";
        case Operator::Modulo:
            return "Mod";
        case Operator::Power:
            return "^";
        case Operator::Equal:
            return "=";
        case Operator::NotEqual:
            return "<>";
        case Operator::Less:
            return "<";
        case Operator::LessOrEqual:
            return "<=";
        case Operator::Greater:
            return ">";
        case Operator::GreaterOrEqual:
            return ">=";
        case Operator::Is:
            return "Is";
        case Operator::And:
            return "And";
        case Operator::Or:
            return "Or";
        case Operator::Xor:
            return "Xor";
        case Operator::Not:
            return "Not";
        default:
            return "-";
    }
}

bool IsEquality(Operator op) { return op == Operator::Equal || op == Operator::NotEqual; }

// The type in which a whole number is calculated together with signed ones.
Type SignedType(Type type) {
    return host::HoldsAll(host::Kind::Integer, KindOf(type.base)) ? kIntegerType : kInt64Type;
}

bool IsReference(Type type) { return type.array || type.base == Base::Object || type.base == Base::Nil; }

}  // namespace

void Checker::Wrong(Expression& expression, const host::Said& message) {
    if (!message.empty()) diagnostics_.Add(expression.at, message);
    expression.node = Node::Nothing;
    expression.type = kWrongType;
    expression.operands.clear();
}

void Checker::CheckValue(ExpressionPtr& expression) {
    CheckExpression(expression);
    if (expression->type == kNoType) Wrong(*expression, kTypeSays.valueWanted());
}

void Checker::CheckExpression(ExpressionPtr& expression, bool wantsValue) {
    if (IsLiteral(*expression)) return CheckLiteral(*expression);
    switch (expression->node) {
        case Node::Name:
            return CheckName(expression, {}, false, wantsValue);
        case Node::Member:
            return CheckMember(expression, {}, false, wantsValue);
        case Node::Apply:
            return CheckApply(expression, wantsValue);
        case Node::New:
            return CheckNew(expression);
        case Node::Unary:
            return CheckUnary(expression);
        case Node::Binary:
            return CheckBinary(expression);
        case Node::IsA:
            return CheckIsA(*expression);
        case Node::Cast:
            return CheckCast(expression);
        case Node::AddressOf:
            return CheckAddressOf(*expression);
        case Node::Handle:
            return CheckHandle(*expression);
        case Node::Self:
            return CheckSelf(*expression);
        case Node::Super:
            return Wrong(*expression, kNameSays.superAlone());
        default:
            return;  // resolved already
    }
}

void Checker::CheckLiteral(Expression& expression) {
    if (expression.type != kNoType) return;  // met before
    switch (expression.node) {
        case Node::IntegerLiteral: {
            const auto bits = static_cast<std::uint64_t>(expression.integer);
            const bool narrow = expression.pattern ? bits <= std::numeric_limits<std::uint32_t>::max()
                                                   : bits <= std::numeric_limits<std::int32_t>::max();
            expression.type = narrow ? kIntegerType : kInt64Type;
            return;
        }
        case Node::RealLiteral:
            expression.type = kDoubleType;
            return;
        case Node::StringLiteral:
            expression.type = kStringType;
            return;
        case Node::ColorLiteral:
            expression.type = kColorType;
            return;
        case Node::BooleanLiteral:
            expression.type = kBooleanType;
            return;
        default:
            expression.type = kNilType;
            return;
    }
}

void Checker::CheckSelf(Expression& expression) {
    if (!context_.hasSelf) return Wrong(expression, kNameSays.noSelf());
    expression.type = {Base::Object, false, context_.owner};
}

void Checker::CheckUnary(ExpressionPtr& expression) {
    ExpressionPtr& operand = expression->operands[0];
    CheckValue(operand);
    const Type type = operand->type;
    if (IsWrong(type)) return Wrong(*expression, {});
    if (ResolveUnaryOperator(expression)) return;
    const bool negates = expression->op == Operator::Negate;
    if (IsVariant(type)) ForceConvert(operand, negates ? kDoubleType : kBooleanType);
    const bool fits = negates ? IsNumeric(operand->type) : operand->type == kBooleanType || IsIntegral(operand->type);
    if (!fits) {
        return Wrong(*expression, kTypeSays.cannotApply(WordOf(expression->op), NameOf(type),
                                                        negates ? "a number" : "a Boolean or a whole number"));
    }
    // The negative of a byte is no byte.
    if (negates && IsIntegral(operand->type)) ForceConvert(operand, SignedType(operand->type));
    if (operand->type.base == Base::Single) ForceConvert(operand, kDoubleType);
    expression->node = negates ? Node::Negate : Node::Complement;
    expression->type = operand->type;
    Fold(expression);
}

void Checker::CheckBinary(ExpressionPtr& expression) {
    CheckValue(expression->operands[0]);
    CheckValue(expression->operands[1]);
    if (IsWrong(expression->operands[0]->type) || IsWrong(expression->operands[1]->type)) {
        expression->node = Node::Nothing;
        expression->type = kWrongType;
        return;
    }
    for (const ExpressionPtr& operand : expression->operands)
        if (operand->type.base == Base::Address)
            return Wrong(*expression, kTypeSays.operatorOfAddress(WordOf(expression->op)));
    if (ResolveOperator(expression)) return;
    switch (expression->op) {
        case Operator::And:
        case Operator::Or:
        case Operator::Xor:
            return CheckLogic(expression);
        case Operator::Is:
            return CheckIdentity(expression);
        case Operator::Equal:
        case Operator::NotEqual:
        case Operator::Less:
        case Operator::LessOrEqual:
        case Operator::Greater:
        case Operator::GreaterOrEqual:
            return CheckComparison(expression);
        default:
            return CheckArithmetic(expression);
    }
}

void Checker::MakeVariantOperation(Expression& expression, bool comparison) {
    for (ExpressionPtr& operand : expression.operands) ForceConvert(operand, kVariantType);
    expression.node = Node::Intrinsic;
    expression.intrinsic = comparison ? IntrinsicKind::VariantCompare : IntrinsicKind::VariantOperation;
    expression.type = comparison ? kBooleanType : kVariantType;
}

// Of two numbers. A plain one beside an unsigned one is taken as unsigned.
Type Checker::OperandType(const Expression& left, const Expression& right) const {
    const Type type = CommonType(left.type, right.type);
    const auto plain = [](const Expression& e) {
        return e.type == kIntegerType && e.node == Node::IntegerLiteral && LiteralInteger(e) >= 0;
    };
    if (type == kInt64Type && IsUnsigned(left.type) && plain(right)) return left.type;
    return type == kInt64Type && IsUnsigned(right.type) && plain(left) ? right.type : type;
}

void Checker::CheckArithmetic(ExpressionPtr& expression) {
    ExpressionPtr& left = expression->operands[0];
    ExpressionPtr& right = expression->operands[1];
    // A variant beside a text is taken as a text, whatever it holds.
    const bool joins = expression->op == Operator::Add && (IsString(left->type) || IsString(right->type));
    if (!joins && (IsVariant(left->type) || IsVariant(right->type))) return MakeVariantOperation(*expression, false);
    const auto textual = [&](const Expression& e) {
        return IsString(e.type) || IsVariant(e.type) || (IsObject(e.type) && ConversionCost(e, kStringType) >= 0);
    };
    if (expression->op == Operator::Add && textual(*left) && textual(*right)) {
        ForceConvert(left, kStringType);
        ForceConvert(right, kStringType);
        expression->node = Node::Intrinsic;
        expression->intrinsic = IntrinsicKind::Concatenate;
        expression->type = kStringType;
        return Fold(expression);
    }
    if (!IsNumeric(left->type) || !IsNumeric(right->type)) {
        const bool oneText = IsString(left->type) != IsString(right->type);
        const bool joinsText = expression->op == Operator::Add && oneText;
        return Wrong(*expression, kTypeSays.cannotJoin(WordOf(expression->op), NameOf(left->type),
                                                       NameOf(right->type) + std::string(joinsText ? kUseStr : "")));
    }
    Type type = OperandType(*left, *right);
    if (expression->op == Operator::Divide || expression->op == Operator::Power) type = kDoubleType;
    const bool whole = expression->op == Operator::IntegerDivide || expression->op == Operator::Modulo;
    if (whole && type == kDoubleType) type = kInt64Type;
    ForceConvert(left, type);
    ForceConvert(right, type);
    expression->node = Node::Arithmetic;
    expression->type = type;
    Fold(expression);
}

void Checker::CheckIdentity(ExpressionPtr& expression) {
    for (ExpressionPtr& operand : expression->operands) {
        if (!IsReference(operand->type) && !IsVariant(operand->type)) {
            return Wrong(*expression, kTypeSays.isOfOther(NameOf(operand->type)));
        }
    }
    expression->op = Operator::Equal;
    CheckComparison(expression);
}

void Checker::CheckComparison(ExpressionPtr& expression) {
    ExpressionPtr& left = expression->operands[0];
    ExpressionPtr& right = expression->operands[1];
    if (IsVariant(left->type) || IsVariant(right->type)) return MakeVariantOperation(*expression, true);
    const Type a = left->type;
    const Type b = right->type;
    if (IsNumeric(a) && IsNumeric(b)) {
        const Type common = OperandType(*left, *right);
        ForceConvert(left, common);
        ForceConvert(right, common);
    } else if ((IsString(a) && ConversionCost(*right, kStringType) >= 0) ||
               (IsString(b) && ConversionCost(*left, kStringType) >= 0)) {
        ForceConvert(left, kStringType);
        ForceConvert(right, kStringType);
    } else if (!(IsEquality(expression->op) && ((IsReference(a) && IsReference(b)) || a == b))) {
        return Wrong(*expression, kTypeSays.cannotCompare(NameOf(a), NameOf(b), WordOf(expression->op)));
    }
    expression->node = Node::Comparison;
    expression->type = kBooleanType;
}

void Checker::CheckLogic(ExpressionPtr& expression) {
    for (ExpressionPtr& operand : expression->operands)
        if (IsVariant(operand->type)) ForceConvert(operand, kBooleanType);
    const Type a = expression->operands[0]->type;
    const Type b = expression->operands[1]->type;
    if (a == kBooleanType && b == kBooleanType) {
        expression->node = expression->op == Operator::Xor ? Node::Arithmetic : Node::Logic;
        expression->type = kBooleanType;
        return;
    }
    if (!IsIntegral(a) || !IsIntegral(b)) {
        return Wrong(*expression, kTypeSays.cannotJoinBits(WordOf(expression->op), NameOf(a), NameOf(b)));
    }
    Type type = CommonType(a, b);
    // Bits beside bits of the same width or fewer stay unsigned.
    if (type == kInt64Type && a.base != Base::Int64 && b.base != Base::Int64)
        type = {a.base == Base::UInt64 || b.base == Base::UInt64 ? Base::UInt64 : Base::UInt32};
    ForceConvert(expression->operands[0], type);
    ForceConvert(expression->operands[1], type);
    expression->node = Node::Arithmetic;
    expression->type = type;
    Fold(expression);
}

void Checker::CheckCast(ExpressionPtr& expression) {
    const Type type = ResolveType(expression->typeName);
    std::vector<ExpressionPtr> arguments = std::move(expression->operands);
    expression->operands.clear();
    CheckArguments(arguments);
    if (IsWrong(type) || IsWrong(arguments[0]->type)) return Wrong(*expression, {});
    MakeCast(expression, type, arguments);
}

void Checker::CheckIsA(Expression& expression) {
    CheckValue(expression.operands[0]);
    const Type type = ResolveType(expression.typeName);
    const Type operand = expression.operands[0]->type;
    if (IsWrong(type) || IsWrong(operand)) return Wrong(expression, {});
    if (!IsObject(type)) return Wrong(expression, kTypeSays.isAOfOther(NameOf(type)));
    if (!IsObject(operand) && !IsVariant(operand) && operand != kNilType)
        return Wrong(expression, kTypeSays.isAWithoutObject(NameOf(operand)));
    ForceConvert(expression.operands[0], operand == kNilType ? kVariantType : operand);
    expression.type = kBooleanType;
}

void Checker::CheckNew(ExpressionPtr& expression) {
    const Type type = ResolveType(expression->typeName);
    std::vector<ExpressionPtr> arguments = std::move(expression->operands);
    expression->operands.clear();
    CheckArguments(arguments);
    if (IsWrong(type)) return Wrong(*expression, {});
    if (!IsObject(type)) return Wrong(*expression, kTypeSays.newOfOther(NameOf(type)));
    if (FormOf(*type.of) == ClassForm::Interface) return Wrong(*expression, kTypeSays.newOfInterface(NameOf(type)));
    if (FormOf(*type.of) == ClassForm::Delegate) return Wrong(*expression, kTypeSays.newOfDelegate(NameOf(type)));
    expression->type = type;
    expression->node = Node::NewObject;
    const std::vector<Candidate> constructors = MethodCandidates(*type.of, "Constructor", false);
    if (constructors.empty() && FindPrivate(*type.of, "Constructor"))
        return Wrong(*expression, UnknownMember(*type.of, "Constructor"));
    if (constructors.empty()) {
        if (!arguments.empty()) Wrong(*expression, kTypeSays.noConstructor(type.of->name));
        return;
    }
    const Candidate* chosen = Choose(constructors, arguments, false, expression->at);
    if (!chosen) return Wrong(*expression, {});
    expression->routine = chosen->routine;
    expression->native = chosen->native;
    expression->operands = FitArguments(*chosen->signature, arguments);
}

}  // namespace script
