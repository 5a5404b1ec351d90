// The words of the script language. One lexer reads scripts and the declarations of plug-ins.
//
// Identifiers and keywords are the same kind of token: which words are keywords is the parser's
// business, asked with Token::Is without regard to case. Comments (//, ', Rem, #pragma) and lines
// continued with _ are skipped; ends of lines are tokens, several in a row are one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/messages/Message.h"

namespace host {

enum class TokenKind {
    Identifier,
    Integer,    // number holds it; decimal, &h, &b, &o
    Double,     // real holds it
    Color,      // &cRRGGBB; number holds it
    String,     // text holds the characters between the quotes, "" made one quote
    Directive,  // "#if" and the like, in lower case
    Operator,   // one of + - * / \ ^ = <> < <= > >= ( ) , . :
    NewLine,
    End,
    Error  // text holds a message, meant what was probably meant
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::string text;         // as written, but for String and Error
    std::string_view meant;   // of an Error: what to go on with, a word, an operator or ""; empty: nothing
    std::int64_t number = 0;  // of a Double the bits, where it is written as a whole number below 2^64
    double real = 0;
    std::int32_t line = 1;    // from 1
    std::int32_t column = 1;  // from 1, in characters
    std::size_t start = 0;    // byte position in the source
    std::size_t length = 0;   // bytes in the source
    bool afterSpace = false;  // something blank stands before it

    // Whether it is this operator, or this word in any case.
    bool Is(std::string_view word) const;
};

// The base of a number by the letter behind its "&": 16 for h, 8 for o, 2 for b, in any case; 0 for
// others.
int BaseOfLetter(char letter);

// Signs of other languages and typographic characters are told by what would be right.
//
// A whole-number literal may reach 2^64 - 1 in &h, &b and &o form and 2^63 - 1 in decimal form;
// larger decimal ones are doubles.
class Lexer {
  public:
    explicit Lexer(std::string_view source);  // the source outlives the lexer

    // The next token; End for ever after the last one. After an Error reading goes on.
    Token Next();

  private:
    char Peek(std::size_t ahead = 0) const;
    void Advance(std::size_t bytes);
    bool SkipBlanks();
    bool SkipContinuation();
    bool AtComment() const;
    void SkipToLineEnd();
    void SkipLineEnd();
    Token NewLines();
    Token Word();
    Token Number();
    Token BasedNumber();
    Token Text();
    Token Sign();
    Token ForeignSign();
    Token Directive();
    Token Finish(TokenKind kind, std::size_t bytes);
    Token Fail(const Said& message, std::size_t bytes, std::string_view meant = {});

    std::string_view source_;
    std::size_t at_ = 0;
    std::int32_t line_ = 1;
    std::int32_t column_ = 1;
    bool afterDot_ = false;
};

// Every token of a source, with the End as the last.
std::vector<Token> Tokens(std::string_view source);

// Whether text could be one identifier.
bool IsIdentifier(std::string_view text);

}  // namespace host
