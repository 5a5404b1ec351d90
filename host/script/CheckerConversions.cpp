// Types by name, implicit conversions and what they cost, and constants worked out in advance.
#include <algorithm>
#include <cmath>
#include <limits>

#include "host/calls/Overload.h"
#include "host/calls/Runtime.h"
#include "host/objects/NearestName.h"
#include "host/objects/Value.h"
#include "host/script/Arithmetic.h"
#include "host/script/Checker.h"
#include "host/script/Literal.h"

namespace script {

namespace {

// Whether a whole-number literal is one of a kind's numbers; a bit pattern must have no more bits.
bool FitsIn(const Expression& literal, host::Kind whole) {
    if (literal.pattern) {
        const int bits = host::RowOf(whole).size * 8;
        return bits == 64 || static_cast<std::uint64_t>(literal.integer) >> bits == 0;
    }
    const bool negative = literal.integer < 0;
    return negative ? literal.integer >= host::LowestOf(whole)
                    : static_cast<std::uint64_t>(literal.integer) <= host::HighestOf(whole);
}

// Whether a literal number, its fraction cut off, is one of a kind's numbers.
bool FitsCut(double literal, host::Kind whole) {
    const double cut = std::trunc(literal);
    // The highest Int64 and UInt64 are no doubles; one more is the first that does not fit.
    return cut >= static_cast<double>(host::LowestOf(whole)) && cut < static_cast<double>(host::HighestOf(whole)) + 1;
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

// Every class by name, and the simple types.
std::vector<std::string> Checker::TypeNames() const {
    std::vector<std::string> names = {"Variant"};
    for (const host::KindRow& row : host::kKinds)
        if (!row.name.empty()) names.emplace_back(row.name);
    for (const host::Class* native : host::Runtime::Get().Classes()) names.push_back(native->name());
    for (const ClassSymbol* symbol : symbols_.scriptClasses) names.push_back(symbol->name);
    return names;
}

host::Said Checker::UnknownType(const std::string& name) const {
    constexpr std::string_view foreign[] = {"Ptr",         "CString", "PString", "WString",
                                            "CFStringRef", "OSType",  "Currency"};
    for (const std::string_view type : foreign)
        if (host::SameName(type, name)) return kTypeSays.foreign(name);
    return kTypeSays.unknown(name + host::DidYouMean(name, TypeNames()));
}

// A class by its name, or one inside a module or class by both names.
ClassSymbol* Checker::FindTypeSymbol(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) return symbols_.FindClass(name);
    ClassSymbol* symbol = symbols_.FindClass(name.substr(dot + 1));
    const bool inside =
        symbol && symbol->declaration && host::SameName(symbol->declaration->enclosing, name.substr(0, dot));
    return inside ? symbol : nullptr;
}

Type Checker::ResolveType(TypeName& name) {
    Type type = SimpleTypeNamed(name.name);
    if (type == kNoType) {
        if (ClassSymbol* symbol = FindTypeSymbol(name.name)) {
            type = {Base::Object, false, symbol};
            if (FormOf(*symbol) == ClassForm::Enum) type = ResolveType(symbol->declaration->base);
            if (FormOf(*symbol) == ClassForm::Module) {
                diagnostics_.Add(name.at, kTypeSays.module(symbol->name));
                type = kWrongType;
            }
        }
    }
    if (type == kNoType) {
        diagnostics_.Add(name.at, UnknownType(name.name));
        type = kWrongType;
    }
    if (name.dimensions > kMostDimensions) {
        diagnostics_.Add(name.at, kTypeSays.dimensions(kMostDimensions));
        name.dimensions = kMostDimensions;
    }
    type.array = name.array && !IsWrong(type);
    type.furtherDimensions = static_cast<std::uint8_t>(type.array ? name.dimensions - 1 : 0);
    name.resolved = type;
    return type;
}

int Checker::ConversionCost(const Expression& from, Type to) const {
    const Type type = from.type;
    if (IsWrong(type) || IsWrong(to) || type == to) return 0;
    if (type == kNoType) return host::kNoConversion;
    if (type.base == Base::Address) return FindAddressed(from, to) ? 0 : host::kNoConversion;
    if (IsVariant(to)) return host::kToVariantCost;
    if (type == kNilType) return TakesNil(to) ? host::kNilCost : host::kNoConversion;
    if (IsVariant(type)) return host::kFromVariantCost + (to.array ? 0 : host::RowOf(KindOf(to.base)).variantStep);
    if (IsNumeric(type) && IsNumeric(to)) return host::NumberCost(KindOf(type.base), KindOf(to.base));
    if (IsObject(type) && IsObject(to)) {
        const int steps = Distance(type.of, to.of);
        if (steps >= 0) return host::SuperclassCost(steps);
    }
    if (type.array || to.array) return host::kNoConversion;
    if (FindOperatorConvert(type, to)) return host::kHostConversionCost;
    return HasHostConversion(type, to) ? host::kHostConversionCost : host::kNoConversion;
}

// A literal that can't be what it is written for is seldom meant.
void Checker::WarnOfLoss(const Expression& literal, Type to) {
    if (!IsIntegral(to)) return;
    const host::Kind kind = KindOf(to.base);
    const bool whole = literal.node == Node::IntegerLiteral;
    if (!whole && literal.node != Node::RealLiteral) return;
    if (whole ? FitsIn(literal, kind) : FitsCut(literal.real, kind)) return;
    if (!whole && kind == host::Kind::UInt64 && literal.integer != 0) return;
    const std::string range = std::to_string(host::LowestOf(kind)) + " to " + std::to_string(host::HighestOf(kind));
    diagnostics_.Warn(literal.at, kTypeSays.lossyLiteral(NameOf(to), range));
}

namespace {

// What mostly turns a value of one type into another one.
std::string Advice(Type from, Type to) {
    if (IsNumeric(from) && IsString(to)) return std::string(kUseStr);
    if (IsString(from) && IsNumeric(to)) return "; Val makes a number of a text";
    const bool isBase = IsObject(from) && IsObject(to) && Inherits(to.of, from.of);
    return isBase ? "; a cast says that it is one: " + NameOf(to) + "(…)" : "";
}

host::Said WhyNotConverted(const Expression& expression, Type to, std::string_view use) {
    if (expression.type.base != Base::Address)
        return kTypeSays.wanted(use, NameOf(expression.type), NameOf(to), Advice(expression.type, to));
    const bool isDelegate = to.of && to.of->invoke;
    return kTypeSays.noRoutineLike(NameOf(to) +
                                   (isDelegate ? ":\n    " + TextOf(*to.of->invoke) : "; it is given to a delegate"));
}

}  // namespace

void Checker::Convert(ExpressionPtr& expression, Type to, std::string_view use, Casting casting) {
    if (IsWrong(expression->type) || IsWrong(to)) return;
    if (ConversionCost(*expression, to) < 0) {
        return Wrong(*expression, WhyNotConverted(*expression, to, use));
    }
    if (casting == Casting::Implicit) WarnOfLoss(*expression, to);
    ForceConvert(expression, to);
}

// Puts a conversion node on top where one is needed.
void Checker::ForceConvert(ExpressionPtr& expression, Type to) {
    if (expression->type == to) return;
    if (expression->node == Node::NilLiteral) {
        expression->type = to;
        return;
    }
    if (expression->type.base == Base::Address) return MakeAddressed(*expression, to);
    if (RoutineSymbol* convert = FindOperatorConvert(expression->type, to))
        return CallOperatorConvert(expression, *convert, to);
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
    const Type wider = host::RowOf(KindOf(a.base)).digits < host::RowOf(KindOf(b.base)).digits ? b : a;
    if (host::HoldsAll(host::Kind::Integer, KindOf(wider.base))) return kIntegerType;
    return IsUnsigned(a) && IsUnsigned(b) ? wider : kInt64Type;
}

namespace {

std::int64_t Wrap(std::int64_t value, Base base) {
    return host::IsWholeKind(KindOf(base)) ? host::WrapTo(value, KindOf(base)) : value;
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
            literal->real = LiteralValue(inner).ToDouble();
        }
    } else if (inner.node == Node::RealLiteral) {
        literal->node = IsReal(to) ? Node::RealLiteral : Node::IntegerLiteral;
        literal->real = inner.real;
        if (IsIntegral(to)) literal->integer = host::CutTo(inner.real, KindOf(to.base));
        // Written as a whole number above the highest Int64.
        if (to.base == Base::UInt64 && inner.integer != 0) literal->integer = inner.integer;
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
        literal->integer = 0;
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
        if (divides && (LiteralInteger(b) == 0 || expression->type.base == Base::UInt64)) return;  // may raise
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

}  // namespace script
