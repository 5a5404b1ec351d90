// Cuts text into words: numbers, texts, signs, ends of lines.
#include "host/calls/Lexer.h"

#include <charconv>
#include <cstdio>

#include "host/calls/ForeignText.h"
#include "host/messages/LexerMessages.h"
#include "host/objects/Type.h"

namespace host {

namespace {

// No text at the start and a blank between words; no name begins with it.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Bytes of a character beyond ASCII count as letters, so names may be written in any script.
bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

bool IsWordCharacter(char c) { return IsLetter(c) || IsDigit(c); }

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }

bool StartsCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

}  // namespace

int BaseOfLetter(char letter) {
    switch (sdk::declare::Lower(letter)) {
        case 'h':
            return 16;
        case 'o':
            return 8;
        case 'b':
            return 2;
        default:
            return 0;
    }
}

bool Token::Is(std::string_view word) const {
    return (kind == TokenKind::Identifier || kind == TokenKind::Operator) && SameName(text, word);
}

bool IsIdentifier(std::string_view text) {
    if (text.empty() || !IsLetter(text.front())) return false;
    for (const char c : text)
        if (!IsWordCharacter(c)) return false;
    return true;
}

Lexer::Lexer(std::string_view source) : source_(source) {
    while (source_.starts_with(kByteOrderMark)) source_.remove_prefix(kByteOrderMark.size());
}

char Lexer::Peek(std::size_t ahead) const { return at_ + ahead < source_.size() ? source_[at_ + ahead] : '\0'; }

void Lexer::Advance(std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
        if (StartsCharacter(source_[at_ + i])) ++column_;
    at_ += bytes;
}

void Lexer::SkipLineEnd() {
    at_ += Peek() == '\r' && Peek(1) == '\n' ? 2 : 1;
    ++line_;
    column_ = 1;
}

void Lexer::SkipToLineEnd() {
    while (at_ < source_.size() && !IsLineEnd(Peek())) Advance(1);
}

bool Lexer::AtComment() const {
    if (Peek() == '\'' || (Peek() == '/' && Peek(1) == '/')) return true;
    // The program that is to run a script, named in its first line.
    if (at_ == 0 && source_.starts_with("#!")) return true;
    // Advice to a compiler that would need it.
    if (Peek() == '#' && SameName(source_.substr(at_ + 1, 6), "pragma") && !IsWordCharacter(Peek(7))) return true;
    return !afterDot_ && SameName(source_.substr(at_, 3), "rem") && !IsWordCharacter(Peek(3));
}

// A lone _ at the end of a line, perhaps with a comment behind it, joins the next line.
bool Lexer::SkipContinuation() {
    if (Peek() != '_' || IsWordCharacter(Peek(1))) return false;
    Lexer ahead = *this;
    ahead.Advance(1);
    while (IsBlank(ahead.Peek())) ahead.Advance(1);
    if (ahead.at_ < source_.size() && ahead.AtComment()) ahead.SkipToLineEnd();
    if (!IsLineEnd(ahead.Peek())) return false;
    ahead.SkipLineEnd();
    *this = ahead;
    return true;
}

bool Lexer::SkipBlanks() {
    const std::size_t start = at_;
    for (;;) {
        if (IsBlank(Peek()))
            Advance(1);
        else if (source_.substr(at_).starts_with(kByteOrderMark))
            Advance(kByteOrderMark.size());
        else if (!SkipContinuation())
            break;
    }
    if (at_ < source_.size() && AtComment()) SkipToLineEnd();
    return at_ > start;
}

Token Lexer::Finish(TokenKind kind, std::size_t bytes) {
    Token token;
    token.kind = kind;
    token.text = source_.substr(at_, bytes);
    token.line = line_;
    token.column = column_;
    token.start = at_;
    token.length = bytes;
    Advance(bytes);
    return token;
}

Token Lexer::Fail(const Said& message, std::size_t bytes, std::string_view meant) {
    Token token = Finish(TokenKind::Error, bytes);
    token.text = message.text();
    token.meant = meant;
    return token;
}

Token Lexer::NewLines() {
    Token token = Finish(TokenKind::NewLine, 0);
    while (at_ < source_.size() && IsLineEnd(Peek())) {
        SkipLineEnd();
        SkipBlanks();
    }
    token.length = at_ - token.start;
    return token;
}

Token Lexer::Word() {
    std::size_t bytes = 0;
    while (IsWordCharacter(Peek(bytes)) && !IsTypographic(source_.substr(at_ + bytes))) ++bytes;
    return Finish(TokenKind::Identifier, bytes);
}

Token Lexer::Number() {
    std::size_t bytes = 0;
    bool whole = true;
    while (IsDigit(Peek(bytes))) ++bytes;
    if (Peek(bytes) == '.' && IsDigit(Peek(bytes + 1))) {
        whole = false;
        ++bytes;
        while (IsDigit(Peek(bytes))) ++bytes;
    }
    if (Peek(bytes) == 'e' || Peek(bytes) == 'E') {
        const std::size_t sign = Peek(bytes + 1) == '+' || Peek(bytes + 1) == '-' ? 1 : 0;
        if (IsDigit(Peek(bytes + 1 + sign))) {
            whole = false;
            bytes += 1 + sign;
            while (IsDigit(Peek(bytes))) ++bytes;
        }
    }
    if (IsWordCharacter(Peek(bytes))) {
        while (IsWordCharacter(Peek(bytes))) ++bytes;
        return Fail(kLexerSays.neitherNumberNorName(source_.substr(at_, bytes)), bytes);
    }
    Token token = Finish(whole ? TokenKind::Integer : TokenKind::Double, bytes);
    const char* last = token.text.data() + token.text.size();
    if (whole && std::from_chars(token.text.data(), last, token.number).ec == std::errc::result_out_of_range) {
        token.kind = TokenKind::Double;
        std::uint64_t wide = 0;
        if (std::from_chars(token.text.data(), last, wide).ec == std::errc())
            token.number = static_cast<std::int64_t>(wide);
    }
    if (std::from_chars(token.text.data(), last, token.real).ec == std::errc::result_out_of_range)
        token.real = std::strtod(token.text.c_str(), nullptr);
    return token;
}

Token Lexer::BasedNumber() {
    const bool color = sdk::declare::Lower(Peek(1)) == 'c';
    const int base = color ? 16 : BaseOfLetter(Peek(1));
    std::size_t bytes = 1;
    while (IsWordCharacter(Peek(bytes))) ++bytes;
    const std::string written(source_.substr(at_, bytes));
    if (base == 0) return Fail(kLexerSays.noBase(written), bytes);
    if (color && bytes != 8) return Fail(kLexerSays.noColor(written), bytes);
    std::uint64_t number = 0;
    const char* last = written.data() + written.size();
    const auto [end, error] = std::from_chars(written.data() + 2, last, number, base);
    if (error == std::errc::result_out_of_range) return Fail(kLexerSays.above64Bits(written), bytes);
    if (end != last || bytes == 2) return Fail(kLexerSays.noNumberInBase(written, base), bytes);
    Token token = Finish(color ? TokenKind::Color : TokenKind::Integer, bytes);
    token.number = static_cast<std::int64_t>(number);
    token.real = static_cast<double>(number);
    return token;
}

namespace {

// Why a text that begins here has no end on its line.
Said UnclosedText(std::string_view line) {
    const bool curly = line.find("\u201D") != std::string_view::npos || line.find("\u201C") != std::string_view::npos;
    return kLexerSays.unclosedText(curly ? "; a curly one does not close it" : "");
}

}  // namespace

Token Lexer::Text() {
    std::string text;
    std::size_t bytes = 1;
    for (;; ++bytes) {
        if (at_ + bytes >= source_.size() || IsLineEnd(Peek(bytes)))
            return Fail(UnclosedText(source_.substr(at_, bytes)), bytes, kSomeText);
        if (Peek(bytes) == '"' && Peek(++bytes) != '"') break;
        text += source_[at_ + bytes];
    }
    Token token = Finish(TokenKind::String, bytes);
    token.text = std::move(text);
    return token;
}

Token Lexer::Directive() {
    std::size_t bytes = 1;
    while (IsWordCharacter(Peek(bytes))) ++bytes;
    Token token = Finish(TokenKind::Directive, bytes);
    token.text = LowerName(token.text);
    return token;
}

Token Lexer::ForeignSign() {
    if (std::optional<ForeignText> foreign = ForeignTextAt(source_.substr(at_)))
        return Fail(foreign->message, foreign->bytes, foreign->meant);
    const auto byte = static_cast<unsigned char>(Peek());
    if (byte > 0x20 && byte < 0x7F) return Fail(kLexerSays.noMeaning(std::string(1, Peek())), 1);
    char digits[3];
    std::snprintf(digits, sizeof(digits), "%02X", byte);
    return Fail(kLexerSays.noMeaningOfByte(digits), 1);
}

Token Lexer::Sign() {
    const std::string_view two = source_.substr(at_, 2);
    if (two == "<>" || two == "<=" || two == ">=") return Finish(TokenKind::Operator, 2);
    constexpr std::string_view signs = "+-*/\\^=<>(),.:";
    const bool assigns = two.size() == 2 && two[1] == '=' && signs.substr(0, 7).find(two[0]) != std::string_view::npos;
    if (!assigns && two != "=>" && signs.find(Peek()) != std::string_view::npos) return Finish(TokenKind::Operator, 1);
    return ForeignSign();
}

Token Lexer::Next() {
    const bool blank = SkipBlanks();
    Token token;
    const char c = Peek();
    if (at_ >= source_.size())
        token = Finish(TokenKind::End, 0);
    else if (IsLineEnd(c))
        token = NewLines();
    else if (IsTypographic(source_.substr(at_)))
        token = ForeignSign();
    else if (IsLetter(c))
        token = Word();
    else if (IsDigit(c) || (c == '.' && IsDigit(Peek(1)) && !afterDot_))
        token = Number();
    else if (c == '&' && IsWordCharacter(Peek(1)))
        token = BasedNumber();
    else if (c == '#' && IsLetter(Peek(1)))
        token = Directive();
    else if (c == '"')
        token = Text();
    else
        token = Sign();
    token.afterSpace = blank;
    afterDot_ = token.Is(".");
    return token;
}

std::vector<Token> Tokens(std::string_view source) {
    Lexer lexer(source);
    std::vector<Token> tokens;
    do tokens.push_back(lexer.Next());
    while (tokens.back().kind != TokenKind::End);
    return tokens;
}

}  // namespace host
