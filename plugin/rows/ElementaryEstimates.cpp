// Reductions and series in pairs of doubles.
#include "plugin/rows/ElementaryEstimates.h"

#include <cmath>

#include "plugin/rows/ElementaryTables.h"

namespace rows {

namespace {

// Adding and taking it away rounds a double below 2^51 to the nearest whole number.
constexpr double kRounder = 0x1.8p52;

double Nearest(double value) { return (value + kRounder) - kRounder; }

// A number less `index` steps; its upper part loses nothing.
DoubleDouble LessSteps(const DoubleDouble& a, int index) { return FastTwoSum(a.high - index * (1.0 / kSteps), a.low); }

// angle - quarters × π / 2. The first two pieces of π / 2 are taken away exactly.
DoubleDouble LessQuarters(double angle, double quarters) {
    const DoubleDouble rest = TwoSum(angle - quarters * kHalfPiTop, -(quarters * kHalfPiNext));
    const DoubleDouble product = TwoProduct(quarters, kHalfPiRest.high);
    return Add(rest, Negate(FastTwoSum(product.high, product.low + quarters * kHalfPiRest.low)));
}

// The circle at entry i of the table, turned on by an angle d of at most 2^-7:
//   sin(a + d) = sin a + cos a · d + (sin a · (cos d - 1) + cos a · (sin d - d))
// where the brackets are at most 2^-15 of the whole and need but one double.
Circle TurnedFrom(int i, const DoubleDouble& d) {
    const DoubleDouble &sine = kCircleTable.sine[i], &cosine = kCircleTable.cosine[i];
    const double x = d.high, q = x * x;
    const double cosineLess1 = q * (-1.0 / 2 + q * (1.0 / 24 - q * (1.0 / 720 - q * (1.0 / 40320)))) - x * d.low;
    const double sineLessX =
        d.low + (x * q * (-1.0 / 6 + q * (1.0 / 120 - q * (1.0 / 5040 - q * (1.0 / 362880)))) - q * 0.5 * d.low);
    const DoubleDouble up = TwoProduct(cosine.high, x), back = TwoProduct(-sine.high, x);
    const DoubleDouble sum = TwoSum(sine.high, up.high), difference = FastTwoSum(cosine.high, back.high);
    const double sumRest = (sine.high * cosineLess1 + cosine.high * sineLessX) + (up.low + (sine.low + cosine.low * x));
    const double differenceRest =
        (cosine.high * cosineLess1 - sine.high * sineLessX) + (back.low + (cosine.low - sine.low * x));
    return {FastTwoSum(sum.high, sum.low + sumRest), FastTwoSum(difference.high, difference.low + differenceRest)};
}

// s³ · 2/3 + s⁵ · 2/5 …, to 2^-84 of s, for |s| <= 2^-7.5.
DoubleDouble InverseTanhBehindFirst(const DoubleDouble& s) {
    constexpr DoubleDouble kTwoThirds = {2.0 / 3, 0x1.5555555555555p-55};
    const DoubleDouble square = Multiply(s, s), cube = Multiply(square, s);
    const double q = square.high;
    const double further = cube.high * q * (2.0 / 5 + q * (2.0 / 7 + q * (2.0 / 9 + q * (2.0 / 11))));
    const DoubleDouble first = Multiply(cube, kTwoThirds);
    return FastTwoSum(first.high, first.low + further);
}

}  // namespace

Circle EstimateCircle(double angle) {
    const double quarters = Nearest(angle * (1 / kHalfPiTop));
    const DoubleDouble rest = LessQuarters(angle, quarters);
    const bool negative = rest.high < 0;
    const DoubleDouble magnitude = negative ? Negate(rest) : rest;
    const int i = static_cast<int>(Nearest(magnitude.high * kSteps));
    Circle circle = TurnedFrom(i, LessSteps(magnitude, i));
    if (negative) circle.sine = Negate(circle.sine);
    switch (static_cast<int>(quarters) & 3) {
        case 1:
            return {circle.cosine, Negate(circle.sine)};
        case 2:
            return {Negate(circle.sine), Negate(circle.cosine)};
        case 3:
            return {Negate(circle.cosine), circle.sine};
        default:
            return circle;
    }
}

// x = 2^power · c · (1 + s) / (1 - s) with c in the table, so log x = power · log 2 + log c + 2 artanh s.
DoubleDouble EstimateLog(double x) {
    int power;
    double m = std::frexp(x, &power);
    if (m < 0x1.6a09e667f3bcdp-1) {
        m *= 2;
        --power;
    }
    const int i = static_cast<int>(Nearest(m * kSteps));
    const double c = i * (1.0 / kSteps);
    const DoubleDouble s = Divide({m - c, 0}, TwoSum(m, c));
    const DoubleDouble ofRest = Add({2 * s.high, 2 * s.low}, InverseTanhBehindFirst(s));
    const DoubleDouble ofMantissa = Add(kLogTable.log[i - LogTable::kFirst], ofRest);
    const DoubleDouble product = TwoProduct(power, kLog2Rest.high);
    const DoubleDouble ofPower = {power * kLog2Top, 0};
    return Add(Add(ofPower, FastTwoSum(product.high, product.low + power * kLog2Rest.low)), ofMantissa);
}

// t = exponent · log 2 + i / 64 + r, and the table has e^(i / 64). Of e^r - 1 - r, at most 2^-15, one
// double is enough.
ScaledEstimate EstimateExp(const DoubleDouble& t) {
    const double exponent = std::floor(t.high * (1 / kLog2Top));
    const DoubleDouble difference = TwoSum(t.high, -(exponent * kLog2Top));
    const DoubleDouble positive = FastTwoSum(difference.high, difference.low + (t.low - exponent * kLog2Rest.high));
    const int i = static_cast<int>(Nearest(positive.high * kSteps));
    const DoubleDouble r = LessSteps(positive, i);
    const double x = r.high;
    const double lessFirst =
        r.low +
        (x * x * (1.0 / 2 + x * (1.0 / 6 + x * (1.0 / 24 + x * (1.0 / 120 + x * (1.0 / 720 + x * (1.0 / 5040)))))) +
         x * r.low);
    const DoubleDouble& exp = kExpTable.exp[i];
    const DoubleDouble product = TwoProduct(exp.high, x), sum = FastTwoSum(exp.high, product.high);
    const double rest = sum.low + ((product.low + (exp.low + exp.low * x)) + exp.high * lessFirst);
    return {FastTwoSum(sum.high, rest), static_cast<int>(exponent)};
}

}  // namespace rows
