// Constants as declaration strings.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "plugin/classes/ConstantDeclarations.h"

namespace {

std::string Declared(const char* name, std::int32_t value, tqx::ConstantStyle style = {}) {
    const char* const text = tqx::BuildConstantDeclaration({name, value}, style);
    const std::string copy = text;
    std::free(const_cast<char*>(text));
    return copy;
}

TEST(ConstantDeclarations, AreDecimalUpToNine) {
    EXPECT_EQ(Declared("ImageFormatUnknown", 0), "ImageFormatUnknown = 0");
    EXPECT_EQ(Declared("ScaleCubic", 7), "ScaleCubic = 7");
    EXPECT_EQ(Declared("DitherCluster4Matrix", 9), "DitherCluster4Matrix = 9");
}

TEST(ConstantDeclarations, HaveEightHexadecimalDigitsFromTen) {
    EXPECT_EQ(Declared("DitherCluster8Matrix", 10), "DitherCluster8Matrix = &h0000000A");
    EXPECT_EQ(Declared("ImageFormatRofRGB", 15), "ImageFormatRofRGB = &h0000000F");
    EXPECT_EQ(Declared("Most", 0x7FFFFFFF), "Most = &h7FFFFFFF");
    EXPECT_EQ(Declared("Minus", -1), "Minus = &hFFFFFFFF");
}

TEST(ConstantDeclarations, TakeAPrefixAndDecimalsOnDemand) {
    EXPECT_EQ(Declared("Count", 7, {.prefixed = true}), "kCount = 7");
    EXPECT_EQ(Declared("Count", 255, {.prefixed = true}), "kCount = &h000000FF");
    EXPECT_EQ(Declared("Count", 255, {.decimal = true}), "Count = 255");
    EXPECT_EQ(Declared("Count", -2147483647 - 1, {.prefixed = true, .decimal = true}), "kCount = -2147483648");
}

}  // namespace
