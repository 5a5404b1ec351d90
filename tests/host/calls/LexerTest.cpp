// Words of the language, and the places of what is none.
#include <gtest/gtest.h>

#include <cmath>

#include "host/calls/Lexer.h"

namespace {

using host::Token;
using host::TokenKind;
using host::Tokens;

// The tokens as one text: kinds by a letter, then what they hold.
std::string Listed(std::string_view source) {
    std::string text;
    for (const Token& token : Tokens(source)) {
        if (!text.empty()) text += ' ';
        switch (token.kind) {
            case TokenKind::Identifier:
                text += token.text;
                break;
            case TokenKind::Integer:
                text += "i" + std::to_string(token.number);
                break;
            case TokenKind::Double:
                text += "d" + token.text;
                break;
            case TokenKind::Color:
                text += "c" + std::to_string(token.number);
                break;
            case TokenKind::String:
                text += "'" + token.text + "'";
                break;
            case TokenKind::Directive:
            case TokenKind::Operator:
                text += token.text;
                break;
            case TokenKind::NewLine:
                text += "|";
                break;
            case TokenKind::End:
                text += ".";
                break;
            case TokenKind::Error:
                text += "!" + token.text;
                break;
        }
    }
    return text;
}

TEST(Lexer, SplitsAStatement) {
    EXPECT_EQ(Listed("p.Row(i+1) = q.Row( 2 )\n"), "p . Row ( i + i1 ) = q . Row ( i2 ) | .");
}

TEST(Lexer, KnowsEveryOperator) {
    EXPECT_EQ(Listed("+-*/\\^ = <> < <= > >= ( ) , . :"), "+ - * / \\ ^ = <> < <= > >= ( ) , . : .");
    EXPECT_EQ(Listed("a<>-1"), "a <> - i1 .");
    EXPECT_EQ(Listed("a=<b"), "a = < b .");
}

TEST(Lexer, FindsWordsInAnyCase) {
    const Token token = Tokens("EndIf")[0];
    EXPECT_TRUE(token.Is("endif"));
    EXPECT_TRUE(token.Is("ENDIF"));
    EXPECT_FALSE(token.Is("end"));
    EXPECT_FALSE(Tokens("\"endif\"")[0].Is("endif")) << "a string is no word";
}

TEST(Lexer, LetsNamesHaveLettersOfAnyScript) {
    EXPECT_EQ(Listed("größe1 _under x_y"), "größe1 _under x_y .");
    EXPECT_TRUE(host::IsIdentifier("größe1"));
    EXPECT_FALSE(host::IsIdentifier("1a"));
    EXPECT_FALSE(host::IsIdentifier("a b"));
    EXPECT_FALSE(host::IsIdentifier(""));
}

// --- Numbers ---------------------------------------------------------------------------------

TEST(Lexer, ReadsWholeNumbersInEveryBase) {
    EXPECT_EQ(Listed("0 42 &hFF &HfF &b101 &o17"), "i0 i42 i255 i255 i5 i15 .");
    EXPECT_EQ(Tokens("9223372036854775807")[0].number, INT64_MAX);
    EXPECT_EQ(Tokens("&hFFFFFFFFFFFFFFFF")[0].number, -1);
}

TEST(Lexer, ReadsDoubles) {
    EXPECT_EQ(Listed("1.5 .25 1e3 1.5E-7 2e+10"), "d1.5 d.25 d1e3 d1.5E-7 d2e+10 .");
    EXPECT_EQ(Tokens(".25")[0].real, 0.25);
    EXPECT_EQ(Tokens("1.5E-7")[0].real, 1.5e-7);
    EXPECT_EQ(Tokens("1e999")[0].real, HUGE_VAL);
    EXPECT_EQ(Tokens("1e-999")[0].real, 0.0);
}

TEST(Lexer, TakesLargeDecimalNumbersForDoubles) {
    const Token token = Tokens("9223372036854775808")[0];
    EXPECT_EQ(token.kind, TokenKind::Double);
    EXPECT_EQ(token.real, 9223372036854775808.0);
}

TEST(Lexer, KeepsADotThatBelongsToAMemberApart) {
    EXPECT_EQ(Listed("5.Method"), "i5 . Method .");
    EXPECT_EQ(Listed("1.5.2"), "d1.5 d.2 .");
}

TEST(Lexer, ReadsColours) {
    EXPECT_EQ(Listed("&cFF8000 &Cff8000"), "c16744448 c16744448 .");
    EXPECT_EQ(Listed("&cFF80"), "!a colour is &c and six hexadecimal digits, not \"&cFF80\" .");
    EXPECT_EQ(Listed("&cFF80GG"), "!\"&cFF80GG\" is no number in base 16 .");
}

TEST(Lexer, RefusesNumbersThatAreNone) {
    EXPECT_EQ(Listed("12ab"), "!\"12ab\" is neither a number nor a name .");
    EXPECT_EQ(Listed("&hXY"), "!\"&hXY\" is no number in base 16 .");
    EXPECT_EQ(Listed("&b12"), "!\"&b12\" is no number in base 2 .");
    EXPECT_EQ(Listed("&h"), "!\"&h\" is no number in base 16 .");
    EXPECT_EQ(Listed("&q1"), "!\"&q1\" is no number: &h, &b, &o or &c was expected .");
    EXPECT_EQ(Listed("&"), "!\"&\" is not part of this language; texts are joined by + .");
    EXPECT_EQ(Listed("&h1FFFFFFFFFFFFFFFF"), "!\"&h1FFFFFFFFFFFFFFFF\" is above 64 bits .");
}

// --- Strings ---------------------------------------------------------------------------------

TEST(Lexer, ReadsStrings) {
    EXPECT_EQ(Listed("\"plain\" \"\" \"say \"\"hi\"\"\" \"ü ' // Rem\""), "'plain' '' 'say \"hi\"' 'ü ' // Rem' .");
}

TEST(Lexer, RefusesAStringWithoutAnEnd) {
    EXPECT_EQ(Listed("a \"open\nb"), "a !this string has no closing quote | b .");
    EXPECT_EQ(Listed("\"open"), "!this string has no closing quote .");
    EXPECT_EQ(Listed("\"ends in a quote\"\""), "!this string has no closing quote .");
}

// --- Lines -----------------------------------------------------------------------------------

TEST(Lexer, SkipsComments) {
    EXPECT_EQ(Listed("a // one\nb ' two\nc Rem three\nrem four\nd"), "a | b | c | d .");
    EXPECT_EQ(Listed("remark"), "remark .");
    EXPECT_EQ(Listed("x.Rem"), "x . Rem .");
    EXPECT_EQ(Listed("// only"), ".");
}

TEST(Lexer, JoinsContinuedLines) {
    EXPECT_EQ(Listed("a + _\n b"), "a + b .");
    EXPECT_EQ(Listed("a + _ ' why\n b"), "a + b .");
    EXPECT_EQ(Listed("a + _  \r\n\t_\n b"), "a + b .");
    EXPECT_EQ(Listed("a _ b"), "a _ b .");
}

TEST(Lexer, MakesOneTokenOfSeveralLineEnds) {
    EXPECT_EQ(Listed("a\r\n\r\n\n  ' c\n\rb"), "a | b .");
    EXPECT_EQ(Listed("\n\na"), "| a .");
}

TEST(Lexer, StatesPlacesInCharacters) {
    const auto tokens = Tokens("ä = \"öü\" + b\n  c _\n  + d");
    const auto place = [&](std::size_t i) { return std::pair(tokens[i].line, tokens[i].column); };
    EXPECT_EQ(place(0), std::pair(1, 1));
    EXPECT_EQ(place(1), std::pair(1, 3));
    EXPECT_EQ(place(2), std::pair(1, 5));
    EXPECT_EQ(place(3), std::pair(1, 10));
    EXPECT_EQ(place(6), std::pair(2, 3));
    EXPECT_EQ(place(7), std::pair(3, 3));
    EXPECT_EQ(tokens[2].start, 5U);
    EXPECT_EQ(tokens[2].length, 6U);
}

TEST(Lexer, TellsWhetherABlankComesBefore) {
    const auto tokens = Tokens("f (x)");
    EXPECT_FALSE(tokens[0].afterSpace);
    EXPECT_TRUE(tokens[1].afterSpace);
    EXPECT_FALSE(tokens[2].afterSpace);
}

TEST(Lexer, SkipsAByteOrderMark) {
    EXPECT_EQ(Listed("\xEF\xBB\xBF"
                     "a"),
              "a .");
}

TEST(Lexer, GoesOnAfterAnError) {
    EXPECT_EQ(Listed("a # b"), "a !\"#\" has no meaning here b .");
    EXPECT_EQ(Listed(std::string_view("a\x01z", 3)), "a !the byte &h01 has no meaning here z .");
    EXPECT_EQ(Listed(std::string_view("a\0z", 3)), "a !the byte &h00 has no meaning here z .");
}

// What an error says that there should be.
std::string MeantBy(std::string_view source) {
    std::string text;
    for (const Token& token : Tokens(source))
        if (token.kind == TokenKind::Error) text += (text.empty() ? "" : " ") + std::string(token.meant);
    return text;
}

TEST(Lexer, KnowsWhatSignsOfOtherLanguagesMean) {
    EXPECT_EQ(MeantBy("a == b != c && d || e"), "= <> And Or");
    EXPECT_EQ(MeantBy("a += 1"), "=");
    EXPECT_EQ(MeantBy("a -= b *= c /= d"), "= = =");
    EXPECT_EQ(MeantBy("a & b"), "+");
    EXPECT_EQ(MeantBy("a >= b <= c <> d = -1"), "");
    EXPECT_EQ(Listed("a=-1"), "a = - i1 .");
}

TEST(Lexer, TellsTypographicCharacters) {
    EXPECT_EQ(Listed("a\u00A0b"), "a !this is a no-break space (U+00A0); type a plain space b .");
    EXPECT_EQ(MeantBy("\u201Ca b\u201D"), "\"\"") << "one error for the whole text";
    EXPECT_EQ(Tokens("\u2019 a comment\nb").size(), 4U);
    EXPECT_EQ(Listed("\"a\u201Cb\""), "'a\u201Cb' .") << "a text may hold anything";
    EXPECT_EQ(Listed("' a\u201Cb"), ".");
}

TEST(Lexer, NamesDirectives) { EXPECT_EQ(Listed("#If x Then\na\n#EndIf"), "#if x Then | a | #endif ."); }

TEST(Lexer, SkipsTheNameOfAProgramInTheFirstLine) { EXPECT_EQ(Listed("#!/usr/bin/env tqx run\na"), "| a ."); }

TEST(Lexer, EndsForEver) {
    host::Lexer lexer("a");
    lexer.Next();
    EXPECT_EQ(lexer.Next().kind, TokenKind::End);
    EXPECT_EQ(lexer.Next().kind, TokenKind::End);
}

// Any bytes at all: every token lies behind the one before, and the end comes.
TEST(Lexer, SurvivesAnyBytes) {
    std::uint32_t state = 12345;
    for (int round = 0; round < 2000; ++round) {
        std::string source;
        for (int i = 0; i < 40; ++i) {
            state = state * 1664525 + 1013904223;
            constexpr std::string_view likely = "ab1.&hc\"'_ \n\r/\\<>=()e+-#\xC3\xA4\xFF";
            source += (state >> 24) < 230 ? likely[(state >> 8) % likely.size()] : static_cast<char>(state >> 16);
        }
        std::size_t end = 0;
        for (const Token& token : Tokens(source)) {
            ASSERT_GE(token.start, end);
            end = token.start + token.length;
            ASSERT_LE(end, source.size());
        }
    }
}

}  // namespace
