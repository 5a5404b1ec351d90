// Which words are the command's own and which belong to a script.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "host/messages/Message.h"

namespace tqx {

// Words that the command doesn't understand; `what` tells which.
struct WrongWords {
    host::Said said;
};

// The position of the first word, from `from` on, that is neither an option of the command nor an
// option's value: the end where there is none. "--" ends the options and is taken away. Throws
// WrongWords for an option that the command doesn't have.
std::size_t FirstPlainWord(const CLI::App& command, std::vector<std::string>& words, std::size_t from);

// Takes the words from a position on away, and gives them.
std::vector<std::string> TakeFrom(std::vector<std::string>& words, std::size_t from);

}  // namespace tqx
