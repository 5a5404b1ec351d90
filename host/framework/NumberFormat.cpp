// Numbers by a pattern: the pattern is read into a record, the digits are made, and both meet.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <vector>

#include "host/framework/NumberText.h"

namespace host {

namespace {

// More digits than this are no use of any double's fraction.
constexpr int kMostFraction = 340;

struct Pattern {
    std::string before, after;  // what stands around the digits
    int wholeZeros = 0;         // digits in front of the point that are always shown
    int fractionZeros = 0;      // behind the point, always shown
    int fractionDigits = 0;     // behind the point, at most
    int exponentZeros = 0;
    bool hasDigits = false;
    bool hasPoint = false;
    bool grouped = false;
    bool percent = false;
    bool exponent = false;
    bool exponentPlus = false;
    bool signShown = false;  // the pattern says where the sign goes
};

class PatternReader {
  public:
    PatternReader(std::string_view text, bool negative) : text_(text), negative_(negative) {}

    Pattern Read() {
        for (; at_ < text_.size(); ++at_) ReadCharacter(text_[at_]);
        return pattern_;
    }

  private:
    void ReadCharacter(char c) {
        if (c == '0' || c == '#') return ReadDigit(c == '0');
        if (c == '.' && !pattern_.hasPoint) {
            pattern_.hasPoint = pattern_.hasDigits = true;
        } else if (c == ',') {
            pattern_.grouped = true;
        } else if (c == '%') {
            pattern_.percent = true;
            Literal('%');
        } else if (c == '+' || c == '-') {
            pattern_.signShown = true;
            if (negative_)
                Literal('-');
            else if (c == '+')
                Literal('+');
        } else if ((c == 'e' || c == 'E') && pattern_.hasDigits && !pattern_.exponent) {
            ReadExponent();
        } else {
            if (c == '\\' && at_ + 1 < text_.size()) c = text_[++at_];
            Literal(c);
        }
    }

    void ReadDigit(bool always) {
        pattern_.hasDigits = true;
        if (!pattern_.hasPoint) {
            if (always || pattern_.wholeZeros > 0) ++pattern_.wholeZeros;
        } else if (pattern_.fractionDigits < kMostFraction) {
            ++pattern_.fractionDigits;
            if (always) pattern_.fractionZeros = pattern_.fractionDigits;
        }
    }

    void ReadExponent() {
        pattern_.exponent = true;
        const auto next = [this] { return at_ + 1 < text_.size() ? text_[at_ + 1] : '\0'; };
        if (next() == '+' || next() == '-') pattern_.exponentPlus = text_[++at_] == '+';
        for (; next() == '0' || next() == '#'; ++at_)
            if (next() == '0') ++pattern_.exponentZeros;
    }

    void Literal(char c) { (pattern_.hasDigits ? pattern_.after : pattern_.before) += c; }

    std::string_view text_;
    bool negative_;
    std::size_t at_ = 0;
    Pattern pattern_;
};

// The patterns between semicolons that no backslash protects.
std::vector<std::string_view> Sections(std::string_view pattern) {
    std::vector<std::string_view> sections;
    std::size_t start = 0;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
        if (pattern[at] == '\\')
            ++at;
        else if (pattern[at] == ';')
            sections.push_back(pattern.substr(start, at - start)), start = at + 1;
    }
    sections.push_back(pattern.substr(start));
    return sections;
}

// More than the largest double takes in any form.
constexpr std::size_t kMostCharacters = 800;

std::string RoundedToEven(double value, std::chars_format form, int digits) {
    char text[kMostCharacters];
    return {text, std::to_chars(text, text + sizeof text, value, form, digits).ptr};
}

// Whether the value ends in a 5 behind the digits. Its neighbours differ from such a one in the first
// 18 digits that follow.
bool IsHalfway(double value, std::chars_format form, int digits) {
    constexpr int kMore = 20;
    const std::string text = RoundedToEven(value, form, digits + kMore);
    const std::string mantissa = text.substr(0, text.find('e'));
    return mantissa.ends_with("5" + std::string(kMore - 1, '0'));
}

// Half-way values go away from zero, as Round takes them. `value` is not negative.
std::string Rounded(double value, std::chars_format form, int digits) {
    const bool up = IsHalfway(value, form, digits);
    return RoundedToEven(up ? std::nextafter(value, HUGE_VAL) : value, form, digits);
}

std::string Grouped(std::string whole) {
    for (auto at = static_cast<std::ptrdiff_t>(whole.size()) - 3; at > 0; at -= 3)
        whole.insert(static_cast<std::size_t>(at), ",");
    return whole;
}

// Digits with an optional point, with the zeros and groups that the pattern wants.
std::string Arranged(const std::string& digits, const Pattern& pattern) {
    const std::size_t point = digits.find('.');
    std::string whole = digits.substr(0, point);
    std::string fraction = point == digits.npos ? "" : digits.substr(point + 1);
    while (static_cast<int>(fraction.size()) > pattern.fractionZeros && fraction.back() == '0') fraction.pop_back();
    if (whole == "0" && pattern.wholeZeros == 0) whole.clear();
    if (static_cast<int>(whole.size()) < pattern.wholeZeros)
        whole.insert(0, static_cast<std::size_t>(pattern.wholeZeros) - whole.size(), '0');
    if (pattern.grouped) whole = Grouped(whole);
    return pattern.hasPoint ? whole + "." + fraction : whole;
}

// The digits of a number that is not negative.
std::string Digits(double value, const Pattern& pattern) {
    if (!pattern.exponent) return Arranged(Rounded(value, std::chars_format::fixed, pattern.fractionDigits), pattern);
    // One digit in front of the point; then "e", a sign and at least two digits.
    const std::string text = Rounded(value, std::chars_format::scientific, pattern.fractionDigits);
    const std::size_t e = text.find('e');
    const bool negative = text[e + 1] == '-';
    std::string exponent = text.substr(std::min(text.find_first_not_of('0', e + 2), text.size() - 1));
    if (static_cast<int>(exponent.size()) < pattern.exponentZeros)
        exponent.insert(0, static_cast<std::size_t>(pattern.exponentZeros) - exponent.size(), '0');
    return Arranged(text.substr(0, e), pattern) + "e" + (negative ? "-" : pattern.exponentPlus ? "+" : "") + exponent;
}

}  // namespace

std::string FormatNumber(double value, std::string_view pattern) {
    if (pattern.empty() || !std::isfinite(value)) return NumberText(value);
    const std::vector<std::string_view> sections = Sections(pattern);
    std::string_view text = sections[0];
    bool ownSign = false;
    if (value < 0 && sections.size() > 1) text = sections[1], ownSign = true;
    if (value == 0 && sections.size() > 2) text = sections[2];
    const Pattern read = PatternReader(text, value < 0).Read();
    double magnitude = std::fabs(value) * (read.percent ? 100 : 1);
    std::string digits;
    if (read.hasDigits) digits = Digits(magnitude, read);
    const bool needsSign = value < 0 && !ownSign && !read.signShown && digits.find_first_of("123456789") != digits.npos;
    return (needsSign ? "-" : "") + read.before + digits + read.after;
}

}  // namespace host
