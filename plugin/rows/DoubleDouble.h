// Numbers of about 106 bits, each the unrounded sum of two doubles (Dekker, A Floating-Point
// Technique for Extending the Available Precision, 1971).
//
// Plain double steps only. Products are taken exactly by halves instead of by std::fma, which
// costs a call, and much time where the processor lacks it. Good for magnitudes between 2^-400
// and 2^400, where nothing overflows and no error term is lost.
#pragma once

#include <cfloat>

namespace rows {

static_assert(FLT_EVAL_METHOD == 0 || FLT_EVAL_METHOD == 1, "every double step must round to double");

struct DoubleDouble {
    double high;
    double low;  // at most half a unit in the last place of `high`
};

// a + b, exactly, where |a| is not below |b| or a is 0.
constexpr DoubleDouble FastTwoSum(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

// a + b, exactly.
constexpr DoubleDouble TwoSum(double a, double b) {
    const double sum = a + b, part = sum - a;
    return {sum, (a - (sum - part)) + (b - part)};
}

// The upper half of a double's bits and what is left, either of at most 26 bits and a sign.
constexpr DoubleDouble Split(double a) {
    const double scaled = a * 0x1p27 + a, high = scaled - (scaled - a);
    return {high, a - high};
}

// a × b, exactly.
constexpr DoubleDouble TwoProduct(double a, double b) {
    const double product = a * b;
    const DoubleDouble x = Split(a), y = Split(b);
    return {product, ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low};
}

constexpr DoubleDouble Negate(const DoubleDouble& a) { return {-a.high, -a.low}; }

// The relative errors of what follows are below 2^-101; of a sum, as long as no more than half of
// the bits cancel.
constexpr DoubleDouble Add(const DoubleDouble& a, const DoubleDouble& b) {
    const DoubleDouble sum = TwoSum(a.high, b.high);
    return FastTwoSum(sum.high, sum.low + (a.low + b.low));
}

constexpr DoubleDouble Multiply(const DoubleDouble& a, const DoubleDouble& b) {
    const DoubleDouble product = TwoProduct(a.high, b.high);
    return FastTwoSum(product.high, product.low + (a.high * b.low + a.low * b.high));
}

constexpr DoubleDouble Divide(const DoubleDouble& a, const DoubleDouble& b) {
    const double quotient = a.high / b.high;
    const DoubleDouble product = TwoProduct(quotient, b.high);
    const double rest = ((a.high - product.high) - product.low) + (a.low - quotient * b.low);
    return FastTwoSum(quotient, rest / b.high);
}

}  // namespace rows
