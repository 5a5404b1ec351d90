// References to places that a ByRef parameter stands for.
//
// A variable lies in a register, which stays where it is for as long as the call can last: its
// reference is the register's address, an Int64. An element, a field and a property of a host
// class may go or move meanwhile: their reference is an object that holds the array or the object
// and knows which value of it is meant. Whoever follows a reference sees what is there at that time,
// or the exception that the same expression would raise.
#pragma once

#include "host/objects/Class.h"
#include "host/objects/Value.h"

namespace script {

struct Place {
    enum class Kind : std::int32_t { Element, Field, Property };

    Kind kind;
    host::Value& holder;             // the array or object; nil for a shared property
    std::int64_t index;              // Element: the index; Field: values from the object's address
    const host::Property* property;  // Property
};

host::Value ReferenceTo(host::Value& variable);
host::Value ReferenceToElement(const host::Value& array, std::int64_t index);
host::Value ReferenceToField(const host::Value& object, std::uint16_t offset);
host::Value ReferenceToProperty(const host::Value& object, const host::Property& property);

// The variable behind a reference; null when it is to another place.
inline host::Value* VariableBehind(const host::Value& reference) {
    return reference.kind() == host::Kind::Int64 ? reinterpret_cast<host::Value*>(reference.bits()) : nullptr;
}

// What a reference to no variable stands for.
Place PlaceBehind(const host::Value& reference);

}  // namespace script
