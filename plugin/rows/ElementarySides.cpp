// Series in fixed point, as long as it takes to tell the side.
#include "plugin/rows/ElementarySides.h"

#include <bit>
#include <cmath>

#include "plugin/rows/FixedSeries.h"

namespace rows {

namespace {

constexpr int kMantissaBits = 53;

int SideOf(const FixedPoint& value, const FixedPoint& number) {
    constexpr int kCountingWords = 1 + 192 / FixedPoint::kWordBits;
    const bool above = value >= number;
    const FixedPoint difference = above ? Subtract(value, number) : Subtract(number, value);
    for (int i = 0; i < kCountingWords; ++i)
        if (difference.word[i] != 0) return above ? 1 : -1;
    return 0;
}

FixedPoint FixedPointOf(const Dyadic& number) { return Scaled(number.mantissa, number.exponent); }

// a × |number|, where what comes out is below 2^32 although the number may not be.
FixedPoint MultiplyBy(const FixedPoint& a, const Dyadic& number) {
    constexpr int kRoom = 64;
    return Shift(Multiply(a, Scaled(number.mantissa, -kRoom)), number.exponent + kRoom);
}

struct SineAndCosine {
    FixedPoint sine, cosine;  // magnitudes
};

SineAndCosine CircleAt(double angle) {
    const FixedPoint whole = FixedPointOf(DyadicOf(angle));
    auto quarters = static_cast<std::uint32_t>(std::abs(angle) / BitsOf(kHalfPi, 0, kMantissaBits));
    while (Multiply(kHalfPi, quarters) > whole) --quarters;
    while (Multiply(kHalfPi, quarters + 1) <= whole) ++quarters;
    const FixedPoint rest = Subtract(whole, Multiply(kHalfPi, quarters));
    const TimesNumber timesSquare{Multiply(rest, rest)};
    const FixedPoint sine = SineSeries(rest, timesSquare), cosine = CosineSeries(timesSquare);
    return quarters % 2 == 0 ? SineAndCosine{sine, cosine} : SineAndCosine{cosine, sine};
}

// |log number|: of its power of two, and of what is left between 1/√2 and √2.
FixedPoint MagnitudeOfLog(const Dyadic& number) {
    int bits = std::bit_width(number.mantissa);
    constexpr std::uint64_t kRootOfTwo = 0x5A82799A;  // × 2^30
    if (number.mantissa << (64 - bits) >> 33 < kRootOfTwo) --bits;
    const std::uint64_t one = std::uint64_t{1} << bits;
    const bool restIsBelowOne = number.mantissa < one;
    const FixedPoint ratio =
        Ratio(restIsBelowOne ? one - number.mantissa : number.mantissa - one, number.mantissa + one);
    const FixedPoint ofRest = Multiply(InverseTanhSeries(ratio, TimesNumber{Multiply(ratio, ratio)}), 2);
    const int power = number.exponent + bits;
    const FixedPoint ofPower = Multiply(kLog2, static_cast<std::uint32_t>(std::abs(power)));
    if (power == 0) return ofRest;
    return (power < 0) == restIsBelowOne ? Add(ofPower, ofRest) : Subtract(ofPower, ofRest);
}

}  // namespace

Dyadic DyadicOf(double value) {
    int exponent;
    const double fraction = std::frexp(std::abs(value), &exponent);
    return {static_cast<std::uint64_t>(std::ldexp(fraction, kMantissaBits)), exponent - kMantissaBits};
}

int SideOfSin(double angle, const Dyadic& number) { return SideOf(CircleAt(angle).sine, FixedPointOf(number)); }

int SideOfCos(double angle, const Dyadic& number) { return SideOf(CircleAt(angle).cosine, FixedPointOf(number)); }

// sin against number × cos.
int SideOfTan(double angle, const Dyadic& number) {
    const SineAndCosine circle = CircleAt(angle);
    return SideOf(circle.sine, MultiplyBy(circle.cosine, number));
}

int SideOfLog(double x, const Dyadic& number) { return SideOf(MagnitudeOfLog(DyadicOf(x)), FixedPointOf(number)); }

// |y log x| against |log number|; of powers below 1 the larger logarithm belongs to the smaller one.
int SideOfPow(double x, double y, const Dyadic& number) {
    const int side = SideOf(MultiplyBy(MagnitudeOfLog(DyadicOf(x)), DyadicOf(y)), MagnitudeOfLog(number));
    return (x < 1) == (y > 0) ? -side : side;
}

}  // namespace rows
