// What the framework's functions, classes and members do, in a sentence and an example each.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

struct Description {
    std::string_view sentence;
    std::string example;  // lines of a script; behind two blanks and a ' stands what one prints
};

// Of a function or class by its name, of a member as Class.Member; in any case. Null for others.
const Description* FindDescription(std::string_view name);

// The names of all that is described, in alphabetical order.
std::vector<std::string_view> DescribedNames();

// The declaration of a function that the language itself has, such as Print, whose arguments no
// record can state. Empty for others.
std::string_view LanguageFunction(std::string_view name);

}  // namespace host
