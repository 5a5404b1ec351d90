// Values as keys of a table.
#pragma once

#include <string>

#include "host/objects/Value.h"

namespace host {

// Two values are the same key when this is the same. Numbers by what they are worth, whatever their
// type; texts without regard to case and encoding; strings of bytes byte by byte, and never the
// same as a text; booleans and colours by themselves; objects and arrays by identity; Nil is a key.
std::string KeyOf(const Value& value);

}  // namespace host
