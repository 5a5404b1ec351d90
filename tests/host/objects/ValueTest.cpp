// Values of every kind: conversions, defaults, words.
#include <gtest/gtest.h>

#include <cmath>

#include "host/objects/Array.h"
#include "host/objects/Value.h"

namespace {

using host::Kind;
using host::NumberAs;
using host::Value;

TEST(Value, KnowsItsKind) {
    EXPECT_EQ(Value().kind(), Kind::None);
    EXPECT_EQ(Value(1).kind(), Kind::Integer);
    EXPECT_EQ(Value(std::int64_t{1}).kind(), Kind::Int64);
    EXPECT_EQ(Value(1U).kind(), Kind::UInt32);
    EXPECT_EQ(Value(std::uint8_t{1}).kind(), Kind::UInt8);
    EXPECT_EQ(Value(1.0).kind(), Kind::Double);
    EXPECT_EQ(Value(1.0F).kind(), Kind::Single);
    EXPECT_EQ(Value(true).kind(), Kind::Boolean);
    EXPECT_EQ(Value(sdk::Color{1}).kind(), Kind::Color);
    EXPECT_EQ(Value("x").kind(), Kind::String);
    EXPECT_EQ(Value(nullptr).kind(), Kind::Object);
    EXPECT_EQ(Value(host::MakeIntegerArray({1})).kind(), Kind::Array);
}

TEST(Value, IsNothingOrNil) {
    EXPECT_TRUE(Value().IsNothing());
    EXPECT_TRUE(Value(nullptr).IsNil());
    EXPECT_FALSE(Value().IsNil());
    EXPECT_FALSE(Value("").IsNil()) << "an empty string is a string";
    EXPECT_EQ(Value("").text(), "");
}

TEST(Value, SharesWhatItHolds) {
    const std::int64_t strings = host::LiveStringCount();
    const std::int64_t arrays = host::LiveArrayCount();
    {
        Value one("text");
        Value two = one;
        EXPECT_EQ(one.string()->references, 2);
        two = Value(host::MakeIntegerArray({1, 2}));
        EXPECT_EQ(one.string()->references, 1);
        const Value three = std::move(two);
        EXPECT_TRUE(two.IsNothing());
        EXPECT_EQ(three.array()->references, 1);
        one = one;
        EXPECT_EQ(one.text(), "text");
    }
    EXPECT_EQ(host::LiveStringCount(), strings);
    EXPECT_EQ(host::LiveArrayCount(), arrays);
}

TEST(Value, TruncatesAndSaturatesDoubles) {
    EXPECT_EQ(host::TruncateToInt32(2.9), 2);
    EXPECT_EQ(host::TruncateToInt32(-2.9), -2);
    EXPECT_EQ(host::TruncateToInt32(2147483647.9), INT32_MAX);
    EXPECT_EQ(host::TruncateToInt32(2147483648.0), INT32_MAX);
    EXPECT_EQ(host::TruncateToInt32(-2147483648.9), INT32_MIN);
    EXPECT_EQ(host::TruncateToInt32(-1e300), INT32_MIN);
    EXPECT_EQ(host::TruncateToInt32(std::nan("")), INT32_MIN);
    EXPECT_EQ(host::TruncateToInt64(9.3e18), INT64_MAX);
    EXPECT_EQ(host::TruncateToInt64(-9.3e18), INT64_MIN);
    EXPECT_EQ(host::TruncateToInt64(std::nan("")), INT64_MIN);
    EXPECT_EQ(host::TruncateToInt64(1e15), 1'000'000'000'000'000);
}

TEST(Value, ConvertsBetweenNumberKinds) {
    EXPECT_EQ(NumberAs(Value(-1), Kind::UInt32).ToInt64(), 0xFFFFFFFF);
    EXPECT_EQ(NumberAs(Value(300), Kind::UInt8).ToInt64(), 44);
    EXPECT_EQ(NumberAs(Value(std::int64_t{1} << 32 | 5), Kind::Integer).ToInt64(), 5);
    EXPECT_EQ(NumberAs(Value(-0.5), Kind::UInt8).ToInt64(), 0);
    EXPECT_EQ(NumberAs(Value(300.0), Kind::UInt8).ToInt64(), 255);
    EXPECT_EQ(NumberAs(Value(-3.0), Kind::UInt32).ToInt64(), 0);
    EXPECT_EQ(NumberAs(Value(5e9), Kind::UInt32).ToInt64(), UINT32_MAX);
    EXPECT_EQ(NumberAs(Value(5e9), Kind::Int64).ToInt64(), 5'000'000'000);
    EXPECT_EQ(NumberAs(Value(0.1), Kind::Single).ToDouble(), static_cast<double>(0.1F));
    EXPECT_EQ(NumberAs(Value(7), Kind::Double).kind(), Kind::Double);
}

TEST(Value, StartsVariablesOfEachType) {
    EXPECT_EQ(DefaultOf(host::TypeNamed("Integer")).kind(), Kind::Integer);
    EXPECT_EQ(DefaultOf(host::TypeNamed("UInt8")).kind(), Kind::UInt8);
    EXPECT_EQ(DefaultOf(host::TypeNamed("Single")).kind(), Kind::Single);
    EXPECT_FALSE(DefaultOf(host::TypeNamed("Boolean")).ToBoolean());
    EXPECT_EQ(DefaultOf(host::TypeNamed("String")).text(), "");
    EXPECT_TRUE(DefaultOf(host::TypeNamed("Picture")).IsNil());
    EXPECT_EQ(host::UpperBound(DefaultOf(host::ArrayOf(host::TypeNamed("Double"))).array()), -1);
}

TEST(Value, DescribesItself) {
    EXPECT_EQ(Describe(Value(-3)), "-3");
    EXPECT_EQ(Describe(Value(0.1)), "0.1");
    EXPECT_EQ(Describe(Value(true)), "True");
    EXPECT_EQ(Describe(Value(sdk::Color{0xFF80})), "&c00FF80");
    EXPECT_EQ(Describe(Value("x")), "\"x\"");
    EXPECT_EQ(Describe(Value(nullptr)), "nil");
    EXPECT_EQ(Describe(Value()), "nothing");
    EXPECT_EQ(Describe(Value(host::MakeIntegerArray({}))), "Integer()");
}

TEST(Array, HasDefaultElementsOfItsType) {
    const auto array = host::MakeArray(host::TypeNamed("String"), 3);
    EXPECT_EQ(host::UpperBound(array.get()), 2);
    EXPECT_EQ(array->values[1].kind(), Kind::String);
    EXPECT_EQ(host::UpperBound(nullptr), -1);
    EXPECT_EQ(host::UpperBound(host::MakeArray(host::TypeNamed("Picture")).get()), -1);
}

TEST(Type, HasTheNameItWasDeclaredBy) {
    EXPECT_EQ(TypeText(host::TypeNamed("integer")), "Integer");
    EXPECT_EQ(TypeText(host::TypeNamed("PictureTQX")), "PictureTQX");
    EXPECT_EQ(TypeText(host::ArrayOf(host::TypeNamed("picture"))), "picture()");
    EXPECT_TRUE(host::TypeNamed("Picture") == host::TypeNamed("pICTURE"));
    EXPECT_FALSE(host::TypeNamed("Picture") == host::ArrayOf(host::TypeNamed("Picture")));
}

}  // namespace
