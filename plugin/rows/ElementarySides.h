// On which side of a number an elementary function's true value lies, by fixed-point arithmetic.
//
// Magnitudes are compared, and only with numbers about as large as the true value. Each costs some
// 10 microseconds.
#pragma once

#include <cstdint>

namespace rows {

// mantissa × 2^exponent. The mantissa is not 0 and has no more than 54 bits.
struct Dyadic {
    std::uint64_t mantissa;
    int exponent;
};

// Of a finite double that is not 0: its magnitude.
Dyadic DyadicOf(double value);

// Above 0 where the true magnitude is larger than `number`, below 0 where it is smaller, 0 where
// the difference is below 2^-192. That means equal: an exact power. Nothing else is that near, as
// the values of n arguments can be expected to come within 1 / n of half a unit, and there are no
// more than 2^64 of one double and 2^128 of two (compare Lefèvre and Muller, Worst Cases for
// Correct Rounding of the Elementary Functions in Double Precision, 2001).
int SideOfSin(double angle, const Dyadic& number);  // 2^-27 < |angle| <= kLargestAngle
int SideOfCos(double angle, const Dyadic& number);
int SideOfTan(double angle, const Dyadic& number);
int SideOfLog(double x, const Dyadic& number);            // x above 0, not 1
int SideOfPow(double x, double y, const Dyadic& number);  // x above 0, not 1; 2^-55 < |y log x| < 750

}  // namespace rows
