// Splits the command's own words from a script's.
#include "tqx/ScriptWords.h"

#include <algorithm>
#include <iterator>

#include "host/messages/CommandMessages.h"

namespace tqx {

namespace {

bool IsOption(const std::string& word) { return word.size() > 1 && word[0] == '-'; }

// Whether the value of an option is the next word. It may stand behind "=" in the same.
bool TakesNextWord(const CLI::App& command, const std::string& word) {
    const std::size_t end = word.find('=');
    const CLI::Option* const option = command.get_option_no_throw(word.substr(0, end));
    if (!option) throw WrongWords{kCommandSays.noOption(word.substr(0, end))};
    return end == std::string::npos && option->get_items_expected_max() > 0;
}

}  // namespace

std::size_t FirstPlainWord(const CLI::App& command, std::vector<std::string>& words, std::size_t from) {
    std::size_t at = from;
    for (; at < words.size() && IsOption(words[at]); ++at) {
        if (words[at] == "--") {
            words.erase(words.begin() + static_cast<std::ptrdiff_t>(at));
            break;
        }
        if (TakesNextWord(command, words[at])) ++at;
    }
    return std::min(at, words.size());
}

std::vector<std::string> TakeFrom(std::vector<std::string>& words, std::size_t from) {
    const auto first = words.begin() + static_cast<std::ptrdiff_t>(from);
    std::vector<std::string> taken(std::make_move_iterator(first), std::make_move_iterator(words.end()));
    words.erase(first, words.end());
    return taken;
}

}  // namespace tqx
