#include "host/objects/Value.h"

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

bool Value::IsWhole() const {
    return kind_ == Kind::Integer || kind_ == Kind::Int64 || kind_ == Kind::UInt32 || kind_ == Kind::UInt8;
}

bool Value::IsNumber() const { return IsWhole() || kind_ == Kind::Double || kind_ == Kind::Single; }

std::int64_t Value::ToInt64() const {
    if (kind_ == Kind::Double || kind_ == Kind::Single) return TruncateToInt64(real_);
    return IsWhole() || kind_ == Kind::Boolean || kind_ == Kind::Color ? integer_ : 0;
}

std::int32_t Value::ToInt32() const {
    if (kind_ == Kind::Double || kind_ == Kind::Single) return TruncateToInt32(real_);
    return static_cast<std::int32_t>(ToInt64());
}

double Value::ToDouble() const {
    if (kind_ == Kind::Double || kind_ == Kind::Single) return real_;
    return static_cast<double>(ToInt64());
}

void Value::RetainReference() const {
    if (kind_ == Kind::String)
        Retain(string_);
    else if (kind_ == Kind::Array)
        Retain(array_);
    else if (kind_ == Kind::Object)
        Retain(object_);
}

void Value::ReleaseReference() const {
    if (kind_ == Kind::String)
        Release(string_);
    else if (kind_ == Kind::Array)
        Release(array_);
    else if (kind_ == Kind::Object)
        Release(object_);
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
    const bool whole = number.IsWhole();
    switch (kind) {
        case Kind::Integer:
            return Value(number.ToInt32());
        case Kind::Int64:
            return Value(number.ToInt64());
        case Kind::UInt32:
            if (!whole && number.ToInt64() < 0) return Value(std::uint32_t{0});
            if (!whole && number.ToInt64() > UINT32_MAX) return Value(std::uint32_t{UINT32_MAX});
            return Value(static_cast<std::uint32_t>(number.ToInt64()));
        case Kind::UInt8:
            if (!whole && number.ToInt64() < 0) return Value(std::uint8_t{0});
            if (!whole && number.ToInt64() > UINT8_MAX) return Value(std::uint8_t{UINT8_MAX});
            return Value(static_cast<std::uint8_t>(number.ToInt64()));
        case Kind::Single:
            return Value(static_cast<float>(number.ToDouble()));
        default:
            return Value(number.ToDouble());
    }
}

std::string Describe(const Value& value) {
    switch (value.kind()) {
        case Kind::None:
            return "nothing";
        case Kind::Boolean:
            return value.ToBoolean() ? "True" : "False";
        case Kind::Color:
            return ColorText(static_cast<std::uint32_t>(value.ToInt64()));
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
            return std::to_string(value.ToInt64());
    }
}

std::string TypeTextOf(const Value& value) {
    if (value.kind() == Kind::Object) return value.IsNil() ? "nil" : value.object()->type->name();
    if (value.kind() == Kind::Array) return value.array() ? TypeText(ArrayOf(value.array()->element)) : "nil";
    return TypeText(Type{value.kind(), Kind::None, ""});
}

}  // namespace host
