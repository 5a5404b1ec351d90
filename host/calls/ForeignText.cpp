// What is said of typographic quotes and dashes and of other languages' signs.
#include "host/calls/ForeignText.h"

#include "host/messages/LexerMessages.h"

namespace host {

namespace {

// Signs that other languages have and this one has not, the longest first.
struct Foreign {
    std::string_view sign;
    std::string_view meant;  // empty: nothing takes its place
    std::string_view advice;
};
constexpr Foreign kForeignSigns[] = {
    {"===", "=", "two values are compared with ="},
    {"==", "=", "two values are compared with ="},
    {"!=", "<>", "two values that differ are told by <>"},
    {"=>", ">=", "at least is >="},
    {"+=", "=", "write the variable twice: x = x + 1"},
    {"-=", "=", "write the variable twice: x = x - 1"},
    {"*=", "=", "write the variable twice: x = x * 2"},
    {"/=", "=", "write the variable twice: x = x / 2"},
    {"\\=", "=", "write the variable twice: x = x \\ 2"},
    {"^=", "=", "write the variable twice: x = x ^ 2"},
    {"&=", "=", "write the variable twice: s = s + \"text\""},
    {"&&", "And", "two conditions are joined by And"},
    {"||", "Or", "two conditions are joined by Or"},
    {"|", "Or", "bits are joined by Or"},
    {"!", "Not", "a condition is negated by Not"},
    {"~", "Not", "bits are negated by Not"},
    {"%", "Mod", "the rest of a division is Mod"},
    {"&", "+", "texts are joined by +"},
    {";", "", "a statement ends with its line"},
    {"{", "", "a block ends with End, Next, Wend or Loop"},
    {"}", "", "a block ends with End, Next, Wend or Loop"},
    {"[", "(", "an index stands in round brackets: a(0)"},
    {"]", ")", "an index stands in round brackets: a(0)"},
};

// Characters that look like others and come from texts made for reading.
enum class Covers { Itself, Text, Line };
struct Typographic {
    std::string_view bytes;
    std::string_view name;
    std::string_view plain;
    std::string_view meant;
    Covers covers = Covers::Itself;  // what it would stand for: a sign, a text up to its partner, a comment
};
constexpr std::string_view kQuoteAdvice = "a text stands between straight ones (\")";
constexpr std::string_view kSpaceAdvice = "type a plain space";
constexpr std::string_view kMinusAdvice = "minus is the plain -";
constexpr Typographic kTypographic[] = {
    {"\u201C", "a curly quote", kQuoteAdvice, kSomeText, Covers::Text},
    {"\u201D", "a curly quote", kQuoteAdvice, kSomeText, Covers::Text},
    {"\u201E", "a curly quote", kQuoteAdvice, kSomeText, Covers::Text},
    {"\u00AB", "an angled quote", kQuoteAdvice, kSomeText, Covers::Text},
    {"\u00BB", "an angled quote", kQuoteAdvice, kSomeText, Covers::Text},
    {"\u2018", "a curly apostrophe", "a comment begins with a straight one (')", "", Covers::Line},
    {"\u2019", "a curly apostrophe", "a comment begins with a straight one (')", "", Covers::Line},
    {"\u00A0", "a no-break space (U+00A0)", kSpaceAdvice, ""},
    {"\u202F", "a narrow no-break space (U+202F)", kSpaceAdvice, ""},
    {"\u2003", "an em space (U+2003)", kSpaceAdvice, ""},
    {"\u2009", "a thin space (U+2009)", kSpaceAdvice, ""},
    {"\u200B", "a zero-width space (U+200B)", "delete it", ""},
    {"\u3000", "an ideographic space (U+3000)", kSpaceAdvice, ""},
    {"\u2013", "a dash", kMinusAdvice, "-"},
    {"\u2014", "a dash", kMinusAdvice, "-"},
    {"\u2212", "a minus sign (U+2212)", kMinusAdvice, "-"},
    {"\u00D7", "a multiplication sign", "multiply with *", "*"},
    {"\u00F7", "a division sign", "divide with /", "/"},
    {"\u2260", "an unequal sign", "two values that differ are told by <>", "<>"},
    {"\u2264", "a sign of at most", "at most is <=", "<="},
    {"\u2265", "a sign of at least", "at least is >=", ">="},
};

const Typographic* TypographicAt(std::string_view text) {
    if (text.empty() || static_cast<unsigned char>(text.front()) < 0x80) return nullptr;
    for (const Typographic& row : kTypographic)
        if (text.starts_with(row.bytes)) return &row;
    return nullptr;
}

// Bytes from a typographic character to the end of what it was to begin.
std::size_t Covered(const Typographic& row, std::string_view rest) {
    if (row.covers == Covers::Itself) return row.bytes.size();
    std::size_t at = row.bytes.size();
    for (; at < rest.size() && rest[at] != '\r' && rest[at] != '\n'; ++at) {
        if (row.covers == Covers::Line) continue;
        if (rest[at] == '"') return at + 1;
        const Typographic* closing = TypographicAt(rest.substr(at));
        if (closing && closing->covers == Covers::Text) return at + closing->bytes.size();
    }
    return at;
}

ForeignText Told(const Typographic& row, std::string_view rest) {
    return {Covered(row, rest), kLexerSays.typographic(row.name, row.plain), row.meant};
}

ForeignText Told(const Foreign& row) {
    return {row.sign.size(), kLexerSays.foreignSign(row.sign, row.advice), row.meant};
}

}  // namespace

bool IsTypographic(std::string_view rest) { return TypographicAt(rest) != nullptr; }

std::optional<ForeignText> ForeignTextAt(std::string_view rest) {
    if (const Typographic* row = TypographicAt(rest)) return Told(*row, rest);
    for (const Foreign& row : kForeignSigns)
        if (rest.starts_with(row.sign)) return Told(row);
    return {};
}

}  // namespace host
