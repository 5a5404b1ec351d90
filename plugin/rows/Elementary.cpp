// Estimates, and exact decisions where an estimate lies too near a boundary.
#include "plugin/rows/Elementary.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "plugin/rows/ElementaryEstimates.h"
#include "plugin/rows/ElementarySides.h"

namespace rows {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kLeastNormal = std::numeric_limits<double>::min();
constexpr int kLeastNormalExponent = -1022;

// Below it an angle, its sine and its tangent are the same double, and its cosine is 1.
constexpr double kNegligible = 0x1p-27;

// An estimate of a positive number, waiting to be rounded.
struct Estimate {
    DoubleDouble value;  // × 2^exponent
    double error;        // at most, of the value
    int exponent = 0;
    double grid = 0;  // added to the value before it is rounded and taken away after: sets the last bit's place
};

// Half-way between neighbours that an estimate may round to.
Dyadic HalfWay(const Estimate& estimate, double below, double above) {
    const double gap = above - below;
    return {2 * static_cast<std::uint64_t>((below - estimate.grid) / gap) + 1, std::ilogb(gap) - 1 + estimate.exponent};
}

bool IsOdd(double value) { return (std::bit_cast<std::uint64_t>(value) & 1) != 0; }

// Rounds to nearest, ties to even; sideOf(number) tells on which side of a number the true value is.
template <class SideOf>
double Round(const Estimate& estimate, const SideOf& sideOf) {
    const DoubleDouble sum = TwoSum(estimate.grid, estimate.value.high);
    const double rest = sum.low + estimate.value.low, reach = estimate.value.high * estimate.error;
    const double below = sum.high + (rest - reach), above = sum.high + (rest + reach);
    const auto taken = [&](double rounded) { return std::ldexp(rounded - estimate.grid, estimate.exponent); };
    if (below == above) return taken(below);
    const int side = sideOf(HalfWay(estimate, below, above));
    const bool goesUp = side == 0 ? IsOdd(below) : side > 0;
    return taken(goesUp ? above : below);
}

// The same of a number with a sign.
template <class SideOf>
double RoundMagnitude(const DoubleDouble& value, double error, const SideOf& sideOf) {
    const bool negative = value.high < 0;
    const double magnitude = Round({negative ? Negate(value) : value, error}, sideOf);
    return negative ? -magnitude : magnitude;
}

// Powers below the least normal double have fewer bits.
double RoundPower(double x, double y, const ScaledEstimate& power) {
    Estimate estimate{power.mantissa, kExpError, power.exponent};
    if (std::ldexp(power.mantissa.high, power.exponent) < kLeastNormal)
        estimate.grid = std::ldexp(1.0, kLeastNormalExponent - power.exponent);
    return Round(estimate, [&](const Dyadic& number) { return SideOfPow(x, y, number); });
}

// Finite x above 0 but 1, any y but 0.
double PowOfPositive(double x, double y) {
    constexpr double kNoMore = 750, kNoLess = 0x1p-55;
    const DoubleDouble log = EstimateLog(x);
    const double product = y * log.high;
    if (product > kNoMore) return kInfinity;
    if (product < -kNoMore) return 0;
    if (std::abs(product) < kNoLess) return 1;
    const DoubleDouble exact = TwoProduct(y, log.high);
    return RoundPower(x, y, EstimateExp(FastTwoSum(exact.high, exact.low + y * log.low)));
}

bool IsWhole(double y) { return std::floor(y) == y; }

bool IsOddWhole(double y) { return IsWhole(y) && std::abs(y) < 0x1p53 && std::fmod(y, 2) != 0; }

// x is zero or infinite, y is not zero.
double PowOfExtreme(double x, double y) {
    const double magnitude = (x == 0) == (y > 0) ? 0 : kInfinity;
    return std::signbit(x) && IsOddWhole(y) ? -magnitude : magnitude;
}

// y is infinite, x neither 1 nor not a number.
double PowToInfinity(double x, double y) {
    if (x == -1) return 1;
    return (std::abs(x) > 1) == (y > 0) ? kInfinity : 0;
}

}  // namespace

double Sin(double angle) {
    if (std::abs(angle) < kNegligible) return angle;
    if (!(std::abs(angle) <= kLargestAngle)) return kNotANumber;
    return RoundMagnitude(EstimateCircle(angle).sine, kCircleError,
                          [=](const Dyadic& number) { return SideOfSin(angle, number); });
}

double Cos(double angle) {
    if (std::abs(angle) < kNegligible) return 1;
    if (!(std::abs(angle) <= kLargestAngle)) return kNotANumber;
    return RoundMagnitude(EstimateCircle(angle).cosine, kCircleError,
                          [=](const Dyadic& number) { return SideOfCos(angle, number); });
}

double Tan(double angle) {
    if (std::abs(angle) < kNegligible) return angle;
    if (!(std::abs(angle) <= kLargestAngle)) return kNotANumber;
    const Circle circle = EstimateCircle(angle);
    return RoundMagnitude(Divide(circle.sine, circle.cosine), 4 * kCircleError,
                          [=](const Dyadic& number) { return SideOfTan(angle, number); });
}

double Log(double x) {
    if (x == 0) return -kInfinity;
    if (!(x > 0)) return kNotANumber;
    if (x == 1) return 0;
    if (x == kInfinity) return kInfinity;
    return RoundMagnitude(EstimateLog(x), kLogError, [=](const Dyadic& number) { return SideOfLog(x, number); });
}

double Pow(double x, double y) {
    if (x == 1 || y == 0) return 1;
    if (std::isnan(x) || std::isnan(y)) return kNotANumber;
    if (std::isinf(y)) return PowToInfinity(x, y);
    if (x == 0 || std::isinf(x)) return PowOfExtreme(x, y);
    if (x > 0) return PowOfPositive(x, y);
    if (!IsWhole(y)) return kNotANumber;
    const double magnitude = x == -1 ? 1 : PowOfPositive(-x, y);
    return IsOddWhole(y) ? -magnitude : magnitude;
}

}  // namespace rows
