// What is no text of this language, but of another or of a page made for reading: each with what
// would be right.
#pragma once

#include <optional>
#include <string_view>

#include "host/messages/Message.h"

namespace host {

// Stands for a text whose characters don't matter any more.
inline constexpr std::string_view kSomeText = "\"\"";

struct ForeignText {
    std::size_t bytes = 0;   // that it takes
    Said message;            // what it is, and what would be right
    std::string_view meant;  // to go on with: an operator, a word, kSomeText; empty: nothing
};

// What `rest` begins with, where that is foreign.
std::optional<ForeignText> ForeignTextAt(std::string_view rest);

// Whether `rest` begins with a character beyond ASCII that is no letter of a name: a curly quote, a
// no-break space and the like.
bool IsTypographic(std::string_view rest);

}  // namespace host
