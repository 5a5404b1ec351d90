// Which overload a call means, and the implicit conversions of the language.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/objects/Class.h"
#include "host/objects/Value.h"

namespace host {

// How far a value is from a type; smaller is nearer.
//   0       the type itself
//   1..9    a number that the type holds exactly (wider whole numbers, whole to double)
//   10..19  a superclass, a number that may lose something, a variant
//   20..    a conversion of the host's classes (Runtime::AddConversion)
//   -1      none
int ConversionCost(const Value& value, const Type& type);

// The value as the type; ConversionCost must not be -1.
Value ConvertTo(const Value& value, const Type& type);

struct Choice {
    const Method* method = nullptr;  // null: none fits, or several fit equally well
    std::vector<Value> arguments;    // converted, one for each parameter, defaults filled in
    std::string problem;             // why there is no method, naming the candidates
};

// Chooses among overloads by number and types of the arguments: the least total cost, then the
// fewest defaults. With `assigned` only assignable ones count, and the value must convert to the
// result's type; it is then the last of the arguments.
Choice ChooseOverload(std::span<const Method* const> candidates, std::span<const Value> arguments,
                      const Value* assigned = nullptr);

}  // namespace host
