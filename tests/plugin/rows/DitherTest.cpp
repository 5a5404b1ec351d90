#include <gtest/gtest.h>

#include "plugin/rows/Dither.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using support::SameBytes;

// Any tables, or such as two levels give.
rows::DitherTables RandomTables(Random& random, bool twoLevels) {
    rows::DitherTables tables;
    tables.twoLevels = twoLevels;
    for (int i = 0; i < 256; ++i) {
        tables.limit[i] = static_cast<std::uint8_t>(random.Next());
        tables.lower[i] = twoLevels ? std::uint8_t{3} : static_cast<std::uint8_t>(random.Next());
        tables.upper[i] = twoLevels ? std::uint8_t{250} : static_cast<std::uint8_t>(random.Next());
    }
    return tables;
}

class Dither : public ::testing::TestWithParam<bool> {};

TEST_P(Dither, GivesTheSameAtEveryLevelAndWidth) {
    Random random(1);
    const rows::DitherTables tables = RandomTables(random, GetParam());
    const Bytes thresholds = random.NextBytes(16), pixels = random.NextBytes(900);
    for (const int size : {2, 4, 6, 8, 16})
        for (int channels = 1; channels <= 4; ++channels)
            for (int width = 0; width <= 210; ++width) {
                const int first = random.Below(1000);
                Bytes expected = pixels;
                for (int i = 0; i < width * channels; ++i) {
                    auto& byte = expected[static_cast<std::size_t>(i)];
                    const auto cell = static_cast<std::size_t>((first + i / channels) % size);
                    byte = thresholds[cell] < tables.limit[byte] ? tables.lower[byte] : tables.upper[byte];
                }
                for (const auto level : Levels()) {
                    const AtLevel at(level);
                    Bytes actual = pixels;
                    rows::DitherRow(tables, {thresholds.data(), size}, first, channels, width, pixels.data(),
                                    actual.data());
                    ASSERT_TRUE(SameBytes(actual, expected)) << size << ", " << channels << ", " << width;
                    actual = pixels;
                    rows::DitherRow(tables, {thresholds.data(), size}, first, channels, width, actual.data(),
                                    actual.data());
                    ASSERT_TRUE(SameBytes(actual, expected)) << "in place";
                }
            }
}

INSTANTIATE_TEST_SUITE_P(Levels, Dither, ::testing::Bool());

}  // namespace
