// The types that the checker reasons about.
#pragma once

#include <cstdint>
#include <string>

#include "host/objects/Kinds.h"

namespace script {

struct ClassSymbol;

// A kind of value that the host knows, or what only the checker knows.
enum class Base : std::uint8_t {
    None = static_cast<std::uint8_t>(host::Kind::None),  // no value: a Sub's result
    Boolean = static_cast<std::uint8_t>(host::Kind::Boolean),
    Integer = static_cast<std::uint8_t>(host::Kind::Integer),
    Int64 = static_cast<std::uint8_t>(host::Kind::Int64),
    UInt32 = static_cast<std::uint8_t>(host::Kind::UInt32),
    UInt8 = static_cast<std::uint8_t>(host::Kind::UInt8),
    Int8 = static_cast<std::uint8_t>(host::Kind::Int8),
    Int16 = static_cast<std::uint8_t>(host::Kind::Int16),
    UInt16 = static_cast<std::uint8_t>(host::Kind::UInt16),
    UInt64 = static_cast<std::uint8_t>(host::Kind::UInt64),
    Single = static_cast<std::uint8_t>(host::Kind::Single),
    Double = static_cast<std::uint8_t>(host::Kind::Double),
    Color = static_cast<std::uint8_t>(host::Kind::Color),
    String = static_cast<std::uint8_t>(host::Kind::String),
    Object = static_cast<std::uint8_t>(host::Kind::Object),
    Variant = 0x80,  // an object to the host
    Nil,
    Address,  // of a routine: becomes a delegate where one is wanted
    Wrong,    // of an expression already reported; fits everything, so that one mistake gives one message
};

// The host's kind of such a value.
constexpr host::Kind KindOf(Base base) {
    if (base == Base::Variant || base == Base::Nil) return host::Kind::Object;
    return base >= Base::Variant ? host::Kind::None : static_cast<host::Kind>(base);
}

// An array is a reference like an object; arrays of arrays don't exist.
struct Type {
    Base base = Base::None;
    bool array = false;
    const ClassSymbol* of = nullptr;     // of Base::Object
    std::uint8_t furtherDimensions = 0;  // of an array

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

inline constexpr int kMostDimensions = 8;

inline bool IsGrid(Type type) { return type.furtherDimensions > 0; }
inline bool IsWrong(Type type) { return type.base == Base::Wrong; }
inline bool IsIntegral(Type type) { return !type.array && host::IsWholeKind(KindOf(type.base)); }
inline bool IsUnsigned(Type type) { return IsIntegral(type) && !host::RowOf(KindOf(type.base)).isSigned; }
inline bool IsReal(Type type) { return !type.array && host::IsRealKind(KindOf(type.base)); }
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
