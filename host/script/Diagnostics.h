// What is wrong with a script, collected while it is read and checked, so that one run tells it all.
#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "host/messages/Message.h"

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

enum class Severity : std::uint8_t { Error, Warning };

struct Diagnostic {
    Position at;
    std::string message;  // one sentence, says what would be right
    Severity severity = Severity::Error;
};

// More errors, or warnings, than this are only counted: the first ones cause the rest.
inline constexpr std::size_t kMostDiagnostics = 25;

class Diagnostics {
  public:
    explicit Diagnostics(const Source& source) : source_(source) {}

    // A second error at the same place is dropped.
    void Add(Position at, const host::Said& message) { Tell(at, message, Severity::Error); }

    // What is legal but hardly meant. It does not keep a script from running.
    void Warn(Position at, const host::Said& message) { Tell(at, message, Severity::Warning); }

    bool HasErrors() const { return counts_[0] > 0; }
    const std::vector<Diagnostic>& List() const { return list_; }

    // "path:line:column: message", the line, and a caret below the column, for each error and
    // warning in the order of the lines.
    std::string Text() const;

  private:
    void Tell(Position at, const host::Said& message, Severity severity);
    std::string Omitted(Severity severity) const;

    const Source& source_;
    std::vector<Diagnostic> list_;
    std::set<std::tuple<std::int32_t, std::int32_t, Severity>> places_;  // of all that was told, listed or not
    std::array<std::size_t, 2> counts_{};                                // by severity
};

// One diagnostic as Diagnostics::Text writes it; a warning's message is led by "warning: ".
std::string Describe(const Source& source, const Diagnostic& diagnostic);

}  // namespace script
