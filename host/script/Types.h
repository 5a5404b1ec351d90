// The types that the checker reasons about.
#pragma once

#include <cstdint>
#include <string>

#include "host/objects/Kinds.h"

namespace script {

struct ClassSymbol;

enum class Base : std::uint8_t {
    None,   // no value: a Sub's result
    Wrong,  // of an expression already reported; fits everything, so that one mistake gives one message
    Nil,
    Boolean,
    Integer,
    Int64,
    UInt32,
    UInt8,
    Single,
    Double,
    Color,
    String,
    Variant,
    Object,
};

// The host's kind of a value; None for what it knows by no single kind.
constexpr host::Kind KindOf(Base base) {
    switch (base) {
        case Base::Boolean:
            return host::Kind::Boolean;
        case Base::Integer:
            return host::Kind::Integer;
        case Base::Int64:
            return host::Kind::Int64;
        case Base::UInt32:
            return host::Kind::UInt32;
        case Base::UInt8:
            return host::Kind::UInt8;
        case Base::Single:
            return host::Kind::Single;
        case Base::Double:
            return host::Kind::Double;
        case Base::Color:
            return host::Kind::Color;
        case Base::String:
            return host::Kind::String;
        default:
            return host::Kind::None;
    }
}

// An array is a reference like an object; arrays of arrays don't exist.
struct Type {
    Base base = Base::None;
    bool array = false;
    const ClassSymbol* of = nullptr;  // of Base::Object

    bool operator==(const Type&) const = default;
};

inline constexpr Type kNoType{Base::None};
inline constexpr Type kWrongType{Base::Wrong};
inline constexpr Type kNilType{Base::Nil};
inline constexpr Type kBooleanType{Base::Boolean};
inline constexpr Type kIntegerType{Base::Integer};
inline constexpr Type kInt64Type{Base::Int64};
inline constexpr Type kDoubleType{Base::Double};
inline constexpr Type kStringType{Base::String};
inline constexpr Type kColorType{Base::Color};
inline constexpr Type kVariantType{Base::Variant};

inline Type ElementOf(Type array) { return {array.base, false, array.of}; }
inline Type ArrayOf(Type element) { return {element.base, true, element.of}; }

inline bool IsWrong(Type type) { return type.base == Base::Wrong; }
inline bool IsIntegral(Type type) { return !type.array && type.base >= Base::Integer && type.base <= Base::UInt8; }
inline bool IsReal(Type type) { return !type.array && (type.base == Base::Single || type.base == Base::Double); }
inline bool IsNumeric(Type type) { return IsIntegral(type) || IsReal(type); }
inline bool IsObject(Type type) { return !type.array && type.base == Base::Object; }
inline bool IsVariant(Type type) { return !type.array && type.base == Base::Variant; }
inline bool IsString(Type type) { return !type.array && type.base == Base::String; }

// Whether nil is a value of the type.
inline bool TakesNil(Type type) {
    return type.array || type.base == Base::Object || type.base == Base::Variant || type.base == Base::Nil;
}

// The type as a script writes it: "Integer", "PictureTQX", "String()".
std::string NameOf(Type type);

}  // namespace script
