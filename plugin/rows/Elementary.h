// Sine, cosine, tangent, logarithm and power, each the correctly rounded double of the true value.
//
// The C library chooses its own by processor, and they differ in the last bit: enough to change a
// pixel. These are the same everywhere, and there is nothing nearer to the truth. An estimate to
// about 65 bits decides nearly always (Ziv, Fast Evaluation of Elementary Mathematical Functions
// with Correctly Rounded Last Bit, 1991); where it lies too close to half-way between two doubles,
// whole numbers of 320 bits do. That is once in some thousand calls and takes about 10
// microseconds, an estimate some 50 nanoseconds.
//
// Round to nearest must be in force. None sets errno, none raises flags on purpose.
#pragma once

namespace rows {

// Angles are in radians, of a magnitude up to 1024: beyond, and for what is not finite, the result
// is not a number. The sine and tangent of a zero are that zero.
double Sin(double angle);
double Cos(double angle);
double Tan(double angle);

// The natural logarithm: negative infinity of zeroes, not a number below them.
double Log(double x);

// x to the power of y, with the special cases of the C standard: 1 for y = 0 and for x = 1 whatever
// the other is, signed zeros and infinities for odd whole y, not a number for a negative x and a y
// that is not whole.
double Pow(double x, double y);

}  // namespace rows
