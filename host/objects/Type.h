// The types of the script language as declarations name them.
#pragma once

#include <string>
#include <string_view>

#include "host/objects/Kinds.h"

namespace host {

struct Type {
    Kind kind = Kind::None;
    Kind element = Kind::None;  // of an array
    std::string className;      // of an object, or of an array's elements; "Variant" holds anything

    bool IsVariant() const;
    bool operator==(const Type& other) const;  // class names without regard to case
};

// The type a declaration calls by this name; any unknown name is a class.
Type TypeNamed(std::string_view name);
Type ArrayOf(const Type& element);
Type ElementOf(const Type& array);

// "Integer", "PictureTQX", "Integer()", "" for nothing.
std::string TypeText(const Type& type);

// Names are the same but for the case of ASCII letters.
bool SameName(std::string_view a, std::string_view b);
std::string LowerName(std::string_view name);

// Hash and equality for tables keyed by name.
struct NameHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const;
};
struct NameEqual {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const { return SameName(a, b); }
};

}  // namespace host
