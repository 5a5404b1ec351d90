// Types by the names that declarations have for them.
#include "host/objects/Type.h"

namespace host {

bool SameName(std::string_view a, std::string_view b) { return sdk::declare::SameName(a, b); }

std::string LowerName(std::string_view name) {
    std::string lower(name);
    for (char& c : lower) c = sdk::declare::Lower(c);
    return lower;
}

std::size_t NameHash::operator()(std::string_view name) const {
    std::size_t hash = 1469598103934665603U;  // FNV-1a, 64 bits
    for (const char c : name) hash = (hash ^ static_cast<unsigned char>(sdk::declare::Lower(c))) * 1099511628211U;
    return hash;
}

bool Type::IsVariant() const { return kind == Kind::Object && SameName(className, "variant"); }

bool Type::operator==(const Type& other) const {
    return kind == other.kind && element == other.element && SameName(className, other.className);
}

Type TypeNamed(std::string_view name) {
    const Kind kind = sdk::declare::KindOfTypeName(name);
    return {kind, Kind::None, kind == Kind::Object ? std::string(name) : std::string()};
}

Type ArrayOf(const Type& element) { return {Kind::Array, element.kind, element.className}; }

Type ElementOf(const Type& array) { return {array.element, Kind::None, array.className}; }

std::string TypeText(const Type& type) {
    if (type.kind == Kind::Array) return TypeText(ElementOf(type)) + "()";
    return type.kind == Kind::Object ? type.className : std::string(RowOf(type.kind).name);
}

}  // namespace host
