// Edit distances, and names offered for mistyped ones.
#include <gtest/gtest.h>

#include <vector>

#include "host/objects/NearestName.h"

namespace {

using host::EditDistance;
using host::NearestName;

const std::vector<std::string> kNames = {"Width", "Height", "Depth", "GammaFilter"};

TEST(EditDistance, CountsLettersToChangeAddDropOrSwap) {
    EXPECT_EQ(EditDistance("", ""), 0U);
    EXPECT_EQ(EditDistance("abc", "abc"), 0U);
    EXPECT_EQ(EditDistance("abc", ""), 3U);
    EXPECT_EQ(EditDistance("", "ab"), 2U);
    EXPECT_EQ(EditDistance("abc", "axc"), 1U);
    EXPECT_EQ(EditDistance("abc", "abcd"), 1U);
    EXPECT_EQ(EditDistance("widht", "width"), 1U);
    EXPECT_EQ(EditDistance("fro", "for"), 1U);
    EXPECT_EQ(EditDistance("kitten", "sitting"), 3U);
}

TEST(NearestName, FindsWhatWasMistyped) {
    EXPECT_EQ(NearestName("Widht", kNames), "Width");
    EXPECT_EQ(NearestName("HIEGHT", kNames), "Height");
    EXPECT_EQ(NearestName("GamaFiltre", kNames), "GammaFilter");
}

TEST(NearestName, IsNoneWhereAllAreFar) {
    EXPECT_EQ(NearestName("Colour", kNames), "");
    EXPECT_EQ(NearestName("", kNames), "");
    EXPECT_EQ(NearestName(std::string(1000, 'w'), kNames), "");
}

TEST(NearestName, IsOfferedAsAQuestion) {
    EXPECT_EQ(host::DidYouMean("Dpeth", kNames), "; did you mean Depth?");
    EXPECT_EQ(host::DidYouMean("Colour", kNames), "");
}

}  // namespace
