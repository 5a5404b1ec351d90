// Filled rows at every level, with every mask of bytes.
#include <gtest/gtest.h>

#include "plugin/rows/Fill.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using rows::PixelLayout;
using rows::PixelPattern;
using rows_test::Bytes;
using rows_test::Random;

// One to four channels at random places of a pixel, at times sharing a byte, at times shifted.
PixelLayout RandomLayout(Random& random, int count) {
    PixelLayout layout{random.Between(1, 4), {}};
    const int shift = random.Below(3) == 0 ? random.Below(30) : 0;
    for (int i = 0; i < count; ++i) layout.offset[i] = shift + random.Below(layout.pixelSize);
    return layout;
}

AT_EACH_LEVEL(FillPattern);
AT_EACH_LEVEL(InvertPattern);
AT_EACH_LEVEL(ApplyPattern);

TEST_P(FillPattern, StoresTheValuesInOrderAndLeavesOtherBytes) {
    Random random(1);
    for (int round = 0; round < 2000; ++round) {
        const int count = random.Between(1, 4);
        const PixelLayout layout = RandomLayout(random, count);
        const Bytes values = random.NextBytes(4);
        const int width = random.Below(300);
        Bytes expected = random.NextBytes(static_cast<std::size_t>(width) * 4 + 64);
        Bytes actual = expected;
        for (int x = 0; x < width; ++x)
            for (int i = 0; i < count; ++i)
                expected[static_cast<std::size_t>(x * layout.pixelSize + layout.offset[i])] =
                    values[static_cast<std::size_t>(i)];
        const std::int64_t bytes = random.Below(2) * rows::kBytesToStream;
        rows::ApplyPattern(rows::FillPattern(layout, count, values.data(), bytes), actual.data(), width);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << "round " << round << " width " << width;
    }
}

TEST_P(InvertPattern, ComplementsEachByteOnce) {
    Random random(2);
    for (int round = 0; round < 2000; ++round) {
        const int count = random.Between(1, 4);
        const PixelLayout layout = RandomLayout(random, count);
        const int width = random.Below(300);
        const Bytes before = random.NextBytes(static_cast<std::size_t>(width) * 4 + 64);
        Bytes expected = before;
        Bytes actual = before;
        for (int x = 0; x < width; ++x)
            for (int i = 0; i < count; ++i) {
                const auto at = static_cast<std::size_t>(x * layout.pixelSize + layout.offset[i]);
                expected[at] = static_cast<std::uint8_t>(255 - before[at]);
            }
        rows::ApplyPattern(rows::InvertPattern(layout, count), actual.data(), width);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << "round " << round << " width " << width;
    }
}

TEST_P(ApplyPattern, TouchesNothingPastTheLastChannel) {
    const std::uint8_t value = 9;
    for (int width = 1; width < 150; ++width) {
        Bytes row(static_cast<std::size_t>(width - 1) * 4 + 1);  // the last pixel ends with its channel
        rows::ApplyPattern(rows::FillPattern({4, {0}}, 1, &value), row.data(), width);
        ASSERT_EQ(row.back(), 9);
    }
}

TEST_P(ApplyPattern, DoesNothingForNoWidthAndNoChannels) {
    Bytes row = {1, 2, 3, 4};
    const std::uint8_t value = 9;
    rows::ApplyPattern(rows::FillPattern({1, {0}}, 1, &value), row.data(), 0);
    rows::ApplyPattern(rows::FillPattern({1, {0}}, 1, &value), row.data(), -5);
    rows::ApplyPattern(rows::FillPattern({1, {0}}, 0, &value), row.data(), 4);
    rows::ApplyPattern(rows::InvertPattern({0, {0}}, 1), row.data(), 4);
    EXPECT_EQ(row, (Bytes{1, 2, 3, 4}));
}

}  // namespace
