// Three-tap averages at every level against the plain ones.
#include <gtest/gtest.h>

#include <cmath>

#include "plugin/rows/FractionalBlur.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;

constexpr std::int64_t kMany = 1 << 30;

rows::ThreeTaps TapsOf(double share) { return {share, 1 / (2 * share + 1)}; }

std::uint8_t Mixed(const rows::ThreeTaps& taps, int neighbours, int sample) {
    const double value = taps.norm * std::fma(taps.share, neighbours, sample);
    return value > 0 ? static_cast<std::uint8_t>(value) : 0;
}

// Fractions of decimal radii, which come close to whole numbers most often, and any others.
std::vector<double> Shares() {
    Random random(1);
    std::vector<double> shares = {0, 0.5, 1.0 / 3, 2.0 / 3, 0x1.fffffffffffffp-1, 1e-300, 1e-9};
    for (int i = 1; i < 10; ++i) shares.push_back(i / 10.0);
    for (int i = 1; i < 10; ++i) shares.push_back(7 + i / 10.0 - 7);
    for (int i = 0; i < 10; ++i) shares.push_back(random.Next() % 1000 / 1000.0);
    for (int i = 0; i < 10; ++i) shares.push_back(random.Next() / 4294967296.0);
    for (double& share : shares) share -= std::floor(share);
    return shares;
}

// Every sample beside every sum of its neighbours.
void ExpectEverySum(const rows::ThreeTaps& taps) {
    const rows::ThreeTapsPlan plan = rows::PlanThreeTaps(taps, kMany);
    for (int sample = 0; sample < 256; ++sample) {
        Bytes above(511), below(511), row(511, static_cast<std::uint8_t>(sample)), result(511);
        for (std::size_t sum = 0; sum < 511; ++sum) {
            above[sum] = static_cast<std::uint8_t>(sum / 2);
            below[sum] = static_cast<std::uint8_t>(sum - sum / 2);
        }
        rows::MixRows(plan, above.data(), row.data(), below.data(), 511, result.data());
        for (int sum = 0; sum < 511; ++sum)
            ASSERT_EQ(result[static_cast<std::size_t>(sum)], Mixed(taps, sum, sample))
                << sample << " between neighbours of " << sum << ", share " << taps.share;
    }
}

AT_EACH_LEVEL(FractionalBlur);

TEST_P(FractionalBlur, IsExactForEverySumAtEveryLevel) {
    for (const double share : Shares()) ExpectEverySum(TapsOf(share));
    ExpectEverySum({std::nan(""), std::nan("")});
}

TEST_P(FractionalBlur, AveragesInWholeNumbers) {
    const auto byWords = rows::PlanThreeTaps(TapsOf(0.5), kMany).byWholes;
    int whole = 0, words = 0, limited = 0, flipped = 0;
    for (int i = 0; i < 100; ++i) {
        const rows::ThreeTapsPlan plan = rows::PlanThreeTaps(TapsOf(i / 100.0), kMany);
        whole += plan.whole;
        words += plan.whole && plan.byWholes == byWords;
        limited += plan.whole && plan.wholeTaps.limited;
        flipped += plan.whole && plan.wholeTaps.flip != 0;
    }
    EXPECT_GE(whole, 98);  // the others go by doubles
    EXPECT_GE(words, 20);
    EXPECT_LT(words + limited, whole);
    EXPECT_GT(limited, flipped);
    EXPECT_LT(limited, whole);
    EXPECT_GT(flipped, 0);
    EXPECT_FALSE(rows::PlanThreeTaps(TapsOf(0.3), 1000).whole) << "no time to find it";
    EXPECT_FALSE(rows::PlanThreeTaps({std::nan(""), std::nan("")}, kMany).whole);
}

void ExpectEveryLength(const rows::ThreeTaps& taps) {
    Random random(3);
    const rows::ThreeTapsPlan plan = rows::PlanThreeTaps(taps, kMany);
    for (int count = 0; count < 200; ++count) {
        const Bytes above = random.NextBytes(200), row = random.NextBytes(200), below = random.NextBytes(200);
        Bytes result(200, 77);
        rows::MixRows(plan, above.data(), row.data(), below.data(), count, result.data());
        for (std::size_t i = 0; i < result.size(); ++i)
            ASSERT_EQ(result[i],
                      static_cast<int>(i) < count ? Mixed(taps, above[i] + below[i], row[i]) : std::uint8_t{77});
    }
}

// Of averages that have limits, of others, and of those in words.
TEST_P(FractionalBlur, TakesEveryLength) {
    for (const double share : {0.3, 0.37, 0.4}) ExpectEveryLength(TapsOf(share));
}

TEST_P(FractionalBlur, MixesAlongRowsOfEveryWidth) {
    Random random(4);
    const rows::ThreeTaps taps = TapsOf(0.7);
    const rows::ThreeTapsPlan plan = rows::PlanThreeTaps(taps, kMany);
    for (int channels = 1; channels <= 4; ++channels)
        for (int width = 1; width < 150; ++width) {
            const int count = channels * width;
            const Bytes row = random.NextBytes(static_cast<std::size_t>(count));
            Bytes result(row.size() + 1, 77);
            rows::MixAlongRow(plan, row.data(), channels, width, result.data());
            const auto value = [&](int i) { return row[static_cast<std::size_t>(i)]; };
            for (int i = 0; i < count; ++i) {
                const int left = i < channels ? value(i) : value(i - channels);
                const bool last = i >= count - channels;
                const int sum = last ? 2 * value(i) : left + value(i + channels);
                ASSERT_EQ(result[static_cast<std::size_t>(i)], Mixed(taps, sum, value(i)));
            }
            ASSERT_EQ(result.back(), 77);
        }
}

}  // namespace
