// Dithered rows at every level against the plain ones.
#include <gtest/gtest.h>

#include <algorithm>

#include "plugin/rows/Dither.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using support::SameBytes;

enum class Kind { TwoLevels, Levels, AnyLimits };

// Tables such as two or more levels give, whose limits rise from 0; or with limits as they come.
rows::DitherTables RandomTables(Random& random, Kind kind) {
    const bool twoLevels = kind == Kind::TwoLevels;
    rows::DitherTables tables;
    tables.twoLevels = twoLevels;
    for (int i = 0; i < 256; ++i) {
        tables.limit[i] = static_cast<std::uint8_t>(random.Next());
        tables.lower[i] = twoLevels ? std::uint8_t{3} : static_cast<std::uint8_t>(random.Next());
        tables.upper[i] = twoLevels ? std::uint8_t{250} : static_cast<std::uint8_t>(random.Next());
    }
    if (kind == Kind::AnyLimits) return tables;
    std::sort(tables.limit, tables.limit + 256);
    tables.limit[0] = 0;
    return tables;
}

AT_EACH_LEVEL(Dither);

TEST_P(Dither, GivesTheSameAtEveryLevelAndWidth) {
    Random random(1);
    for (const Kind kind : {Kind::TwoLevels, Kind::Levels, Kind::AnyLimits}) {
        const rows::DitherTables tables = RandomTables(random, kind);
        const rows::DitherPlan plan = rows::PlanDither(tables);
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
                    const rows::DitherCells cells{thresholds.data(), size};
                    Bytes actual = pixels, same = pixels;
                    rows::DitherRow(plan, {cells, first, channels, width, pixels.data(), actual.data()});
                    ASSERT_TRUE(SameBytes(actual, expected)) << size << ", " << channels << ", " << width;
                    rows::DitherRow(plan, {cells, first, channels, width, same.data(), same.data()});
                    ASSERT_TRUE(SameBytes(same, expected)) << "in place";
                }
    }
}

}  // namespace
