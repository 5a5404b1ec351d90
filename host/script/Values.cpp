// Texts compared and joined, values converted and cast, while a program runs.
#include "host/script/Values.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/calls/Call.h"
#include "host/framework/Characters.h"
#include "host/framework/NumberText.h"
#include "host/messages/RunningMessages.h"
#include "host/script/Arithmetic.h"
#include "host/script/Machine.h"

namespace script {

namespace {

using host::Kind;
using host::Value;

bool IsText(sdk::Encoding encoding) { return encoding == sdk::Encoding::Utf8 || encoding == sdk::Encoding::Ascii; }

unsigned char LowerAscii(unsigned char c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; }

// The first character without its case, taken off the text.
char32_t TakeFolded(std::string_view& text) {
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) {
        text.remove_prefix(1);
        return LowerAscii(lead);
    }
    const char32_t character = host::FirstCharacter(text, sdk::Encoding::Utf8);
    text.remove_prefix(host::CharacterLength(text, sdk::Encoding::Utf8));
    return host::LowerCharacter(character);
}

// How many bytes two texts begin with that are the same ASCII characters but for their case.
std::size_t SameAsciiPrefix(std::string_view a, std::string_view b) {
    const std::size_t shorter = std::min(a.size(), b.size());
    for (std::size_t at = 0; at < shorter; ++at) {
        const auto x = static_cast<unsigned char>(a[at]), y = static_cast<unsigned char>(b[at]);
        if (x >= 0x80 || y >= 0x80 || (x != y && LowerAscii(x) != LowerAscii(y))) return at;
    }
    return shorter;
}

int CompareFolded(std::string_view a, std::string_view b) {
    const std::size_t same = SameAsciiPrefix(a, b);
    a.remove_prefix(same);
    b.remove_prefix(same);
    while (!a.empty() && !b.empty()) {
        const char32_t x = TakeFolded(a);
        const char32_t y = TakeFolded(b);
        if (x != y) return x < y ? -1 : 1;
    }
    return static_cast<int>(!a.empty()) - static_cast<int>(!b.empty());
}

[[noreturn]] void Mismatch(const Value& value, const std::string& wanted) {
    Throw(host::kScriptRaises.mismatch(host::TypeTextOf(value), wanted));
}

std::string ObjectText(const Value& value) {
    if (!value.object()) return "Nil";
    const host::Conversion* conversion = host::Runtime::Get().FindConversion(value, host::TypeNamed("String"));
    if (conversion) return std::string(conversion->convert(value).text());
    return value.object()->type->name();
}

}  // namespace

int CompareTexts(const Value& a, const Value& b) {
    const bool texts = IsText(host::EncodingOf(a.string())) && IsText(host::EncodingOf(b.string()));
    if (texts) return CompareFolded(a.text(), b.text());
    const int order = a.text().compare(b.text());
    return order < 0 ? -1 : order > 0;
}

bool EqualTexts(const Value& a, const Value& b) {
    return a.bits() == b.bits() || a.text() == b.text() || CompareTexts(a, b) == 0;
}

namespace {

sdk::Encoding JoinedEncoding(const Value& a, const Value& b) {
    const sdk::Encoding first = host::EncodingOf(a.string());
    const sdk::Encoding second = host::EncodingOf(b.string());
    if (first == second) return first;
    return IsText(first) && IsText(second) ? sdk::Encoding::Utf8 : sdk::Encoding::None;
}

}  // namespace

Value ConcatenateTexts(const Value& a, const Value& b) {
    if (a.text().empty()) return b;
    if (b.text().empty()) return a;
    return Value(host::JoinStrings(a.text(), b.text(), JoinedEncoding(a, b)));
}

void AppendText(Value& text, const Value& more) {
    host::String* const own = text.string();
    const bool alone = own && own->references == 1 && !more.text().empty();
    if (!alone || JoinedEncoding(text, more) != own->encoding) {
        text = ConcatenateTexts(text, more);
    } else if (!host::AppendInPlace(*own, more.text())) {
        text = Value(host::JoinWithRoom(text.text(), more.text(), own->encoding));
    }
}

namespace {

// An array may hold itself.
constexpr int kDeepestArray = 8;

std::string TextOfArray(const host::Array& array, int depth) {
    if (depth == kDeepestArray) return "[…]";
    std::string text;
    for (const Value& element : array.values) {
        const bool nested = element.kind() == Kind::Array && element.array();
        text += ", " + (nested ? TextOfArray(*element.array(), depth + 1) : TextOfValue(element));
    }
    return "[" + (text.empty() ? text : text.substr(2)) + "]";
}

}  // namespace

std::string TextOfValue(const Value& value) {
    switch (value.kind()) {
        case Kind::Double:
            return host::NumberText(value.real());
        case Kind::Single:
            return host::NumberText(static_cast<float>(value.real()));
        case Kind::String:
            return std::string(value.text());
        case Kind::Object:
            return ObjectText(value);
        case Kind::Array:
            return value.array() ? TextOfArray(*value.array(), 0) : "Nil";
        case Kind::None:
            return "Nil";
        default:
            return host::PlainText(value);
    }
}

namespace {

// A variant's content as a number of a kind.
Value NumberOf(const Value& value, Kind kind, const std::string& wanted) {
    if (value.IsNumber()) return host::NumberAs(value, kind);
    if (value.kind() == Kind::Boolean || value.kind() == Kind::Color)
        return host::NumberAs(Value(value.ToInt64()), kind);
    if (value.IsNil() || value.IsNothing()) return host::NumberAs(Value(0), kind);
    if (value.kind() == Kind::String) return host::NumberAs(Value(host::NumberIn(value.text())), kind);
    Mismatch(value, wanted);
}

Value BooleanOf(const Value& value) {
    if (value.kind() == Kind::Boolean) return value;
    if (value.IsNumber()) return Value(value.ToDouble() != 0);
    if (value.IsNil() || value.IsNothing()) return Value(false);
    if (value.kind() == Kind::String) return Value(host::SameName(value.text(), "True"));
    Mismatch(value, "Boolean");
}

Value ColorOf(const Value& value) {
    if (value.kind() == Kind::Color) return value;
    if (value.IsWhole()) return Value(static_cast<sdk::Color>(value.ToInt64() & 0xFFFFFF));
    if (value.IsNil() || value.IsNothing()) return Value(sdk::Color{});
    Mismatch(value, "Color");
}

Value TextFrom(const Value& value) {
    if (value.kind() == Kind::String) return value;
    if (value.IsNil() || value.IsNothing()) return Value(host::Ref<host::String>());
    const bool plain = value.IsNumber() || value.kind() == Kind::Boolean || value.kind() == Kind::Color;
    if (plain) return Value(TextOfValue(value));
    Mismatch(value, "String");
}

}  // namespace

bool IsInstance(const Value& value, const TypeEntry& type) {
    const host::Object* object = value.object();
    if (!object) return false;
    const ClassSymbol& symbol = *type.type.of;
    const host::Class* wanted = symbol.declaration ? symbol.made : symbol.native;
    if (FormOf(symbol) == ClassForm::Interface)
        return std::any_of(symbol.implementers.begin(), symbol.implementers.end(), [&](const ClassSymbol* implementer) {
            return implementer->made && host::IsA(object, *implementer->made);
        });
    return !wanted || host::IsA(object, *wanted);  // without one it is the root of all
}

Value CastObject(const Value& value, const TypeEntry& type) {
    if (value.object() && !IsInstance(value, type)) {
        Throw(host::kScriptRaises.cast(value.object()->type->name(), type.type.of->name));
    }
    return value;
}

Value ConvertValue(const Value& value, const TypeEntry& type) {
    if (value.kind() == type.host.kind && value.kind() != Kind::Object && value.kind() != Kind::Array) return value;
    if (IsObject(type.type) && (value.IsNil() || IsInstance(value, type))) return value;
    if (const host::Conversion* conversion = host::Runtime::Get().FindConversion(value, type.host))
        return conversion->convert(value);
    if (type.type.array) {
        if (value.IsNil()) return Value(host::Ref<host::Array>());
        const host::Array* array = value.array();
        const std::size_t dimensions = IsGrid(type.type) ? type.type.furtherDimensions + 1u : 0;
        if (array && array->element == host::ElementOf(type.host) && array->highest.size() == dimensions) return value;
        Mismatch(value, NameOf(type.type));
    }
    switch (type.type.base) {
        case Base::Boolean:
            return BooleanOf(value);
        case Base::Color:
            return ColorOf(value);
        case Base::String:
            return TextFrom(value);
        case Base::Object:
            Mismatch(value, NameOf(type.type));
        default:
            return NumberOf(value, type.host.kind, NameOf(type.type));
    }
}

namespace {

std::int64_t WholeArithmetic(Operator op, std::int64_t a, std::int64_t b) {
    const bool divides = op == Operator::IntegerDivide || op == Operator::Modulo;
    if (divides && b == 0) Throw(host::kScriptRaises.division());
    return WholeResult(op, a, b);
}

bool Holds(Operator op, int order) {
    switch (op) {
        case Operator::Equal:
            return order == 0;
        case Operator::NotEqual:
            return order != 0;
        case Operator::Less:
            return order < 0;
        case Operator::LessOrEqual:
            return order <= 0;
        case Operator::Greater:
            return order > 0;
        default:
            return order >= 0;
    }
}

}  // namespace

Value VariantArithmetic(Operator op, const Value& a, const Value& b) {
    const bool texts = a.kind() == Kind::String && b.kind() == Kind::String;
    if (op == Operator::Add && texts) return ConcatenateTexts(a, b);
    const bool wholeOnly = op == Operator::IntegerDivide || op == Operator::Modulo;
    const bool realOnly = op == Operator::Divide || op == Operator::Power;
    const bool wholes = a.IsWhole() && b.IsWhole();
    if (wholeOnly || (wholes && !realOnly)) {
        const std::int64_t x = NumberOf(a, Kind::Int64, "a number").ToInt64();
        const std::int64_t y = NumberOf(b, Kind::Int64, "a number").ToInt64();
        const std::int64_t result = WholeArithmetic(op, x, y);
        const bool narrow = host::RowOf(a.kind()).size < 8 && host::RowOf(b.kind()).size < 8;
        return narrow ? Value(static_cast<std::int32_t>(result)) : Value(result);
    }
    return Value(RealResult(op, NumberOf(a, Kind::Double, "a number").ToDouble(),
                            NumberOf(b, Kind::Double, "a number").ToDouble()));
}

bool VariantComparison(Operator op, const Value& a, const Value& b) {
    const bool references =
        a.kind() == Kind::Object || b.kind() == Kind::Object || a.kind() == Kind::Array || b.kind() == Kind::Array;
    if (references) {
        const bool same = a.kind() == b.kind() && a.bits() == b.bits();
        if (op == Operator::Equal) return same;
        if (op == Operator::NotEqual) return !same;
        Throw(host::kScriptRaises.noOrder());
    }
    if (a.kind() == Kind::String && b.kind() == Kind::String) return Holds(op, CompareTexts(a, b));
    if (a.kind() == Kind::String || b.kind() == Kind::String) {
        const int order = CompareTexts(Value(TextOfValue(a)), Value(TextOfValue(b)));
        return Holds(op, order);
    }
    const bool reals = host::IsRealKind(a.kind()) || host::IsRealKind(b.kind()) ||
                       (a.kind() == Kind::UInt64) != (b.kind() == Kind::UInt64);
    if (a.kind() == Kind::UInt64 && b.kind() == Kind::UInt64) {
        const auto left = static_cast<std::uint64_t>(a.bits()), right = static_cast<std::uint64_t>(b.bits());
        return Holds(op, left < right ? -1 : left > right);
    }
    if (!reals) return Holds(op, a.ToInt64() < b.ToInt64() ? -1 : a.ToInt64() > b.ToInt64());
    const double x = a.ToDouble();
    const double y = b.ToDouble();
    if (std::isnan(x) || std::isnan(y)) return op == Operator::NotEqual;
    return Holds(op, x < y ? -1 : x > y);
}

}  // namespace script
