// Class records whose declarations are checked against their functions by the compiler.
//
//   Method<"Scale(factor as double) as boolean", &Scale>(kMemberPortable)
//
// does not compile unless Scale is bool(Object*, double). The declaration is read at compile
// time; the types are those listed in PluginInterface.h.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <type_traits>

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

// Where " as " starts in a piece of a declaration, or npos.
constexpr std::size_t FindAs(std::string_view piece) {
    for (std::size_t at = 0; at + 4 <= piece.size(); ++at)
        if (SameName(piece.substr(at, 4), " as ")) return at;
    return std::string_view::npos;
}

enum class Kind { None, Integer, Int64, UInt32, UInt8, Double, Single, Boolean, Color, String, Array, Object };

// The kind behind a type name: an unknown name is a class.
constexpr Kind KindOfTypeName(std::string_view name) {
    struct Row {
        std::string_view name;
        Kind kind;
    };
    constexpr Row rows[] = {{"integer", Kind::Integer}, {"int64", Kind::Int64},     {"uint32", Kind::UInt32},
                            {"uint8", Kind::UInt8},     {"double", Kind::Double},   {"single", Kind::Single},
                            {"boolean", Kind::Boolean}, {"color", Kind::Color},     {"string", Kind::String},
                            {"", Kind::None}};
    for (const Row& row : rows)
        if (SameName(name, row.name)) return row.kind;
    return Kind::Object;
}

// The kind behind a C++ type of the interface.
template <class T>
constexpr Kind KindOfType() {
    if constexpr (std::is_void_v<T>) return Kind::None;
    else if constexpr (std::is_same_v<T, std::int32_t>) return Kind::Integer;
    else if constexpr (std::is_same_v<T, std::int64_t>) return Kind::Int64;
    else if constexpr (std::is_same_v<T, std::uint32_t>) return Kind::UInt32;
    else if constexpr (std::is_same_v<T, std::uint8_t>) return Kind::UInt8;
    else if constexpr (std::is_same_v<T, double>) return Kind::Double;
    else if constexpr (std::is_same_v<T, float>) return Kind::Single;
    else if constexpr (std::is_same_v<T, bool>) return Kind::Boolean;
    else if constexpr (std::is_same_v<T, Color>) return Kind::Color;
    else if constexpr (std::is_same_v<T, String*>) return Kind::String;
    else if constexpr (std::is_same_v<T, Array*>) return Kind::Array;
    else if constexpr (std::is_same_v<T, Object*>) return Kind::Object;
    else static_assert(!sizeof(T), "not a type of the plug-in interface");
}

inline constexpr std::size_t kMostArguments = 16;

// A declaration as kinds.
struct Signature {
    Kind arguments[kMostArguments] = {};
    std::size_t count = 0;
    Kind result = Kind::None;

    constexpr bool operator==(const Signature&) const = default;
};

// "name() as type = default", one argument.
constexpr Kind ReadArgument(std::string_view piece) {
    const std::size_t as = FindAs(piece);
    if (Trim(piece.substr(0, as)).ends_with("()")) return Kind::Array;
    std::string_view type = piece.substr(as + 4);
    return KindOfTypeName(Trim(type.substr(0, type.find('='))));
}

// "Name(argument, …) as type"; brackets and result may be missing.
constexpr Signature Read(std::string_view declaration) {
    Signature signature;
    std::string_view rest = declaration;
    const std::size_t open = declaration.find('(');
    if (open != std::string_view::npos) {
        const std::size_t close = declaration.rfind(')');
        std::string_view arguments = Trim(declaration.substr(open + 1, close - open - 1));
        rest = declaration.substr(close + 1);
        while (!arguments.empty()) {
            const std::size_t comma = arguments.find(',');
            signature.arguments[signature.count++] = ReadArgument(arguments.substr(0, comma));
            arguments = comma == std::string_view::npos ? std::string_view{} : arguments.substr(comma + 1);
        }
    }
    if (const std::size_t as = FindAs(rest); as != std::string_view::npos)
        signature.result = KindOfTypeName(Trim(rest.substr(as + 4)));
    return signature;
}

template <class... Arguments>
constexpr Signature SignatureOf(Kind result) {
    return Signature{{KindOfType<Arguments>()...}, sizeof...(Arguments), result};
}

// A function that takes the instance first.
template <class Result, class... Arguments>
constexpr Signature MemberSignature(Result (*)(Object*, Arguments...)) {
    return SignatureOf<Arguments...>(KindOfType<Result>());
}

template <class Result, class... Arguments>
constexpr Signature SharedSignature(Result (*)(Arguments...)) {
    return SignatureOf<Arguments...>(KindOfType<Result>());
}

// What the setter of an assignable method takes: the method's arguments and then its result.
constexpr Signature SetterOf(Signature method) {
    method.arguments[method.count++] = method.result;
    method.result = Kind::None;
    return method;
}

template <auto Function>
AnyFunction Erase() {
    return reinterpret_cast<AnyFunction>(Function);
}

}  // namespace declare

template <Text Declaration, auto Function>
MethodRecord Method(std::int32_t flags) {
    static_assert(declare::Read(Declaration.View()) == declare::MemberSignature(Function),
                  "the declaration and the function behind it disagree");
    static constexpr auto text = Declaration;
    return {declare::Erase<Function>(), nullptr, text.characters, flags};
}

template <Text Declaration, auto Function, auto Setter>
MethodRecord AssignableMethod(std::int32_t flags) {
    static_assert(declare::SetterOf(declare::Read(Declaration.View())) == declare::MemberSignature(Setter),
                  "the declaration and the setter behind it disagree");
    MethodRecord record = Method<Declaration, Function>(flags);
    record.setter = declare::Erase<Setter>();
    return record;
}

// A method without an instance.
template <Text Declaration, auto Function>
MethodRecord SharedMethod(std::int32_t flags) {
    static_assert(declare::Read(Declaration.View()) == declare::SharedSignature(Function),
                  "the declaration and the function behind it disagree");
    static constexpr auto text = Declaration;
    return {declare::Erase<Function>(), nullptr, text.characters, flags};
}

// A getter of a computed property, checked against the property's type.
template <Text Type, auto Getter>
Accessor ComputedAs() {
    static_assert(declare::SignatureOf<>(declare::KindOfTypeName(Type.View())) == declare::MemberSignature(Getter),
                  "the property's type and its getter disagree");
    return {declare::Erase<Getter>(), -1};
}

// A setter of a property, checked against the property's type.
template <Text Type, auto Setter>
Accessor AssignedAs() {
    static_assert(declare::SetterOf(declare::SignatureOf<>(declare::KindOfTypeName(Type.View()))) ==
                      declare::MemberSignature(Setter),
                  "the property's type and its setter disagree");
    return {declare::Erase<Setter>(), -1};
}

// A field of the instance data, checked against the property's type.
template <Text Type, class FieldType>
constexpr Accessor FieldAs(std::size_t offset) {
    static_assert(declare::KindOfTypeName(Type.View()) == declare::KindOfType<FieldType>(),
                  "the property's type and its field disagree");
    return FieldAt(offset);
}

}  // namespace sdk
