// Counts the words that begin and end blocks, and looks at how the last line ends.
#include "host/script/OpenBlocks.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "host/objects/Type.h"

namespace script {

namespace {

using Words = std::vector<std::string_view>;

// The words of a line, without texts and comments; other characters count as words.
Words WordsOf(std::string_view line) {
    Words words;
    const auto isWord = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '#'; };
    for (std::size_t at = 0; at < line.size();) {
        std::size_t end = at + 1;
        if (line[at] == '"') {
            end = std::min(line.find('"', at + 1), line.size() - 1) + 1;
        } else if (isWord(line[at])) {
            while (end < line.size() && isWord(line[end])) ++end;
            words.push_back(line.substr(at, end - at));
        } else if (line[at] == '\'' || line.substr(at, 2) == "//") {
            break;
        } else if (line[at] != ' ' && line[at] != '\t') {
            words.push_back(line.substr(at, 1));
        }
        at = end;
    }
    return words;
}

bool IsAnyOf(std::string_view word, std::initializer_list<std::string_view> names) {
    return std::any_of(names.begin(), names.end(), [&](std::string_view name) { return host::SameName(word, name); });
}

// +1 for a line that begins a block, -1 for one that ends one. Events and accessors stand inside a class,
// which is open as long as they are; the methods of an interface have no End.
int Change(Words words, bool& inInterface) {
    while (!words.empty() && IsAnyOf(words[0], {"private", "public", "protected", "global", "shared"}))
        words.erase(words.begin());
    if (words.empty()) return 0;
    if (host::SameName(words[0], "if")) return host::SameName(words.back(), "then") ? 1 : 0;
    if (host::SameName(words[0], "end")) {
        if (words.size() < 2 || IsAnyOf(words[1], {"event", "property", "get", "set"})) return 0;
        if (host::SameName(words[1], "interface")) inInterface = false;
        return inInterface ? 0 : -1;
    }
    if (inInterface) return 0;
    inInterface = host::SameName(words[0], "interface");
    if (IsAnyOf(words[0], {"next", "wend", "loop", "#endif"})) return -1;
    const bool begins = IsAnyOf(words[0], {"select", "for", "while", "do", "try", "sub", "function", "class", "module",
                                           "interface", "enum", "structure", "#if"});
    return begins ? 1 : 0;
}

}  // namespace

bool WantsMoreLines(std::string_view lines) {
    int open = 0;
    bool inInterface = false;
    Words words;  // of a line and those that continue it
    while (!lines.empty()) {
        const std::size_t end = std::min(lines.find('\n'), lines.size());
        const Words more = WordsOf(lines.substr(0, end));
        words.insert(words.end(), more.begin(), more.end());
        lines.remove_prefix(std::min(end + 1, lines.size()));
        if (!words.empty() && words.back() == "_") {
            words.pop_back();
            if (lines.empty()) return true;
            continue;
        }
        open += Change(words, inInterface);
        words.clear();
    }
    return open > 0;
}

}  // namespace script
