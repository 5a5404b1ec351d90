// Tokens: what stands here, what is expected, and what an error calls it.
#include "host/script/Parser.h"

#include <algorithm>

#include "host/calls/ForeignText.h"
#include "host/objects/Type.h"
#include "host/script/ConditionalLines.h"
#include "host/script/Parse.h"

namespace script {

namespace {

// Words that can't name a variable, a routine or a class. After a dot they may name a member.
constexpr std::string_view kReserved[] = {
    "and",   "as",       "byref",  "byval",  "call",     "case",   "catch",      "class",   "const",     "continue",
    "dim",   "do",       "downto", "each",   "else",     "elseif", "end",        "exit",    "false",     "finally",
    "for",   "function", "if",     "in",     "inherits", "is",     "isa",        "loop",    "me",        "mod",
    "new",   "next",     "nil",    "not",    "optional", "or",     "paramarray", "private", "protected", "public",
    "raise", "redim",    "return", "select", "self",     "shared", "static",     "step",    "sub",       "super",
    "then",  "to",       "true",   "try",    "until",    "var",    "wend",       "while",   "xor"};

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

}  // namespace

bool IsReserved(std::string_view word) {
    return std::any_of(std::begin(kReserved), std::end(kReserved),
                       [&](std::string_view reserved) { return host::SameName(reserved, word); });
}

namespace {

// What an erroneous token was to be.
Token Meant(const Token& error) {
    Token token = error;
    token.kind = host::IsIdentifier(error.meant)  ? TokenKind::Identifier
                 : error.meant == host::kSomeText ? TokenKind::String
                                                  : TokenKind::Operator;
    token.text = token.kind == TokenKind::String ? std::string() : std::string(error.meant);
    return token;
}

}  // namespace

Parser::Parser(const Source& source, Diagnostics& diagnostics) : diagnostics_(diagnostics) {
    for (Token& token : WithoutUnusedLines(host::Tokens(source.text), diagnostics)) {
        if (token.kind != TokenKind::Error) {
            tokens_.push_back(std::move(token));
            continue;
        }
        diagnostics_.Add({token.line, token.column}, host::Said::Again(token.text));
        if (!token.meant.empty()) tokens_.push_back(Meant(token));
    }
    CollectRoutineNames();
    SplitEnds();
}

const Token& Parser::Peek(std::size_t ahead) const { return tokens_[std::min(at_ + ahead, tokens_.size() - 1)]; }

Position Parser::Here() const { return {Peek().line, Peek().column}; }

bool Parser::AtWord(std::string_view word, std::size_t ahead) const {
    const Token& token = Peek(ahead);
    return token.kind == TokenKind::Identifier && host::SameName(token.text, word);
}

bool Parser::AtSymbol(std::string_view symbol, std::size_t ahead) const {
    const Token& token = Peek(ahead);
    return token.kind == TokenKind::Operator && token.text == symbol;
}

bool Parser::AtName(std::size_t ahead) const {
    return Peek(ahead).kind == TokenKind::Identifier && !IsReserved(Peek(ahead).text);
}

bool Parser::AtLineEnd(std::size_t ahead) const {
    return Peek(ahead).kind == TokenKind::NewLine || Peek(ahead).kind == TokenKind::End;
}

bool Parser::AtFileEnd() const { return Peek().kind == TokenKind::End; }

bool Parser::TakeWord(std::string_view word) {
    if (!AtWord(word)) return false;
    Advance();
    return true;
}

bool Parser::TakeSymbol(std::string_view symbol) {
    if (!AtSymbol(symbol)) return false;
    Advance();
    return true;
}

std::string Parser::Found() const {
    switch (Peek().kind) {
        case TokenKind::NewLine:
            return "the end of the line";
        case TokenKind::End:
            return "the end of the script";
        case TokenKind::String:
            return "a text";
        case TokenKind::Identifier:
            return Peek().text;
        default:
            return Quoted(Peek().text);
    }
}

void Parser::Fail(const host::Said& message) { FailAt(Here(), message); }

void Parser::FailAt(Position at, const host::Said& message) {
    diagnostics_.Add(at, message);
    throw ParseFailure();
}

void Parser::ExpectWord(std::string_view word, std::string_view after) {
    if (TakeWord(word)) return;
    std::string shown(word);
    shown[0] = static_cast<char>(shown[0] - 'a' + 'A');
    Fail(kParserSays.expectedAfter(shown, after, Found()));
}

void Parser::ExpectSymbol(std::string_view symbol, std::string_view after) {
    if (TakeSymbol(symbol)) return;
    Fail(kParserSays.expectedAfter(Quoted(symbol), after, Found()));
}

std::string Parser::ExpectName(std::string_view what) {
    if (Peek().kind == TokenKind::Identifier && IsReserved(Peek().text))
        Fail(kParserSays.reservedName(what, Peek().text));
    if (Peek().kind != TokenKind::Identifier) Fail(kParserSays.expected(what, Found()));
    std::string name = Peek().text;
    Advance();
    return name;
}

std::string Parser::ExpectMemberName() {
    if (Peek().kind != TokenKind::Identifier) Fail(kParserSays.expectedMember(Found()));
    std::string name = Peek().text;
    Advance();
    return name;
}

void Parser::ExpectLineEnd(std::string_view after) {
    if (AtFileEnd()) return;
    if (!AtLineEnd()) Fail(kParserSays.expectedLineEnd(after, Found()));
    Advance();
}

void Parser::SkipLine() {
    while (!AtLineEnd()) Advance();
    Advance();
}

std::unique_ptr<Program> Parse(const Source& source, Diagnostics& diagnostics) {
    auto program = std::make_unique<Program>();
    Parser(source, diagnostics).ParseProgram(*program);
    return program;
}

}  // namespace script
