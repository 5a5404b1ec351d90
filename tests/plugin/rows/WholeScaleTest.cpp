// Scaling in whole numbers at every level against the plain sums.
#include <gtest/gtest.h>

#include <vector>

#include "plugin/rows/WholeScale.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using rows::kWholeRows;
using rows::kWholeWeight;
using rows::WholeRun;

AT_EACH_LEVEL(WholeScale);

TEST_P(WholeScale, SumsTwoRowsOfEveryLength) {
    Random random(1);
    for (std::size_t count = 0; count < 150; ++count) {
        const Bytes upper = random.NextBytes(count + 1), lower(count + 1, 255);
        const int weight = static_cast<int>(count) % (kWholeWeight + 1);
        std::vector<std::uint16_t> plain(count + 1, 7), wide = plain;
        const auto size = static_cast<std::int64_t>(count);
        rows::kWholeSumDown.plain(upper.data(), lower.data(), weight, kWholeWeight - weight, size, plain.data());
        rows::kWholeSumDown.At(GetParam())(upper.data(), lower.data(), weight, kWholeWeight - weight, size,
                                           wide.data());
        ASSERT_EQ(wide, plain) << count;
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_EQ(plain[i], upper[i] * weight + lower[i] * (kWholeWeight - weight)) << count << ", " << i;
    }
}

TEST_P(WholeScale, PairsSumsWithThoseAStepFurtherOn) {
    std::vector<std::uint16_t> sums;
    for (int i = 0; i < 200; ++i) sums.push_back(static_cast<std::uint16_t>(i * 81));
    for (std::int64_t step = 1; step <= 4; ++step)
        for (std::int64_t count = 0; count < 150; ++count) {
            std::vector<std::uint32_t> plain(160, 7), wide = plain;
            rows::kWholePair.plain(sums.data(), step, count, plain.data());
            rows::kWholePair.At(GetParam())(sums.data(), step, count, wide.data());
            ASSERT_EQ(wide, plain) << step << ", " << count;
        }
}

// Sums up to the largest that there are, with every number of rows and every weight.
TEST_P(WholeScale, SumsRunsOfPairs) {
    Random random(2);
    constexpr std::int64_t kRuns = 5;
    constexpr std::uint64_t kMostSum = 255 * kWholeWeight;
    std::vector<std::uint32_t> pairs[kWholeRows];
    const std::uint32_t* pairRow[kWholeRows];
    for (int row = 0; row < kWholeRows; ++row) {
        for (int i = 0; i < 200; ++i)
            pairs[row].push_back(static_cast<std::uint32_t>((kMostSum - random.Next() % (16 << row)) |
                                                            random.Next() % (kMostSum + 1) << 16));
        pairRow[row] = pairs[row].data();
    }
    for (int places = 0; (1 << places) <= kWholeWeight; ++places) {
        const std::uint64_t most = std::uint64_t{1} << places;
        const int shift = places + 6;
        std::vector<WholeRun> runs(kRuns);
        for (WholeRun& run : runs) {
            for (std::int32_t& base : run.base) base = static_cast<std::int32_t>(random.Next() % 190);
            for (int i = 0; i < WholeRun::kValues; ++i) {
                const std::uint64_t weight = random.Next() % (most + 1);
                run.index[i] = static_cast<std::int32_t>(random.Next() % WholeRun::kGroup);
                run.weights[i] = static_cast<std::uint32_t>(weight | (most - weight) << 16);
            }
        }
        for (int rows = 1; rows <= kWholeRows; ++rows) {
            Bytes plain[kWholeRows], wide[kWholeRows];
            std::uint8_t *plainRow[kWholeRows], *wideRow[kWholeRows];
            for (int row = 0; row < kWholeRows; ++row) {
                plain[row] = wide[row] = Bytes(kRuns * WholeRun::kValues, 3);
                plainRow[row] = plain[row].data();
                wideRow[row] = wide[row].data();
            }
            rows::kWholeSumAcross.plain(runs.data(), kRuns, pairRow, rows, shift, plainRow);
            rows::kWholeSumAcross.At(GetParam())(runs.data(), kRuns, pairRow, rows, shift, wideRow);
            for (int row = 0; row < kWholeRows; ++row) ASSERT_EQ(wide[row], plain[row]) << shift << ", " << rows;
        }
    }
}

}  // namespace
