// What is wrong with a script, collected while it is read and checked, so that one run tells it all.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace script {

// A place in a script, both counted from 1. Line 0: nowhere.
struct Position {
    std::int32_t line = 0;
    std::int32_t column = 0;

    bool operator==(const Position&) const = default;
};

// A script's text and the name it goes by in messages.
struct Source {
    std::string path;
    std::string text;
};

// The text of one line without its end; empty past the last.
std::string_view LineOf(const Source& source, std::int32_t line);

struct Diagnostic {
    Position at;
    std::string message;  // one sentence, says what would be right
};

// More errors than this are only counted: the first ones cause the rest.
inline constexpr std::size_t kMostDiagnostics = 25;

class Diagnostics {
  public:
    explicit Diagnostics(const Source& source) : source_(source) {}

    // A second error at the same place is dropped.
    void Add(Position at, std::string message);

    bool Empty() const { return list_.empty(); }
    const std::vector<Diagnostic>& List() const { return list_; }

    // "path:line:column: message", the line, and a caret below the column, for each error in the
    // order of the lines.
    std::string Text() const;

  private:
    const Source& source_;
    std::vector<Diagnostic> list_;
    int omitted_ = 0;
};

// One diagnostic as Diagnostics::Text writes it.
std::string Describe(const Source& source, const Diagnostic& diagnostic);

}  // namespace script
