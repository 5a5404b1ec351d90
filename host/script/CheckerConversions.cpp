#include <algorithm>
#include <limits>

#include "host/calls/Runtime.h"
#include "host/objects/Value.h"
#include "host/script/Arithmetic.h"
#include "host/script/CheckerState.h"
#include "host/script/Literal.h"

namespace script {

namespace {

// Costs of a conversion; the sum over the arguments decides between overloads.
constexpr int kNilCost = 1;
constexpr int kInheritCost = 2;
constexpr int kNarrowCost = 12;
constexpr int kTruncateCost = 15;  // to the widest; more to narrower ones
constexpr int kToVariantCost = 19;
constexpr int kFromVariantCost = 20;
constexpr int kHostConversionCost = 21;

// Whole numbers by the range they cover, then reals.
int RankOf(Base base) {
    switch (base) {
        case Base::UInt8:
            return 1;
        case Base::Integer:
            return 2;
        case Base::UInt32:
            return 3;
        case Base::Int64:
            return 4;
        case Base::Single:
            return 5;
        default:
            return 6;
    }
}

// Among overloads a variant prefers the type that loses least of what it may hold.
int FromVariantStep(Type to) {
    if (to.array) return 0;
    switch (to.base) {
        case Base::Double:
            return 1;
        case Base::Int64:
            return 2;
        case Base::Integer:
            return 3;
        case Base::Single:
            return 4;
        case Base::UInt32:
            return 5;
        case Base::UInt8:
            return 6;
        case Base::Color:
            return 7;
        case Base::Boolean:
            return 8;
        default:
            return 0;
    }
}

bool FitsIn(std::int64_t value, Base base) {
    switch (base) {
        case Base::UInt8:
            return value >= 0 && value <= 255;
        case Base::UInt32:
            return value >= 0 && value <= std::numeric_limits<std::uint32_t>::max();
        case Base::Integer:
            return value >= std::numeric_limits<std::int32_t>::min() &&
                   value <= std::numeric_limits<std::int32_t>::max();
        default:
            return true;
    }
}

bool HasHostConversion(Type from, Type to) {
    const host::Type target = ToHost(to);
    for (const host::Conversion& conversion : host::Runtime::Get().Conversions()) {
        if (!(conversion.to == target)) continue;
        if (conversion.from == ToHost(from)) return true;
        const bool objects = conversion.from.kind == host::Kind::Object && IsObject(from);
        for (const ClassSymbol* type = from.of; objects && type; type = type->base)
            if (host::SameName(type->name, conversion.from.className)) return true;
    }
    return false;
}

}  // namespace

ExpressionPtr MakeExpression(Node node, Type type, Position at) {
    auto expression = std::make_unique<Expression>();
    expression->node = node;
    expression->type = type;
    expression->at = at;
    return expression;
}

ExpressionPtr MakeIntegerLiteral(std::int64_t value, Position at) {
    ExpressionPtr literal = MakeExpression(Node::IntegerLiteral, kIntegerType, at);
    literal->integer = value;
    return literal;
}

ExpressionPtr CloneLiteral(const Expression& literal, Position at) {
    ExpressionPtr copy = MakeExpression(literal.node, literal.type, at);
    copy->text = literal.text;
    copy->integer = literal.integer;
    copy->real = literal.real;
    copy->pattern = literal.pattern;
    return copy;
}

ExpressionPtr UseOf(Variable& variable, Position at) {
    if (variable.storage == Storage::Constant) {
        return variable.value ? CloneLiteral(*variable.value, at) : MakeExpression(Node::Nothing, kWrongType, at);
    }
    ExpressionPtr use =
        MakeExpression(variable.storage == Storage::Global ? Node::Global : Node::Local, variable.type, at);
    use->variable = &variable;
    return use;
}

bool IsLiteral(const Expression& expression) {
    switch (expression.node) {
        case Node::IntegerLiteral:
        case Node::RealLiteral:
        case Node::StringLiteral:
        case Node::ColorLiteral:
        case Node::BooleanLiteral:
        case Node::NilLiteral:
            return true;
        default:
            return false;
    }
}

Type Checker::ResolveType(TypeName& name) {
    Type type = SimpleTypeNamed(name.name);
    if (type == kNoType) {
        if (ClassSymbol* symbol = symbols_.FindClass(name.name)) type = {Base::Object, false, symbol};
    }
    if (type == kNoType) {
        std::vector<std::string> known = {"Integer", "Int64",   "UInt32", "UInt8", "Double",
                                          "Single",  "Boolean", "String", "Color", "Variant"};
        for (const host::Class* native : host::Runtime::Get().Classes()) known.push_back(native->name());
        for (const ClassSymbol* symbol : symbols_.scriptClasses) known.push_back(symbol->name);
        const std::string nearest = Nearest(name.name, known);
        diagnostics_.Add(name.at, "there is no type " + name.name +
                                      (nearest.empty() ? std::string() : "; did you mean " + nearest + "?"));
        type = kWrongType;
    }
    type.array = name.array && !IsWrong(type);
    name.resolved = type;
    return type;
}

int Checker::NumericCost(const Expression& from, Type to) const {
    const Type type = from.type;
    if (from.node == Node::IntegerLiteral && IsIntegral(to))
        return FitsIn(LiteralInteger(from), to.base) ? 1 : kNarrowCost;
    if (IsReal(type) && IsIntegral(to)) return kTruncateCost + RankOf(Base::Int64) - RankOf(to.base);
    if (type.base == Base::Double && to.base == Base::Single)
        return from.node == Node::RealLiteral ? 1 : kNarrowCost - 1;
    const int step = RankOf(to.base) - RankOf(type.base);
    const bool loses = step < 0 || (type.base == Base::Integer && to.base == Base::UInt32);
    return loses ? kNarrowCost : step;
}

int Checker::ConversionCost(const Expression& from, Type to) const {
    const Type type = from.type;
    if (IsWrong(type) || IsWrong(to) || type == to) return 0;
    if (type == kNilType) return TakesNil(to) ? kNilCost : -1;
    if (type == kNoType) return -1;
    if (IsVariant(to)) return kToVariantCost;
    if (IsVariant(type)) return kFromVariantCost + FromVariantStep(to);
    if (IsNumeric(type) && IsNumeric(to)) return NumericCost(from, to);
    if (IsObject(type) && IsObject(to)) {
        const int steps = Distance(type.of, to.of);
        if (steps >= 0) return kInheritCost + std::min(steps, 7);
    }
    if (type.array || to.array) return -1;
    return HasHostConversion(type, to) ? kHostConversionCost : -1;
}

void Checker::Convert(ExpressionPtr& expression, Type to, std::string_view use) {
    if (IsWrong(expression->type) || IsWrong(to)) return;
    if (ConversionCost(*expression, to) < 0) {
        std::string message =
            std::string(use) + " is " + NameOf(expression->type) + ", but " + NameOf(to) + " is wanted";
        if (expression->type == kNoType) message = std::string(use) + " gives nothing; " + NameOf(to) + " is wanted";
        if (IsNumeric(expression->type) && IsString(to)) message += "; Str makes a text of a number";
        if (IsString(expression->type) && IsNumeric(to)) message += "; Val makes a number of a text";
        if (IsObject(expression->type) && IsObject(to) && Inherits(to.of, expression->type.of))
            message += "; a cast says that it is one: " + NameOf(to) + "(…)";
        return Wrong(*expression, std::move(message));
    }
    ForceConvert(expression, to);
}

// Puts a conversion node on top where one is needed.
void Checker::ForceConvert(ExpressionPtr& expression, Type to) {
    if (expression->type == to) return;
    if (expression->node == Node::NilLiteral) {
        expression->type = to;
        return;
    }
    const bool upwards = IsObject(expression->type) && IsObject(to) && Inherits(expression->type.of, to.of);
    if (upwards) return;  // the same reference
    ExpressionPtr conversion = MakeExpression(Node::Convert, to, expression->at);
    conversion->depth = expression->depth + 1;
    conversion->operands.push_back(std::move(expression));
    expression = std::move(conversion);
    Fold(expression);
}

Type Checker::CommonType(Type a, Type b) const {
    if (IsReal(a) || IsReal(b)) return kDoubleType;
    if (a.base == Base::Int64 || b.base == Base::Int64) return kInt64Type;
    if (a.base == Base::UInt32 || b.base == Base::UInt32) {
        const bool bothUnsigned = a.base != Base::Integer && b.base != Base::Integer;
        return bothUnsigned ? Type{Base::UInt32} : kInt64Type;
    }
    return kIntegerType;
}

namespace {

// A whole number brought into a type's range by dropping high bits.
std::int64_t Wrap(std::int64_t value, Base base) {
    switch (base) {
        case Base::Integer:
            return static_cast<std::int32_t>(value);
        case Base::UInt32:
            return static_cast<std::uint32_t>(value);
        case Base::UInt8:
            return static_cast<std::uint8_t>(value);
        default:
            return value;
    }
}

void FoldConversion(ExpressionPtr& expression) {
    const Expression& inner = *expression->operands[0];
    const Type to = expression->type;
    if (!IsNumeric(to)) return;
    ExpressionPtr literal = MakeExpression(Node::IntegerLiteral, to, expression->at);
    if (inner.node == Node::IntegerLiteral) {
        const bool narrow = to.base == Base::Integer;
        const std::int64_t value = narrow ? LiteralInteger(inner) : inner.integer;
        literal->integer = Wrap(value, to.base);
        if (IsReal(to)) {
            literal->node = Node::RealLiteral;
            literal->real = static_cast<double>(inner.integer);
        }
    } else if (inner.node == Node::RealLiteral) {
        literal->node = IsReal(to) ? Node::RealLiteral : Node::IntegerLiteral;
        literal->real = inner.real;
        literal->integer = to.base == Base::Int64 ? host::TruncateToInt64(inner.real)
                                                  : Wrap(host::TruncateToInt32(inner.real), to.base);
        if (to.base == Base::UInt32) literal->integer = Wrap(host::TruncateToInt64(inner.real), to.base);
    } else {
        return;
    }
    if (to.base == Base::Single) literal->real = static_cast<float>(literal->real);
    expression = std::move(literal);
}

void FoldNegation(ExpressionPtr& expression) {
    const Expression& inner = *expression->operands[0];
    ExpressionPtr literal = CloneLiteral(inner, expression->at);
    literal->pattern = false;
    if (inner.node == Node::RealLiteral) {
        literal->real = -inner.real;
    } else if (inner.node == Node::IntegerLiteral) {
        const std::int64_t value = WrapNegate(LiteralInteger(inner));
        // The most negative Integer is written as the negative of an Int64.
        if (inner.type == kInt64Type && value == std::numeric_limits<std::int32_t>::min()) literal->type = kIntegerType;
        literal->integer = Wrap(value, literal->type.base);
    } else {
        return;
    }
    expression = std::move(literal);
}

void FoldArithmetic(ExpressionPtr& expression) {
    const Expression& a = *expression->operands[0];
    const Expression& b = *expression->operands[1];
    ExpressionPtr literal = MakeExpression(a.node, expression->type, expression->at);
    if (a.node == Node::IntegerLiteral && b.node == Node::IntegerLiteral) {
        const bool divides = expression->op == Operator::IntegerDivide || expression->op == Operator::Modulo;
        if (divides && LiteralInteger(b) == 0) return;  // raises when it is run
        literal->integer = Wrap(WholeResult(expression->op, LiteralInteger(a), LiteralInteger(b)), literal->type.base);
    } else if (a.node == Node::RealLiteral && b.node == Node::RealLiteral && expression->type == kDoubleType) {
        literal->real = RealResult(expression->op, a.real, b.real);
    } else {
        return;
    }
    expression = std::move(literal);
}

}  // namespace

void Checker::Fold(ExpressionPtr& expression) {
    switch (expression->node) {
        case Node::Convert:
            return FoldConversion(expression);
        case Node::Negate:
            return FoldNegation(expression);
        case Node::Arithmetic:
            return FoldArithmetic(expression);
        case Node::Complement:
            if (expression->operands[0]->node == Node::BooleanLiteral) {
                ExpressionPtr literal = CloneLiteral(*expression->operands[0], expression->at);
                literal->integer = !literal->integer;
                expression = std::move(literal);
            }
            return;
        case Node::Intrinsic: {
            const bool texts = expression->intrinsic == IntrinsicKind::Concatenate &&
                               expression->operands[0]->node == Node::StringLiteral &&
                               expression->operands[1]->node == Node::StringLiteral;
            if (!texts) return;
            ExpressionPtr literal = CloneLiteral(*expression->operands[0], expression->at);
            literal->text += expression->operands[1]->text;
            expression = std::move(literal);
            return;
        }
        default:
            return;
    }
}

namespace {

std::size_t EditDistance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t corner = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = corner + (a[i - 1] != b[j - 1]);
            corner = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
        }
    }
    return row[b.size()];
}

}  // namespace

std::string Nearest(std::string_view name, const std::vector<std::string>& candidates) {
    if (name.size() > 64) return {};
    std::string nearest;
    std::size_t best = name.size() / 3 + 1;  // one slip in three letters is a mistype
    for (const std::string& candidate : candidates) {
        const std::size_t distance = EditDistance(host::LowerName(name), host::LowerName(candidate));
        if (distance >= best) continue;
        best = distance;
        nearest = candidate;
    }
    return nearest;
}

}  // namespace script
