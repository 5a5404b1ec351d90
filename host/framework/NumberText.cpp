// The shortest text of a double, and the number that a text begins with.
#include "host/framework/NumberText.h"

#include <charconv>
#include <cmath>
#include <cstdint>

#include "host/calls/Lexer.h"

namespace host {

namespace {

// The longest fixed form: the largest double has 309 digits.
constexpr std::size_t kMostCharacters = 400;

template <class Real>
std::string RealText(Real value) {
    if (std::isnan(value)) return "nan";
    char text[kMostCharacters];
    const bool whole = std::isfinite(value) && std::trunc(value) == value;
    const auto end = whole ? std::to_chars(text, text + sizeof text, value, std::chars_format::fixed).ptr
                           : std::to_chars(text, text + sizeof text, value).ptr;
    return {text, end};
}

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Base of "&h", "&o" and "&b"; 0 for none.
int BaseOf(std::string_view text) { return text.size() < 2 || text[0] != '&' ? 0 : BaseOfLetter(text[1]); }

}  // namespace

std::string NumberText(double value) { return RealText(value); }
std::string NumberText(float value) { return RealText(value); }

double NumberIn(std::string_view text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    if (const int base = BaseOf(text)) {
        std::uint64_t number = 0;
        std::from_chars(text.data() + 2, text.data() + text.size(), number, base);
        return static_cast<double>(number);
    }
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    // Words for infinity and the like are no numbers here.
    const std::size_t digit = text.find_first_not_of("-.");
    if (digit == std::string_view::npos || text[digit] < '0' || text[digit] > '9') return 0;
    double number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec == std::errc::result_out_of_range) {
        // Too large or too small to hold: what the exponent's sign says.
        const std::string_view used(text.data(), static_cast<std::size_t>(read.ptr - text.data()));
        const bool tiny = used.find("e-") != used.npos || used.find("E-") != used.npos;
        number = tiny ? 0.0 : HUGE_VAL;
        if (text.front() == '-') number = -number;
    }
    return number;
}

}  // namespace host
