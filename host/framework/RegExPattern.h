// A compiled regular expression. Searches are bounded: one that would take too many steps or too
// much memory ends with an error instead.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct RegExSettings {
    bool caseSensitive = false;
    bool dotMatchAll = false;           // . also matches the end of a line
    bool greedy = true;                 // * takes as much as it can, *? as little; else the other way
    bool treatTargetAsOneLine = false;  // ^ and $ only at the target's own ends
    bool matchEmpty = true;
    bool stringBeginIsLineBegin = true;
    bool stringEndIsLineEnd = true;
    bool replaceAllMatches = false;
    std::int32_t lineEndType = 0;  // 0 LF, CR or CRLF; 1 this system's; 2 CR; 3 CRLF; 4 LF

    bool operator==(const RegExSettings&) const = default;
};

inline constexpr std::int32_t kLastLineEndType = 4;

// Where a group matched, in bytes from 0; both -1 where it did not.
struct RegExSpan {
    std::int64_t first = -1, end = -1;
};

// The whole match and then the groups; empty when there is none.
using RegExSpans = std::vector<RegExSpan>;

class RegExPattern {
  public:
    // As text the pattern is UTF-8 and so is what is searched; else both are bytes. Raises
    // RegExSearchPatternException.
    RegExPattern(std::string_view pattern, const RegExSettings& settings, bool asText);

    // The first match from a byte on. `isSound` says that the text is known to be sound UTF-8; a
    // search in other text of a pattern for text sets `foundUnsound`. Raises RegExException.
    RegExSpans Find(std::string_view text, std::size_t from, bool isSound, bool& foundUnsound) const;

  private:
    struct Code;
    std::shared_ptr<Code> code_;
    std::uint32_t searchOptions_;
};

// A replacement with its references put in: \0 to \9 and $0 to $9 for what matched, $& and \& for the whole
// match, $` and $' for what stands before and behind it, \n \r \t, and a backslash or $ before any
// other character for that character.
std::string ExpandReplacement(std::string_view replacement, std::string_view text, const RegExSpans& spans);

}  // namespace host
