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

}  // namespace script
