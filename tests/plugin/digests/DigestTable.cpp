// The table of digests, read and written.
#include "tests/plugin/digests/DigestTable.h"

#include <fstream>
#include <iomanip>
#include <sstream>

namespace digests {

namespace {

constexpr int kNameWidth = 40;
constexpr int kDigestWidth = 8;  // hexadecimal digits

constexpr const char* kHeading =
    "# What each member gives for fixed pictures, as digests: the same for every build, processor and\n"
    "# system. Written by: TQX_WRITE_DIGESTS=1 build/release/bin/digest_tests\n";

// Words of a line between blanks.
std::vector<std::string> Words(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

}  // namespace

bool DigestTable::Read(const std::string& path) {
    std::ifstream file(path);
    bool hasColumns = false;
    for (std::string line; std::getline(file, line);) {
        std::vector<std::string> words = Words(line);
        if (words.empty() || words[0][0] == '#') continue;
        const std::string name = words.front();
        words.erase(words.begin());
        if (!hasColumns) {
            hasColumns = true;
            if (words != columns_) return false;
            continue;
        }
        std::vector<Digest> digests;
        for (const std::string& word : words) digests.push_back(static_cast<Digest>(std::stoul(word, nullptr, 16)));
        SetLine(name, digests);
    }
    return hasColumns;
}

bool DigestTable::Write(const std::string& path) const {
    std::ofstream file(path);
    file << kHeading << std::left << std::setw(kNameWidth) << "member,place";
    for (const std::string& column : columns_) file << ' ' << std::setw(kDigestWidth) << column;
    for (const std::string& name : names_) {
        file << '\n' << std::setfill(' ') << std::left << std::setw(kNameWidth) << name << std::right << std::hex;
        for (const Digest digest : lines_.at(name))
            file << ' ' << std::setfill('0') << std::setw(kDigestWidth) << digest;
    }
    file << '\n';
    return static_cast<bool>(file.flush());
}

std::vector<Digest> DigestTable::Line(const std::string& name) const {
    const auto line = lines_.find(name);
    return line == lines_.end() ? std::vector<Digest>() : line->second;
}

void DigestTable::SetLine(const std::string& name, std::vector<Digest> digests) {
    if (!lines_.count(name)) names_.push_back(name);
    lines_[name] = std::move(digests);
}

std::vector<std::string> DigestTable::Names() const { return names_; }

}  // namespace digests
