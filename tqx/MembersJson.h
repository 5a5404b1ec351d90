// Classes and their members as JSON.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/Runtime.h"

namespace tqx {

// {"classes": [{"name", "superclass", "constructors", "methods", "sharedMethods", "properties",
// "constants", "events"}]}; with a member's name only members of that name.
std::string ClassesAsJson(const std::vector<const host::Class*>& classes, std::string_view member);

// A type's name with a class spelled as the class itself is.
std::string TypeName(const host::Type& type);
std::string SpelledDeclaration(host::Declaration declaration);

// A text in quotes, escaped.
std::string JsonText(std::string_view text);

}  // namespace tqx
