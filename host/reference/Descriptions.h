// What the framework's functions and classes do, in a sentence each: the one place that says so.
#pragma once

#include <string_view>

namespace host {

// Empty for a name that has none; in any case.
std::string_view DescriptionOf(std::string_view name);

// The declaration of a function that the language itself has, such as Print, whose arguments no
// record can state. Empty for others.
std::string_view LanguageFunction(std::string_view name);

}  // namespace host
