// Errors and warnings with their place, line and mark.
#include "host/script/Diagnostics.h"

#include <algorithm>

namespace script {

namespace {

// A caret below a column; tabs stay tabs so that it stands right in any terminal.
std::string Caret(std::string_view line, std::int32_t column) {
    std::string text;
    for (std::int32_t at = 1; at < column; ++at) {
        const std::size_t index = static_cast<std::size_t>(at) - 1;
        const bool tab = index < line.size() && line[index] == '\t';
        // Continuation bytes of UTF-8 take no column of their own.
        if (index < line.size() && (static_cast<unsigned char>(line[index]) & 0xC0) == 0x80) continue;
        text += tab ? '\t' : ' ';
    }
    return text + '^';
}

}  // namespace

std::string_view LineOf(const Source& source, std::int32_t line) {
    std::string_view rest = source.text;
    for (std::int32_t at = 1; at < line; ++at) {
        const std::size_t end = rest.find_first_of("\r\n");
        if (end == std::string_view::npos) return {};
        rest.remove_prefix(end + (rest.substr(end, 2) == "\r\n" ? 2 : 1));
    }
    return rest.substr(0, rest.find_first_of("\r\n"));
}

void Diagnostics::Tell(Position at, const host::Said& message, Severity severity) {
    if (!places_.emplace(at.line, at.column, severity).second) return;
    if (counts_[static_cast<std::size_t>(severity)]++ < kMostDiagnostics)
        list_.push_back({at, message.text(), severity});
}

// "… and 3 more errors", or nothing.
std::string Diagnostics::Omitted(Severity severity) const {
    const std::size_t count = counts_[static_cast<std::size_t>(severity)];
    if (count <= kMostDiagnostics) return {};
    const std::string what = severity == Severity::Error ? " more error" : " more warning";
    return "… and " + std::to_string(count - kMostDiagnostics) + what + (count - kMostDiagnostics == 1 ? "\n" : "s\n");
}

std::string Describe(const Source& source, const Diagnostic& diagnostic) {
    const auto [line, column] = diagnostic.at;
    std::string text = source.path + ':' + std::to_string(line) + ':' + std::to_string(column) + ": ";
    if (diagnostic.severity == Severity::Warning) text += "warning: ";
    text += diagnostic.message + '\n';
    const std::string_view shown = LineOf(source, line);
    if (!shown.empty()) text += "    " + std::string(shown) + "\n    " + Caret(shown, column) + '\n';
    return text;
}

std::string Diagnostics::Text() const {
    std::vector<Diagnostic> sorted = list_;
    std::stable_sort(sorted.begin(), sorted.end(), [](const Diagnostic& a, const Diagnostic& b) {
        return a.at.line != b.at.line ? a.at.line < b.at.line : a.at.column < b.at.column;
    });
    std::string text;
    for (const Diagnostic& diagnostic : sorted) text += Describe(source_, diagnostic);
    for (const Severity severity : {Severity::Error, Severity::Warning}) text += Omitted(severity);
    return text;
}

}  // namespace script
