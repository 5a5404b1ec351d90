// Ranges cut into blocks, up to the largest numbers.
#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "plugin/rows/Blocks.h"
#include "plugin/rows/PixelSpan.h"

namespace rows {

namespace {

constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();

std::vector<Block> Collect(const Blocks& blocks) {
    std::vector<Block> collected;
    for (const Block block : blocks) collected.push_back(block);
    return collected;
}

TEST(Blocks, CoverARunOnce) {
    EXPECT_EQ(Collect(Blocks(2, 9, 3)), (std::vector<Block>{{2, 3}, {5, 3}, {8, 1}}));
    EXPECT_EQ(Collect(Blocks(6, 3)), (std::vector<Block>{{0, 3}, {3, 3}}));
    EXPECT_EQ(Collect(Blocks(1, 512)), (std::vector<Block>{{0, 1}}));
}

TEST(Blocks, OfNothingAreNone) {
    EXPECT_TRUE(Collect(Blocks(0, 5)).empty());
    EXPECT_TRUE(Collect(Blocks(7, 3, 5)).empty());
    EXPECT_TRUE(Collect(Blocks(-4, 1)).empty());
}

TEST(Blocks, EndWhereTheNextOneWouldBeginPastTheNumbers) {
    EXPECT_EQ(Collect(Blocks(kMost - 700, kMost - 63, 512)),
              (std::vector<Block>{{kMost - 700, 512}, {kMost - 188, 125}}));
    EXPECT_EQ(Collect(Blocks(kMost, 1 << 30)), (std::vector<Block>{{0, 1 << 30}, {1 << 30, (1 << 30) - 1}}));
    EXPECT_EQ(Collect(Blocks(kMost - 1, kMost, kMost)), (std::vector<Block>{{kMost - 1, 1}}));
}

TEST(PixelSpan, HoldsOffsetsAsFarApartAsNumbersGo) {
    const std::int32_t offsets[] = {0, kMost};
    const PixelSpan span = SpanOf(4, offsets, 2);
    EXPECT_EQ(span.size, std::int64_t{1} << 31);
    EXPECT_FALSE(span.IsCompact());
    EXPECT_EQ(span.Extent(2), (std::int64_t{1} << 31) + 4);
}

}  // namespace

}  // namespace rows
