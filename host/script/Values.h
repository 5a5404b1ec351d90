// Operations on values whose type is known only when they are met: texts, conversions, operators on
// variants.
#pragma once

#include <string>

#include "host/objects/Value.h"
#include "host/script/Ast.h"
#include "host/script/Bytecode.h"

namespace script {

// Negative, 0 or positive. Texts are compared without regard to case; strings of bytes, which
// have no encoding, by their bytes.
int CompareTexts(const host::Value& a, const host::Value& b);
bool EqualTexts(const host::Value& a, const host::Value& b);

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
