// Numbers as text and back.
#pragma once

#include <string>
#include <string_view>

namespace host {

// A whole number without a fraction; any other as the shortest text that reads back the same,
// with an exponent where that is shorter. Not-a-number is "nan", infinity "inf".
std::string NumberText(double value);
std::string NumberText(float value);

// The number that a text begins with, blanks before it skipped: decimal with an optional fraction
// and exponent, or &h, &o, &b with digits of that base. 0 when it begins with none.
double NumberIn(std::string_view text);

// A number by a pattern of these characters:
//   0 #     a digit; # is left out where it would be a leading or trailing zero
//   .       the decimal point
//   ,       groups of three digits are set apart
//   %       the number times 100, and the sign
//   + -     the sign, in front of or behind the digits: + always, - for negative numbers
//   e e+ e- an exponent; e+ shows its sign always
//   \x      the character x as it is
// Anything else stands as it is. Up to three patterns may be given, parted by semicolons: for
// positive and negative numbers and for zero. Without a sign in the pattern, and without one of
// their own, negative numbers begin with "-". Fractions are rounded, halves to even as the number
// is held. An empty pattern gives NumberText.
std::string FormatNumber(double value, std::string_view pattern);

}  // namespace host
