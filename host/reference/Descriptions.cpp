// The entries stand in framework/*.txt, which the build puts into the program: a name, a sentence, and the
// lines of an example, indented; an empty line parts one entry from the next.
#include "host/reference/Descriptions.h"

#include <algorithm>
#include <unordered_map>

#include "host/objects/Type.h"
#include "host/reference/FrameworkTexts.h"

namespace host {

namespace {

using Entries = std::unordered_map<std::string_view, Description, NameHash, NameEqual>;

std::string_view TakeLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

void ReadEntries(std::string_view text, Entries& entries) {
    constexpr std::string_view kIndent = "  ";
    while (!text.empty()) {
        const std::string_view name = TakeLine(text);
        Description& entry = entries[name];
        entry.sentence = TakeLine(text);
        while (text.starts_with(kIndent)) entry.example.append(TakeLine(text).substr(kIndent.size())).append("\n");
        TakeLine(text);
    }
}

const Entries& AllEntries() {
    static const Entries entries = [] {
        Entries read;
        for (const std::string_view text : kFrameworkTexts) ReadEntries(text, read);
        return read;
    }();
    return entries;
}

struct Declared {
    std::string_view name;
    std::string_view declaration;
};

constexpr Declared kLanguage[] = {
    {"Print", "Print(value)"},
    {"Quit", "Quit(exitCode As Integer = 0)"},
    {"Array", "Array(value, ...) As T()"},
    {"Ubound", "Ubound(array) As Integer"},
};

}  // namespace

const Description* FindDescription(std::string_view name) {
    const auto found = AllEntries().find(name);
    return found == AllEntries().end() ? nullptr : &found->second;
}

std::vector<std::string_view> DescribedNames() {
    std::vector<std::string_view> names;
    for (const auto& [name, entry] : AllEntries()) names.push_back(name);
    std::sort(names.begin(), names.end());
    return names;
}

std::string_view LanguageFunction(std::string_view name) {
    for (const Declared& row : kLanguage)
        if (SameName(row.name, name)) return row.declaration;
    return {};
}

}  // namespace host
