// Gathers text until its line ends.
#include "host/script/SpokenLines.h"

namespace script {

void SpokenLines::Print(std::string_view line) {
    if (!print_) return;
    if (begun_.empty()) return print_(line);
    const std::string whole = std::exchange(begun_, {}).append(line);
    print_(whole);
}

void SpokenLines::Write(std::string_view text) {
    if (write_) return write_(text);
    for (std::size_t end; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1))
        Print(text.substr(0, end));
    begun_ += text;
}

void SpokenLines::End() {
    if (begun_.empty()) return;
    const std::string line = std::exchange(begun_, {});
    if (print_) print_(line);
}

}  // namespace script
