// A digest of everything that can be seen of a value, and the filling of instances with bytes.
#pragma once

#include <cstdint>
#include <string>

#include "host/objects/Value.h"

namespace host::check {

// Over numbers, text and array elements; over objects' plain properties, memory blocks' bytes,
// pictures' pixels, and what assignable methods give for small indexes.
std::uint64_t DigestOf(const Value& value);

// Assigns bytes of a fixed pattern to the first few rows: to every assignable method that takes
// one integer and gives a string or memory block.
void FillWithBytes(const Ref<Object>& object);

// The same in the script language, for a variable of a name.
std::string FillScript(const Class& type, const std::string& name);

}  // namespace host::check
