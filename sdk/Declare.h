// Class records whose declarations are checked against their functions by the compiler.
//
//   Method<"Scale(factor as double) as boolean", &Scale>(kMemberPortable)
//
// does not compile unless there is a bool Scale(Object*, double); among overloads it picks that
// one. The declaration is read at compile time; the types are those listed in PluginInterface.h.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <type_traits>
#include <utility>

#include "sdk/PluginInterface.h"

namespace sdk {

// A string literal as a template argument.
template <std::size_t N>
struct Text {
    char characters[N];
    consteval Text(const char (&literal)[N]) { std::copy_n(literal, N, characters); }
    constexpr std::string_view View() const { return {characters, N - 1}; }
};

namespace declare {

constexpr char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

constexpr bool SameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Lower(x) == Lower(y); });
}

constexpr std::string_view Trim(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

// The position of the first character c, or npos. The library's own searches test
// for null pointers, which g++ 12 can't do at compile time under the undefined-behaviour sanitizer.
constexpr std::size_t FindFirst(std::string_view text, char c) {
    for (std::size_t at = 0; at < text.size(); ++at)
        if (text[at] == c) return at;
    return std::string_view::npos;
}

// Where " as " starts in a piece of a declaration, or npos.
constexpr std::size_t FindAs(std::string_view piece) {
    for (std::size_t at = 0; at + 4 <= piece.size(); ++at)
        if (SameName(piece.substr(at, 4), " as ")) return at;
    return std::string_view::npos;
}

enum class Kind {
    None,
    Integer,
    Int64,
    UInt32,
    UInt8,
    Int8,
    Int16,
    UInt16,
    UInt64,
    Double,
    Single,
    Boolean,
    Color,
    String,
    Array,
    Object
};

// The kind behind a type name: an unknown name is a class.
constexpr Kind KindOfTypeName(std::string_view name) {
    struct Row {
        std::string_view name;
        Kind kind;
    };
    constexpr Row rows[] = {{"integer", Kind::Integer}, {"int64", Kind::Int64},   {"uint32", Kind::UInt32},
                            {"uint8", Kind::UInt8},     {"double", Kind::Double}, {"single", Kind::Single},
                            {"boolean", Kind::Boolean}, {"color", Kind::Color},   {"string", Kind::String},
                            {"", Kind::None},           {"int8", Kind::Int8},     {"int16", Kind::Int16},
                            {"uint16", Kind::UInt16},   {"uint64", Kind::UInt64}, {"int32", Kind::Integer},
                            {"uinteger", Kind::UInt32}, {"byte", Kind::UInt8}};
    for (const Row& row : rows)
        if (SameName(name, row.name)) return row.kind;
    return Kind::Object;
}

// The C++ type behind a kind.
template <Kind>
struct TypeBehind {
    using Type = Object*;
};
template <>
struct TypeBehind<Kind::None> {
    using Type = void;
};
template <>
struct TypeBehind<Kind::Integer> {
    using Type = std::int32_t;
};
template <>
struct TypeBehind<Kind::Int64> {
    using Type = std::int64_t;
};
template <>
struct TypeBehind<Kind::UInt32> {
    using Type = std::uint32_t;
};
template <>
struct TypeBehind<Kind::UInt8> {
    using Type = std::uint8_t;
};
template <>
struct TypeBehind<Kind::Int8> {
    using Type = std::int8_t;
};
template <>
struct TypeBehind<Kind::Int16> {
    using Type = std::int16_t;
};
template <>
struct TypeBehind<Kind::UInt16> {
    using Type = std::uint16_t;
};
template <>
struct TypeBehind<Kind::UInt64> {
    using Type = std::uint64_t;
};
template <>
struct TypeBehind<Kind::Double> {
    using Type = double;
};
template <>
struct TypeBehind<Kind::Single> {
    using Type = float;
};
template <>
struct TypeBehind<Kind::Boolean> {
    using Type = bool;
};
template <>
struct TypeBehind<Kind::Color> {
    using Type = Color;
};
template <>
struct TypeBehind<Kind::String> {
    using Type = String*;
};
template <>
struct TypeBehind<Kind::Array> {
    using Type = Array*;
};

template <Kind K>
using TypeOf = typename TypeBehind<K>::Type;

inline constexpr std::size_t kMostArguments = 16;

// A declaration as kinds.
struct Signature {
    Kind arguments[kMostArguments] = {};
    std::size_t count = 0;
    Kind result = Kind::None;
};

constexpr std::string_view Last(std::string_view text, std::size_t count) {
    return text.size() < count ? text : text.substr(text.size() - count);
}

// "name() as type = default", one argument.
constexpr Kind ReadArgument(std::string_view piece) {
    const std::size_t as = FindAs(piece);
    if (SameName(Last(Trim(piece.substr(0, as)), 2), "()")) return Kind::Array;
    std::string_view type = piece.substr(as + 4);
    return KindOfTypeName(Trim(type.substr(0, FindFirst(type, '='))));
}

// The bracket that closes the one at `open`; those of arrays lie between.
constexpr std::size_t ClosingBracket(std::string_view text, std::size_t open) {
    std::size_t depth = 0;
    for (std::size_t at = open; at < text.size(); ++at) {
        if (text[at] == '(') ++depth;
        if (text[at] == ')' && --depth == 0) return at;
    }
    return std::string_view::npos;
}

// "Name(argument, …) as type"; brackets and result may be missing, the result may be an array.
constexpr Signature Read(std::string_view declaration) {
    Signature signature;
    std::string_view rest = declaration;
    const std::size_t open = FindFirst(declaration, '(');
    if (open < FindAs(declaration)) {
        const std::size_t close = ClosingBracket(declaration, open);
        std::string_view arguments = Trim(declaration.substr(open + 1, close - open - 1));
        rest = declaration.substr(close + 1);
        while (!arguments.empty()) {
            const std::size_t comma = FindFirst(arguments, ',');
            signature.arguments[signature.count++] = ReadArgument(arguments.substr(0, comma));
            arguments = comma == std::string_view::npos ? std::string_view{} : arguments.substr(comma + 1);
        }
    }
    if (const std::size_t as = FindAs(rest); as != std::string_view::npos) {
        const std::string_view type = Trim(rest.substr(as + 4));
        signature.result = SameName(Last(type, 2), "()") ? Kind::Array : KindOfTypeName(type);
    }
    return signature;
}

// The types of the functions behind a declaration.
template <Text Declaration>
class Declared {
    static constexpr Signature kRead = Read(Declaration.View());
    using AssignedType = TypeOf<kRead.result == Kind::None ? Kind::Object : kRead.result>;

    template <std::size_t... I>
    static auto MemberType(std::index_sequence<I...>)
        -> TypeOf<kRead.result> (*)(Object*, TypeOf<kRead.arguments[I]>...);
    template <std::size_t... I>
    static auto SharedType(std::index_sequence<I...>) -> TypeOf<kRead.result> (*)(TypeOf<kRead.arguments[I]>...);
    template <std::size_t... I>
    static auto SetterType(std::index_sequence<I...>) -> void (*)(Object*, TypeOf<kRead.arguments[I]>..., AssignedType);
    template <std::size_t... I>
    static auto SharedSetterType(std::index_sequence<I...>) -> void (*)(TypeOf<kRead.arguments[I]>..., AssignedType);
    using Indices = std::make_index_sequence<kRead.count>;

  public:
    using Member = decltype(MemberType(Indices{}));  // takes the instance first
    using Shared = decltype(SharedType(Indices{}));
    using Setter = decltype(SetterType(Indices{}));  // takes the method's arguments and then its result
    using SharedSetter = decltype(SharedSetterType(Indices{}));
};

// The types behind a property's type name.
template <Text TypeName>
struct DeclaredProperty {
    using Type = TypeOf<KindOfTypeName(TypeName.View())>;
    using Getter = Type (*)(Object*);
    using Setter = void (*)(Object*, Type);
};

// The part of "Name as type" that begins at First, as a text of its own.
template <Text Declaration, std::size_t First, std::size_t Count>
consteval Text<Count + 1> PartOf() {
    char characters[Count + 1] = {};
    std::copy_n(Declaration.characters + First, Count, characters);
    return characters;
}

template <Text Declaration>
inline constexpr std::size_t kNameLength = FindAs(Declaration.View());

template <Text Declaration>
inline constexpr Text kPropertyName = PartOf<Declaration, 0, kNameLength<Declaration>>();

template <Text Declaration>
inline constexpr Text kPropertyType =
    PartOf<Declaration, kNameLength<Declaration> + 4, Declaration.View().size() - kNameLength<Declaration> - 4>();

// The declaration as characters that live as long as the program.
template <Text Declaration>
inline constexpr Text kStored = Declaration;

}  // namespace declare

template <Text Declaration, typename declare::Declared<Declaration>::Member Function>
MethodRecord Method(std::int32_t flags) {
    return {reinterpret_cast<AnyFunction>(Function), nullptr, declare::kStored<Declaration>.characters, flags};
}

// A method that can also be assigned to.
template <Text Declaration, typename declare::Declared<Declaration>::Member Function,
          typename declare::Declared<Declaration>::Setter Setter>
MethodRecord AssignableMethod(std::int32_t flags) {
    return {reinterpret_cast<AnyFunction>(Function), reinterpret_cast<AnyFunction>(Setter),
            declare::kStored<Declaration>.characters, flags};
}

// A method without an instance.
template <Text Declaration, typename declare::Declared<Declaration>::Shared Function>
MethodRecord SharedMethod(std::int32_t flags) {
    return {reinterpret_cast<AnyFunction>(Function), nullptr, declare::kStored<Declaration>.characters, flags};
}

// A shared method that can also be assigned to.
template <Text Declaration, typename declare::Declared<Declaration>::Shared Function,
          typename declare::Declared<Declaration>::SharedSetter Setter>
MethodRecord AssignableSharedMethod(std::int32_t flags) {
    return {reinterpret_cast<AnyFunction>(Function), reinterpret_cast<AnyFunction>(Setter),
            declare::kStored<Declaration>.characters, flags};
}

// A computed getter, and a setter, of a property of the named type.
template <Text TypeName, typename declare::DeclaredProperty<TypeName>::Getter Getter>
Accessor ComputedAs() {
    return {reinterpret_cast<AnyFunction>(Getter), -1};
}

template <Text TypeName, typename declare::DeclaredProperty<TypeName>::Setter Setter>
Accessor AssignedAs() {
    return {reinterpret_cast<AnyFunction>(Setter), -1};
}

// Where a field lies in the instance data.
template <class Data, class FieldType>
std::size_t OffsetOf(FieldType Data::*field) {
    alignas(Data) static constexpr char place[sizeof(Data)] = {};
    const auto* const data = reinterpret_cast<const Data*>(place);
    return static_cast<std::size_t>(reinterpret_cast<const char*>(&(data->*field)) - place);
}

// A field of the instance data that stands for a property of the named type.
template <Text TypeName, class Data, class FieldType>
Accessor FieldAs(FieldType Data::*field) {
    static_assert(std::is_same_v<typename declare::DeclaredProperty<TypeName>::Type, FieldType>,
                  "the property's type and its field disagree");
    return FieldAt(OffsetOf(field));
}

// How a property is read or written: through a field of the instance data, or a function.
template <Text TypeName, auto Member>
Accessor ReadThrough() {
    if constexpr (std::is_member_object_pointer_v<decltype(Member)>)
        return FieldAs<TypeName>(Member);
    else
        return ComputedAs<TypeName, Member>();
}

template <Text TypeName, auto Member>
Accessor WriteThrough() {
    if constexpr (std::is_member_object_pointer_v<decltype(Member)>)
        return FieldAs<TypeName>(Member);
    else
        return AssignedAs<TypeName, Member>();
}

// A property by its declaration, "Name as type", and what it is read and written through:
//
//   ReadOnly<"Width as Integer", &Data::width>(kMemberPortable)
//   ReadWrite<"Gain as Double", &Data::gain, &SetGain>(kMemberPortable)
template <Text Declaration, auto Getter>
PropertyRecord ReadOnly(std::int32_t flags) {
    using declare::kPropertyName, declare::kPropertyType;
    return {kPropertyName<Declaration>.characters, kPropertyType<Declaration>.characters, flags | kMemberProperty,
            ReadThrough<kPropertyType<Declaration>, Getter>(), kNoAccess};
}

template <Text Declaration, auto Getter, auto Setter = Getter>
PropertyRecord ReadWrite(std::int32_t flags) {
    PropertyRecord record = ReadOnly<Declaration, Getter>(flags);
    record.setter = WriteThrough<declare::kPropertyType<Declaration>, Setter>();
    return record;
}

}  // namespace sdk
