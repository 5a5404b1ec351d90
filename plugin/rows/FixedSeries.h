// Power series over fixed-point numbers, summed until their terms vanish, and the constants that
// come of them. Each loses less than 2^-280.
//
// A series is given its first power x and how a power becomes the next but one: times x².
#pragma once

#include "plugin/rows/FixedPoint.h"

namespace rows {

// x = numerator / denominator, both below 2^12: a step takes two short passes.
struct TimesRatioSquared {
    std::uint32_t numerator, denominator;

    constexpr FixedPoint operator()(const FixedPoint& power) const {
        return Divide(Multiply(power, numerator * numerator), denominator * denominator);
    }
};

struct TimesNumber {
    FixedPoint number;

    constexpr FixedPoint operator()(const FixedPoint& power) const { return Multiply(power, number); }
};

// x + x³/3 + x⁵/5 …, the inverse hyperbolic tangent.
template <class TimesSquare>
constexpr FixedPoint InverseTanhSeries(FixedPoint x, const TimesSquare& timesSquare) {
    FixedPoint sum = x;
    for (std::uint32_t n = 3; !IsZero(x); n += 2) {
        x = timesSquare(x);
        sum = Add(sum, Divide(x, n));
    }
    return sum;
}

// x - x³/3 + x⁵/5 …, the inverse tangent.
template <class TimesSquare>
constexpr FixedPoint InverseTanSeries(FixedPoint x, const TimesSquare& timesSquare) {
    FixedPoint sum = x;
    for (std::uint32_t n = 3; !IsZero(x); n += 2) {
        x = timesSquare(x);
        sum = n % 4 == 3 ? Subtract(sum, Divide(x, n)) : Add(sum, Divide(x, n));
    }
    return sum;
}

// Of a first term 1 the cosine, of x the sine: each further term is the one before, negated, times
// x² over the next two whole numbers.
template <class TimesSquare>
constexpr FixedPoint CircularSeries(FixedPoint term, std::uint32_t next, const TimesSquare& timesSquare) {
    FixedPoint sum = term;
    for (bool adds = false; !IsZero(term); next += 2, adds = !adds) {
        term = Divide(timesSquare(term), next * (next + 1));
        sum = adds ? Add(sum, term) : Subtract(sum, term);
    }
    return sum;
}

template <class TimesSquare>
constexpr FixedPoint SineSeries(const FixedPoint& x, const TimesSquare& timesSquare) {
    return CircularSeries(x, 2, timesSquare);
}

template <class TimesSquare>
constexpr FixedPoint CosineSeries(const TimesSquare& timesSquare) {
    return CircularSeries(Scaled(1, 0), 1, timesSquare);
}

constexpr FixedPoint InverseTanOfOneOver(std::uint32_t n) {
    return InverseTanSeries(Divide(Scaled(1, 0), n), TimesRatioSquared{1, n});
}

// log 2 = 2 artanh(1/3).
constexpr FixedPoint kLog2 = Multiply(InverseTanhSeries(Divide(Scaled(1, 0), 3), TimesRatioSquared{1, 3}), 2);

// Machin's formula of 1706: π/4 = 4 arctan(1/5) - arctan(1/239).
constexpr FixedPoint kHalfPi = Subtract(Multiply(InverseTanOfOneOver(5), 8), Multiply(InverseTanOfOneOver(239), 2));

}  // namespace rows
