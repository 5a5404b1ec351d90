// Histograms and their fullest bin against counts made anew.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "plugin/rows/CpuLevel.h"
#include "plugin/rows/OilHistogram.h"
#include "tests/plugin/rows/Levels.h"

namespace {

AT_EACH_LEVEL(OilHistogram);

TEST_P(OilHistogram, FindsTheFirstFullestBinAtEveryLevel) {
    std::mt19937 random(1);
    for (std::int32_t levels = 1; levels <= 256; ++levels)
        for (const std::uint32_t most : {1u, 3u, 1000u, 0xFFFFFFFFu}) {
            rows::OilHistogram histogram{};
            for (std::uint32_t& count : histogram.count) count = most == 0xFFFFFFFFu ? random() : random() % (most + 1);
            std::int32_t fullest = 0;
            for (std::int32_t bin = 1; bin < levels; ++bin)
                if (static_cast<std::int32_t>(histogram.count[fullest]) <
                    static_cast<std::int32_t>(histogram.count[bin]))
                    fullest = bin;
            EXPECT_EQ(rows::kFullestBin.Chosen()(histogram, levels), fullest) << levels;
        }
}

TEST_P(OilHistogram, GivesTheLowByteOfTheMean) {
    rows::OilHistogram histogram{};
    EXPECT_EQ(rows::MeanOfBin(histogram, 3), 0);
    for (int i = 0; i < 3; ++i) rows::AddSample(histogram, 256, 7);
    EXPECT_EQ(rows::MeanOfBin(histogram, 7), 7);
    rows::RemoveSample(histogram, 256, 7);
    EXPECT_EQ(histogram.count[7], 2u);
    EXPECT_EQ(histogram.sum[7], 14u);
    histogram.count[7] = 0xFFFFFFFFu;  // -1 after a wrap
    histogram.sum[7] = 0x80000000u;
    EXPECT_EQ(rows::MeanOfBin(histogram, 7), 0);
}

TEST_P(OilHistogram, SlidesCountsTheSameAtEveryLevel) {
    std::mt19937 random(2);
    for (int bins = rows::kBinsAtOnce; bins <= 256; bins += rows::kBinsAtOnce)
        for (const unsigned most : {0u, 1u, 3u, 200u, 65535u})
            for (int round = 0; round < 20; ++round) {
                std::vector<std::uint16_t> counts, entering, leaving, expected;
                for (int i = 0; i < bins; ++i) {
                    leaving.push_back(static_cast<std::uint16_t>(random() % (most + 1)));
                    counts.push_back(
                        static_cast<std::uint16_t>(leaving.back() + random() % (most - leaving.back() + 1)));
                    entering.push_back(static_cast<std::uint16_t>(random() % (65536 + leaving.back() - counts.back())));
                    if (most < 65535) entering.back() = static_cast<std::uint16_t>(entering.back() % (most + 1));
                    expected.push_back(static_cast<std::uint16_t>(counts.back() + entering.back() - leaving.back()));
                }
                const std::int32_t fullest =
                    rows::kSlideCounts.Chosen()(counts.data(), entering.data(), leaving.data(), bins);
                EXPECT_EQ(fullest, std::max_element(expected.begin(), expected.end()) - expected.begin());
                ASSERT_EQ(counts, expected);
            }
}

TEST_P(OilHistogram, SlidesSums) {
    std::mt19937 random(3);
    std::vector<std::uint32_t> sums(256), entering(256), leaving(256), expected(256);
    for (std::size_t i = 0; i < sums.size(); ++i) {
        sums[i] = random(), entering[i] = random(), leaving[i] = random();
        expected[i] = i < 224 ? sums[i] + entering[i] - leaving[i] : sums[i];
    }
    rows::kSlideSums.Chosen()(sums.data(), entering.data(), leaving.data(), 224);
    EXPECT_EQ(sums, expected);
}

}  // namespace
