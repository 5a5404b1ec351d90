// Runs written past the cache, beside plain ones: every length, from and to any address.
#include <gtest/gtest.h>

#include "plugin/rows/Streaming.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using rows_test::Bytes;
using rows_test::Random;

constexpr int kMostShift = 70, kMostCount = 2 * rows::kTileBytes + 70;

AT_EACH_LEVEL(Streaming);

TEST_P(Streaming, RepeatsATileOverTheRunAlone) {
    Random random(1);
    const Bytes tile = random.NextBytes(rows::kTileBytes);
    for (int count = 0; count < kMostCount; ++count) {
        const auto shift = static_cast<std::size_t>(random.Below(kMostShift));
        Bytes actual = random.NextBytes(shift + static_cast<std::size_t>(count) + 64), expected = actual;
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i)
            expected[shift + i] = tile[i % rows::kTileBytes];
        rows::kStreamTile.Chosen()(tile.data(), actual.data() + shift, count);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << count << " bytes from " << shift;
    }
}

TEST_P(Streaming, CopiesTheRunAlone) {
    Random random(2);
    for (int count = 0; count < kMostCount; ++count) {
        const auto shift = static_cast<std::size_t>(random.Below(kMostShift));
        const Bytes from = random.NextBytes(static_cast<std::size_t>(count));
        Bytes actual = random.NextBytes(shift + from.size() + 64), expected = actual;
        std::copy(from.begin(), from.end(), expected.begin() + static_cast<std::ptrdiff_t>(shift));
        rows::kStreamCopy.Chosen()(from.data(), actual.data() + shift, count);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << count << " bytes to " << shift;
    }
}

}  // namespace
