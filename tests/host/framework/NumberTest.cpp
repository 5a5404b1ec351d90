// Numbers, colours and clocks.
#include <cmath>

#include "tests/host/framework/FrameworkTest.h"

namespace host {
namespace {

using NumberFunctions = FrameworkTest;

double Real(std::string_view name, const auto&... arguments) { return Function(name, arguments...).ToDouble(); }

TEST_F(NumberFunctions, RoundingGoesWhereItsNameSays) {
    EXPECT_EQ(Real("Ceil", 1.2), 2);
    EXPECT_EQ(Real("Ceil", -1.2), -1);
    EXPECT_EQ(Real("Floor", -1.2), -2);
    EXPECT_EQ(Real("Round", 2.5), 3);
    EXPECT_EQ(Real("Round", -2.5), -3);
    EXPECT_EQ(Real("Round", 0.49999999999999994), 0);
    EXPECT_TRUE(std::isinf(Real("Floor", INFINITY)));
}

TEST_F(NumberFunctions, AbsKeepsTheKindOfNumber) {
    EXPECT_EQ(Function("Abs", -5).kind(), Kind::Integer);
    EXPECT_EQ(Function("Abs", -5).ToInt32(), 5);
    EXPECT_EQ(Function("Abs", std::int64_t{-5000000000}).ToInt64(), 5000000000);
    EXPECT_EQ(Function("Abs", -2.5).ToDouble(), 2.5);
    EXPECT_EQ(Function("Abs", INT32_MIN).ToInt32(), INT32_MIN);
}

TEST_F(NumberFunctions, MathematicsIsTheLibrarys) {
    EXPECT_EQ(Real("Sqrt", 2.25), 1.5);
    EXPECT_TRUE(std::isnan(Real("Sqrt", -1.0)));
    EXPECT_EQ(Real("Sin", 0.5), std::sin(0.5));
    EXPECT_EQ(Real("Cos", 0.5), std::cos(0.5));
    EXPECT_EQ(Real("Tan", 0.5), std::tan(0.5));
    EXPECT_EQ(Real("Asin", 0.5), std::asin(0.5));
    EXPECT_EQ(Real("Acos", 0.5), std::acos(0.5));
    EXPECT_EQ(Real("Atan", 0.5), std::atan(0.5));
    EXPECT_EQ(Real("Atan2", -1.0, -1.0), std::atan2(-1.0, -1.0));
    EXPECT_EQ(Real("Exp", 1.0), std::exp(1.0));
    EXPECT_EQ(Real("Log", 10.0), std::log(10.0));
    EXPECT_TRUE(std::isinf(Real("Log", 0)));
    EXPECT_EQ(Real("Pow", 2, 10), 1024);
    EXPECT_EQ(Function("Sign", -2.5).ToInt32(), -1);
    EXPECT_EQ(Function("Sign", 0).ToInt32(), 0);
}

TEST_F(NumberFunctions, MinAndMaxTakeTwoToFour) {
    EXPECT_EQ(Function("Min", 3, 2).kind(), Kind::Integer);
    EXPECT_EQ(Function("Min", 3, 2).ToInt32(), 2);
    EXPECT_EQ(Function("Max", 3, 2.5).kind(), Kind::Double);
    EXPECT_EQ(Real("Max", 3, 3.5), 3.5);
    EXPECT_EQ(Real("Max", 1, 5, 3), 5);
    EXPECT_EQ(Real("Min", 4.5, 5, 3, -1.5), -1.5);
    EXPECT_TRUE(std::isnan(Real("Max", std::nan(""), 1.0)));
    EXPECT_TRUE(std::isnan(Real("Min", 1.0, std::nan(""))));
}

TEST_F(NumberFunctions, RandomNumbersLieBelowOne) {
    double sum = 0;
    for (int i = 0; i < 1000; ++i) {
        const double value = Real("Rnd");
        ASSERT_GE(value, 0);
        ASSERT_LT(value, 1);
        sum += value;
    }
    EXPECT_NEAR(sum / 1000, 0.5, 0.1);
}

TEST_F(NumberFunctions, ClocksRunOn) {
    const double before = Real("Microseconds");
    const auto ticks = static_cast<std::uint32_t>(Function("Ticks").ToInt32());
    EXPECT_GE(Real("Microseconds"), before);
    EXPECT_LT(static_cast<std::uint32_t>(Function("Ticks").ToInt32()) - ticks, 600u);
}

TEST_F(NumberFunctions, ColoursTakeLowBytes) {
    EXPECT_EQ(Function("RGB", 1, 2, 255).ToInt64(), 0x0102ff);
    EXPECT_EQ(Function("RGB", 256, -1, 0).ToInt64(), 0x00ff00);
    EXPECT_EQ(Function("RGB", 1, 2, 3).kind(), Kind::Color);
}

}  // namespace
}  // namespace host
