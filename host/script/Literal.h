// The values of literal nodes.
#pragma once

#include "host/script/Ast.h"

namespace script {

// A whole-number literal as its type holds it: an Integer written as a bit pattern (&hFFFFFFFF)
// is the number of those bits.
inline std::int64_t LiteralInteger(const Expression& literal) {
    const bool narrow = literal.pattern && literal.type == kIntegerType;
    return narrow ? static_cast<std::int32_t>(literal.integer) : literal.integer;
}

// What a literal node stands for, as a value of the node's type.
host::Value LiteralValue(const Expression& literal);

// A constant's value as a literal; Nil for what is no number, Boolean, colour or text.
ExpressionPtr LiteralOf(const host::Value& value, Position at);

}  // namespace script
