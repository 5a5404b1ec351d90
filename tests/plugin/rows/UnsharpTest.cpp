// Sharpened rows at every level against the plain ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "plugin/rows/Unsharp.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;

constexpr std::int64_t kMany = 1 << 30;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::uint8_t Sharpened(const rows::UnsharpRule& rule, int sample, int reference) {
    if (std::abs(sample - reference) < rule.threshold) return static_cast<std::uint8_t>(sample);
    const double value = reference + rule.gain * (sample - reference);
    if (!(value > 0)) return 0;
    return value > 255 ? 255 : static_cast<std::uint8_t>(value);
}

// Every sample beside every reference.
void ExpectEveryPair(const rows::UnsharpRule& rule) {
    const rows::UnsharpPlan plan = rows::PlanUnsharp(rule, kMany);
    for (int reference = 0; reference < 256; ++reference) {
        const Bytes references(256, static_cast<std::uint8_t>(reference));
        Bytes samples(256);
        for (int i = 0; i < 256; ++i) samples[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(i);
        rows::UnsharpRow(plan, references.data(), 256, samples.data());
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(samples[static_cast<std::size_t>(i)], Sharpened(rule, i, reference))
                << i << " beside " << reference << ", gain " << rule.gain << ", threshold " << rule.threshold;
    }
}

AT_EACH_LEVEL(Unsharp);

TEST_P(Unsharp, IsExactForEveryPairAtEveryLevel) {
    Random random(1);
    std::vector<double> gains = {0,    1,   1.4, 2.2,   2.6,       3.4,        5,    0.999999999999999,
                                 1e-9, 1e9, -1,  1e300, kInfinity, -kInfinity, -0.5, std::nan("")};
    for (int i = 0; i < 40; ++i) gains.push_back(random.Next() % 4000 / 100.0 - 5);
    for (int i = 0; i < 20; ++i) gains.push_back(std::fma(4.0, random.Next() % 100 / 100.0, 1.0));
    for (const double gain : gains)
        for (const int threshold : {0, 7, 256}) ExpectEveryPair({gain, threshold});
}

// Registers full of small distances are looked up in tables of their own.
TEST_P(Unsharp, IsExactWhereEveryDistanceIsSmall) {
    for (const double gain : {1.4, 2.6, 9.0}) {
        const rows::UnsharpRule rule{gain, 3};
        const rows::UnsharpPlan plan = rows::PlanUnsharp(rule, kMany);
        for (int reference = 0; reference < 256; ++reference) {
            Bytes before;
            for (int i = 0; i < 128; ++i)
                before.push_back(static_cast<std::uint8_t>(std::clamp(reference + i % 63 - 31, 0, 255)));
            const Bytes references(128, static_cast<std::uint8_t>(reference));
            Bytes samples = before;
            rows::UnsharpRow(plan, references.data(), 128, samples.data());
            for (std::size_t i = 0; i < samples.size(); ++i)
                ASSERT_EQ(samples[i], Sharpened(rule, before[i], reference)) << +before[i] << " beside " << reference;
        }
    }
}

// Registers of one pair each: products serve all but a few distances, which no other one beside them hides here.
TEST_P(Unsharp, IsExactForEveryPairByItself) {
    for (const double gain : {0.5, 1.0, 1.4, 2.2, 2.5, 7.3, 33.0, 126.9}) {
        const rows::UnsharpRule rule{gain, 2};
        const rows::UnsharpPlan plan = rows::PlanUnsharp(rule, kMany);
        EXPECT_TRUE(plan.steps.products.serve) << gain;
        for (int reference = 0; reference < 256; ++reference)
            for (int sample = 0; sample < 256; ++sample) {
                const Bytes references(64, static_cast<std::uint8_t>(reference));
                Bytes samples(64, static_cast<std::uint8_t>(sample));
                rows::UnsharpRow(plan, references.data(), 64, samples.data());
                ASSERT_EQ(samples, Bytes(64, Sharpened(rule, sample, reference)))
                    << sample << " beside " << reference << ", gain " << gain;
            }
    }
}

TEST_P(Unsharp, LooksUpWhereProductsAreNotExact) {
    int odd = 0;
    for (int percent = 1; percent <= 100; ++percent) {
        const rows::UnsharpPlan plan = rows::PlanUnsharp({1 + percent / 25.0, 2}, kMany);
        EXPECT_TRUE(plan.steps.products.serve) << percent;
        odd += plan.steps.products.odd;
    }
    EXPECT_GT(odd, 0);
    EXPECT_LT(odd, 100);
    EXPECT_FALSE(rows::PlanUnsharp({500.0, 2}, kMany).steps.products.serve);
    EXPECT_FALSE(rows::PlanUnsharp({2.0, 256}, kMany).steps.products.serve);
}

TEST_P(Unsharp, GoesInStepsWhereTheGainIsNotNegative) {
    for (const double gain : {0.0, 1.0, 1.4, 2.2, 3.7, 41.0, 1e12}) {
        EXPECT_TRUE(rows::PlanUnsharp({gain, 4}, kMany).stepped) << gain;
        EXPECT_FALSE(rows::PlanUnsharp({gain, 4}, 1000).stepped) << "no time to find them";
    }
    EXPECT_FALSE(rows::PlanUnsharp({-3.0, 4}, kMany).stepped);
}

TEST_P(Unsharp, LimitsStepsWhoseSumsRoundUp) {
    int limited = 0;
    for (int percent = 0; percent < 400; ++percent) {
        const rows::UnsharpPlan plan = rows::PlanUnsharp({1 + percent / 100.0, 0}, kMany);
        EXPECT_TRUE(plan.stepped) << percent;
        limited += plan.steps.limited;
    }
    EXPECT_GT(limited, 0);
    EXPECT_LT(limited, 400);
}

TEST_P(Unsharp, TakesEveryLength) {
    Random random(2);
    const rows::UnsharpRule rule{2.2, 3};
    const rows::UnsharpPlan plan = rows::PlanUnsharp(rule, kMany);
    for (std::int64_t count = 0; count < 200; ++count) {
        const Bytes references = random.NextBytes(200), before = random.NextBytes(200);
        Bytes samples = before;
        rows::UnsharpRow(plan, references.data(), count, samples.data());
        for (std::size_t i = 0; i < samples.size(); ++i)
            ASSERT_EQ(samples[i],
                      static_cast<std::int64_t>(i) < count ? Sharpened(rule, before[i], references[i]) : before[i]);
    }
}

}  // namespace
