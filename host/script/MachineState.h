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

// Negative, 0 or positive. Texts are compared without regard to case; strings of bytes, which
// have no encoding, by their bytes.
int CompareTexts(const host::Value& a, const host::Value& b);

// The texts one after the other. Of two encodings the first that is a text counts.
host::Value ConcatenateTexts(const host::Value& a, const host::Value& b);

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
