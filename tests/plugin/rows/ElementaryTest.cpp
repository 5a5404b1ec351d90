// Elementary functions against a library of many digits.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "plugin/rows/Elementary.h"
#include "plugin/rows/ElementaryEstimates.h"
#include "tests/support/Formats.h"
#include "tests/support/TrueValues.h"

namespace {

using support::Random;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kPi = 3.141592653589793;

#if defined(__OPTIMIZE__) && defined(__x86_64__) && !defined(__SANITIZE_ADDRESS__)
constexpr int kManyTimes = 1'000'000;
#else
constexpr int kManyTimes = 50'000;
#endif

// The same double, signs of zeros too; or neither a number.
bool IsSame(double a, double b) {
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) || (std::isnan(a) && std::isnan(b));
}

// At least 0, below 1.
double Fraction(Random& random) { return static_cast<double>(random.Next() >> 11) * 0x1p-53; }

double Between(Random& random, double least, double most) { return least + (most - least) * Fraction(random); }

void ExpectCircle(double angle) {
    ASSERT_PRED2(IsSame, rows::Sin(angle), support::TrueSin(angle)) << std::hexfloat << angle;
    ASSERT_PRED2(IsSame, rows::Cos(angle), support::TrueCos(angle)) << std::hexfloat << angle;
    ASSERT_PRED2(IsSame, rows::Tan(angle), support::TrueTan(angle)) << std::hexfloat << angle;
}

void ExpectLog(double x) { ASSERT_PRED2(IsSame, rows::Log(x), support::TrueLog(x)) << std::hexfloat << x; }

void ExpectPow(double x, double y) {
    ASSERT_PRED2(IsSame, rows::Pow(x, y), support::TruePow(x, y)) << std::hexfloat << x << ", " << y;
}

// The scaling kernels go to 8π, rotations to 2π.
TEST(Elementary, RoundsSinesOfRandomAnglesCorrectly) {
    Random random(1);
    for (int i = 0; i < kManyTimes; ++i) {
        const double angle = Between(random, 0, 8 * kPi);
        ASSERT_PRED2(IsSame, rows::Sin(angle), support::TrueSin(angle)) << std::hexfloat << angle;
    }
}

TEST(Elementary, RoundsCosinesAndTangentsOfRandomAnglesCorrectly) {
    Random random(2);
    for (int i = 0; i < kManyTimes; ++i) {
        const double angle = Between(random, -2 * kPi, 2 * kPi), half = angle * 0.5;
        ASSERT_PRED2(IsSame, rows::Cos(angle), support::TrueCos(angle)) << std::hexfloat << angle;
        ASSERT_PRED2(IsSame, rows::Tan(half), support::TrueTan(half)) << std::hexfloat << half;
    }
}

TEST(Elementary, RoundsSmallAndLargeAnglesCorrectly) {
    Random random(3);
    for (int i = 0; i < kManyTimes / 10; ++i) {
        ExpectCircle(std::ldexp(Between(random, -1, 1), -random.Below(60)));
        ExpectCircle(Between(random, -rows::kLargestAngle, rows::kLargestAngle));
    }
    for (const double angle : {0x1p-26, 0x1p-27, 0x1p-28, 1e-300, 4.9e-324, rows::kLargestAngle}) ExpectCircle(angle);
}

// Where a sine or cosine nearly vanishes.
TEST(Elementary, RoundsAnglesAroundEveryQuarterTurnCorrectly) {
    for (int quarters = 1; quarters * kPi / 2 < rows::kLargestAngle - 1; ++quarters)
        for (int step = -20; step <= 20; ++step) ExpectCircle(quarters * kPi / 2 * (1 + step * 0x1p-52));
}

TEST(Elementary, RoundsEveryDegreeCorrectly) {
    for (int i = -36000; i <= 36000; ++i) ExpectCircle(i * 0.01 * kPi / 180);
}

TEST(Elementary, RoundsLogarithmsCorrectly) {
    Random random(4);
    for (int i = 0; i < kManyTimes; ++i) ExpectLog(1 - Fraction(random));
    for (int i = 0; i < kManyTimes / 10; ++i) {
        ExpectLog(1 + std::ldexp(Between(random, -1, 1), -random.Below(53)));
        ExpectLog(std::ldexp(1 + Fraction(random), random.Between(-1074, 1023)));
    }
}

TEST(Elementary, RoundsPowersOfFractionsCorrectly) {
    Random random(5);
    for (int i = 0; i < kManyTimes; ++i) ExpectPow(Fraction(random), Between(random, -20, 20));
}

// As the tone curves ask for them.
TEST(Elementary, RoundsGammaCurvesCorrectly) {
    Random random(6);
    for (int i = 0; i < kManyTimes / 256; ++i) {
        const double gamma = i < 500 ? (i + 1) * 0.01 : Between(random, -4, 12);
        for (int value = 0; value < 256; ++value) ExpectPow(value / 255.0, 1 / gamma);
    }
}

// Subnormal results, overflow and underflow among them.
TEST(Elementary, RoundsPowersOfAnyDoublesCorrectly) {
    Random random(7);
    for (int i = 0; i < kManyTimes / 20; ++i) {
        const double x = std::ldexp(1 + Fraction(random), random.Between(-1074, 1023));
        ExpectPow(x, std::ldexp(Between(random, -1, 1), random.Between(-10, 10)));
        ExpectPow(x, Between(random, -1080, 1080) / std::log2(x));
        ExpectPow(x, Between(random, -1076, -1018) / std::log2(x));
        ExpectPow(1 + std::ldexp(Between(random, -1, 1), -random.Below(53)),
                  std::ldexp(Between(random, -1, 1), random.Between(0, 70)));
    }
}

// Half-way between two doubles, which is rounded to the even one.
TEST(Elementary, RoundsExactPowersAndTiesToEven) {
    Random random(8);
    for (int i = 0; i < 20000; ++i) {
        const double x = 1 + random.Below(1 << 27);
        ASSERT_EQ(rows::Pow(x, 2), x * x) << x;
        ASSERT_EQ(rows::Pow(x * x, 0.5), std::sqrt(x * x)) << x;
        ASSERT_EQ(rows::Pow(x * 0x1p-537, 2), x * 0x1p-537 * (x * 0x1p-537)) << x;
        ExpectPow(1 + random.Below(1 << 18), 3);
        ExpectPow(std::pow(1 + random.Below(1 << 13), 4), 0.75);
    }
    EXPECT_EQ(rows::Pow(2, -1074), 0x1p-1074);
    EXPECT_EQ(rows::Pow(2, -1075), 0) << "half of the least double";
    EXPECT_EQ(rows::Pow(2, 1023), 0x1p1023);
    EXPECT_EQ(rows::Pow(2, 1024), kInfinity);
}

// Arguments of few bits for which the first terms of a power series end half-way between two
// doubles, and only the next one, far down, says on which side.
TEST(Elementary, RoundsCorrectlyNextToHalfWay) {
    for (int j = 1; j < 4096; ++j)
        for (int bits = 14; bits < 50; ++bits) {
            const double x = std::ldexp(j, -bits);
            if (x >= 0.25) continue;
            ExpectLog(1 + x);
            ExpectLog(1 - x);
            if (bits % 4 == 0) ExpectPow(1 + x, j % 2 == 0 ? 1.5 : -2.5);
            if (j % 3 == 0) ExpectCircle(x);
        }
}

// Within 2^-30 of a unit of half-way, found by going through some 2^33 neighbours of each of them.
TEST(Elementary, RoundsTheHardestKnownArgumentsCorrectly) {
    for (const double angle :
         {0x1.29bd0388225d3p+4, 0x1.7428ed58e6ee9p-2, 0x1.d49e81e37674p-1, 0x1.7985aeb208ea8p+1, 0x1.35d68314e50d5p+0})
        ExpectCircle(angle);
    for (const double x : {0x1.ddbcd647bb9a9p-2, 0x1.a3900451d89f6p-2, 0x1.09f69abd0cf15p-3, 0x1.8adacc2e3566dp-1})
        ExpectPow(x, 1 / 2.2);
}

TEST(Elementary, EstimatesErrLessThanTheyState) {
    using support::Function;
    Random random(9);
    for (int i = 0; i < kManyTimes / 5; ++i) {
        const double angle = std::ldexp(Between(random, -8 * kPi, 8 * kPi), -random.Below(10));
        if (std::abs(angle) < 0x1p-27) continue;
        const rows::Circle circle = rows::EstimateCircle(angle);
        const auto expectError = [](Function function, double x, const rows::DoubleDouble& estimate, double most) {
            ASSERT_LT(std::abs(support::RelativeError(function, x, estimate.high, estimate.low)), most) << x;
        };
        expectError(Function::Sin, angle, circle.sine, rows::kCircleError);
        expectError(Function::Cos, angle, circle.cosine, rows::kCircleError);
        const double x = std::ldexp(1 - Fraction(random) / 2, random.Between(-3, 3));
        if (x != 1) expectError(Function::Log, x, rows::EstimateLog(x), rows::kLogError);
        const double t = Between(random, -700, 700) * (i % 2 == 0 ? 1 : 0.01);
        const rows::ScaledEstimate power = rows::EstimateExp({t, 0});
        const rows::DoubleDouble& mantissa = power.mantissa;
        expectError(Function::Exp, t,
                    {std::ldexp(mantissa.high, power.exponent), std::ldexp(mantissa.low, power.exponent)},
                    rows::kExpError);
    }
}

constexpr double kSpecial[] = {0.0,     -0.0,     1,       -1,       0.5,       -0.5,      2,          -2,
                               3,       -3,       2.5,     -2.5,     1e300,     -1e300,    0x1p53,     0x1p53 - 1,
                               -0x1p52, 4.9e-324, -1e-310, 2.3e-308, 0x1p-1022, kInfinity, -kInfinity, kNotANumber};

TEST(Elementary, GivesTheSpecialValuesOfTheStandard) {
    for (const double x : kSpecial) {
        ExpectLog(x);
        for (const double y : kSpecial) ExpectPow(x, y);
    }
}

TEST(Elementary, KeepsTheSignOfZeroAngles) {
    for (const double zero : {0.0, -0.0}) ExpectCircle(zero);
}

TEST(Elementary, GivesNoNumberForAnglesBeyondTheLargest) {
    for (const double angle :
         {kInfinity, -kInfinity, kNotANumber, std::nextafter(rows::kLargestAngle, kInfinity), -1e300}) {
        EXPECT_TRUE(std::isnan(rows::Sin(angle))) << angle;
        EXPECT_TRUE(std::isnan(rows::Cos(angle))) << angle;
        EXPECT_TRUE(std::isnan(rows::Tan(angle))) << angle;
    }
}

}  // namespace
