#include <gtest/gtest.h>

#include <random>

#include "rows/CpuLevel.h"
#include "rows/OilHistogram.h"

namespace {

TEST(OilHistogram, FindsTheFirstFullestBinAtEveryLevel) {
    std::mt19937 random(1);
    for (std::int32_t levels = 1; levels <= 256; ++levels)
        for (const std::uint32_t most : {1u, 3u, 1000u, 0xFFFFFFFFu}) {
            rows::OilHistogram histogram{};
            for (std::uint32_t& count : histogram.count) count = most == 0xFFFFFFFFu ? random() : random() % (most + 1);
            const rows::CpuLevel before = rows::ForceCpuLevel(rows::CpuLevel::Plain);
            const std::int32_t plain = rows::FullestBin(histogram, levels);
            rows::ForceCpuLevel(rows::CpuLevel::Avx512);
            EXPECT_EQ(rows::FullestBin(histogram, levels), plain) << levels;
            rows::ForceCpuLevel(before);
        }
}

TEST(OilHistogram, GivesTheLowByteOfTheMean) {
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

}  // namespace
