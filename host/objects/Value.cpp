// Values made, copied, converted and put into words.
#include "host/objects/Value.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "host/objects/Array.h"
#include "host/objects/Class.h"

namespace host {

namespace {

template <class Whole>
Whole Truncate(double value) {
    constexpr Whole least = std::numeric_limits<Whole>::min();
    constexpr Whole most = std::numeric_limits<Whole>::max();
    if (!(value >= static_cast<double>(least))) return least;  // not-a-number too
    if (value >= -static_cast<double>(least)) return most;
    return static_cast<Whole>(value);
}

std::string NumberText(double value) {
    char text[40];
    const auto end = std::to_chars(text, text + sizeof(text), value).ptr;
    return {text, end};
}

std::string ColorText(std::uint32_t color) {
    char text[16];
    std::snprintf(text, sizeof(text), "&c%06X", color);
    return text;
}

}  // namespace

std::int32_t TruncateToInt32(double value) { return Truncate<std::int32_t>(value); }

std::int64_t TruncateToInt64(double value) { return Truncate<std::int64_t>(value); }

std::int64_t CutTo(double value, Kind whole) {
    constexpr double kHalf = 9223372036854775808.0;  // 2^63
    if (whole == Kind::UInt64 && value >= kHalf)
        return static_cast<std::int64_t>(value < 2 * kHalf ? static_cast<std::uint64_t>(value) : HighestOf(whole));
    const std::uint64_t most = std::min(HighestOf(whole), HighestOf(Kind::Int64));
    return std::clamp(TruncateToInt64(value), LowestOf(whole), static_cast<std::int64_t>(most));
}

std::int64_t Value::ToInt64() const {
    if (IsRealKind(kind_)) return TruncateToInt64(real_);
    return IsWhole() || kind_ == Kind::Boolean || kind_ == Kind::Color ? integer_ : 0;
}

std::int32_t Value::ToInt32() const {
    if (IsRealKind(kind_)) return TruncateToInt32(real_);
    return static_cast<std::int32_t>(ToInt64());
}

double Value::ToDouble() const {
    if (IsRealKind(kind_)) return real_;
    return kind_ == Kind::UInt64 ? static_cast<double>(static_cast<std::uint64_t>(integer_))
                                 : static_cast<double>(ToInt64());
}

Value DefaultOf(const Type& type) {
    switch (type.kind) {
        case Kind::None:
            return Value();
        case Kind::String:
            return Value(Ref<String>());
        case Kind::Boolean:
            return Value(false);
        case Kind::Color:
            return Value(sdk::Color{});
        case Kind::Array:
            return Value(MakeArray(ElementOf(type)));
        case Kind::Object:
            return Value(nullptr);
        default:
            return NumberAs(Value(0), type.kind);
    }
}

Value NumberAs(const Value& number, Kind kind) {
    if (kind == Kind::Single) return Value(static_cast<float>(number.ToDouble()));
    if (!IsWholeKind(kind)) return Value(number.ToDouble());
    return Value::OfKind(kind, number.IsWhole() ? WrapTo(number.bits(), kind) : CutTo(number.ToDouble(), kind));
}

std::string Describe(const Value& value) {
    switch (value.kind()) {
        case Kind::None:
            return "nothing";
        case Kind::Double:
        case Kind::Single:
            return NumberText(value.ToDouble());
        case Kind::String:
            return "\"" + std::string(value.text()) + "\"";
        case Kind::Array:
            return TypeTextOf(value);
        case Kind::Object:
            return value.IsNil() ? "nil" : value.object()->type->name();
        default:
            return PlainText(value);
    }
}

std::string PlainText(const Value& value) {
    if (value.kind() == Kind::Boolean) return value.ToBoolean() ? "True" : "False";
    if (value.kind() == Kind::Color) return ColorText(static_cast<std::uint32_t>(value.ToInt64()));
    if (value.kind() == Kind::UInt64) return std::to_string(static_cast<std::uint64_t>(value.bits()));
    return std::to_string(value.ToInt64());
}

std::string TypeTextOf(const Value& value) {
    if (value.kind() == Kind::Object) return value.IsNil() ? "nil" : value.object()->type->name();
    if (value.kind() == Kind::Array) return value.array() ? TypeText(ArrayOf(value.array()->element)) : "nil";
    return TypeText(Type{value.kind(), Kind::None, ""});
}

}  // namespace host
