// Helpers shared by the machine's files.
#pragma once

#include <cstdint>
#include <string>

#include "host/objects/Array.h"
#include "host/objects/Value.h"
#include "host/script/Ast.h"
#include "host/script/Bytecode.h"

namespace script {

// Whether something waits to be looked at: Ctrl-C, or an exception out of a destructor.
bool AttentionWanted();
void WantAttention();

[[noreturn]] void ThrowOutOfBounds(std::int64_t index, const host::Array& array);
[[noreturn]] void ThrowOutOfBounds(std::int64_t index, const host::Array& array, std::size_t end);  // where end may be
[[noreturn]] void ThrowNoArray();
[[noreturn]] void ThrowNoObject();

// The element of an array, or an exception that says what is wrong.
inline host::Value& ElementOf(const host::Value& array, std::int64_t index) {
    host::Array* elements = array.array();
    if (!elements) ThrowNoArray();
    if (index < 0 || index >= static_cast<std::int64_t>(elements->values.size())) ThrowOutOfBounds(index, *elements);
    return elements->values[static_cast<std::size_t>(index)];
}

// A field of an object by its place, in values from the object's address.
inline host::Value& FieldOf(const host::Value& holder, std::size_t offset) {
    host::Object* object = holder.object();
    if (!object) ThrowNoObject();
    return reinterpret_cast<host::Value*>(object)[offset];
}

// Negative, 0 or positive. Texts are compared without regard to case; strings of bytes, which
// have no encoding, by their bytes.
int CompareTexts(const host::Value& a, const host::Value& b);

// The texts one after the other. Of two encodings the first that is a text counts.
host::Value ConcatenateTexts(const host::Value& a, const host::Value& b);

// The first one with the second behind it. A text that nobody else holds grows in its own memory.
void AppendText(host::Value& text, const host::Value& more);

// A value as Print shows it.
std::string TextOfValue(const host::Value& value);

// A value as another type: out of a variant, or by a conversion of the host's classes. Throws
// TypeMismatchException where there is none.
host::Value ConvertValue(const host::Value& value, const TypeEntry& type);

// An object as one of a class; IllegalCastException when it is none.
host::Value CastObject(const host::Value& value, const TypeEntry& type);

bool IsInstance(const host::Value& value, const TypeEntry& type);

// Operators on variants, by what they hold.
host::Value VariantArithmetic(Operator op, const host::Value& a, const host::Value& b);
bool VariantComparison(Operator op, const host::Value& a, const host::Value& b);

}  // namespace script
