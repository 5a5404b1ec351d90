// What is wrong with the signs of a script or a declaration.
#pragma once

#include "host/messages/Message.h"

namespace host {

// clang-format off
struct LexerMessages {
    Message neitherNumberNorName = {"\"…\" is neither a number nor a name", "a name begins with a letter, a number has no letters", "put a space or an operator between, or rename it"};
    Message noBase = {"\"…\" is no number: &h, &b, &o or &c was expected", "after & stands the letter of a base", "&hFF is 255, &b101 is 5, &o17 is 15, &cFF0000 is red"};
    Message noColor = {"a colour is &c and six hexadecimal digits, not \"…\"", "two digits each for red, green and blue", "fill it up with zeros: &c0000FF"};
    Message above64Bits = {"\"…\" is above 64 bits", "no kind of number holds it", "write it as a Double, with a point"};
    Message noNumberInBase = {"\"…\" is no number in base …", "a digit is too large for the base, or there is none", "look at the digits behind the letter"};
    Message unclosedText = {"this string has no closing quote…", "a text ends on the line that it begins on", "close it by a straight quote; two in a row are one in the text"};
    Message noMeaning = {"\"…\" has no meaning here", "the language has no such sign", "delete it, or put it into a text"};
    Message noMeaningOfByte = {"the byte &h… has no meaning here", "a byte that is no sign, mostly of another encoding than UTF-8", "save the script as UTF-8"};
    Message foreignSign = {"\"…\" is not part of this language; …", "an operator or bracket of another language", "what stands behind it is the own one"};
    Message typographic = {"this is …; …", "a sign that looks like another one, mostly from a word processor", "what stands behind it is the plain one"};
};
// clang-format on

inline constexpr LexerMessages kLexerSays;

}  // namespace host
