// Sheared rows and columns at every level against the plain ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "plugin/rows/Skew.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using rows::PixelLayout;
using rows_test::Bytes;
using rows_test::Random;

struct Case {
    int count;
    PixelLayout from, to;
    Bytes background;
    double weight;
    int offset, sourceWidth, width;
};

std::uint8_t Byte(double value) { return static_cast<std::uint8_t>(static_cast<int>(value)); }

// Step by step: fill, move with blending, the end of the row.
void Reference(const Case& c, const std::uint8_t* source, std::uint8_t* destination) {
    const auto store = [&](int x, int channel, std::uint8_t value) {
        if (x >= 0 && x < c.width) destination[x * c.to.pixelSize + c.to.offset[channel]] = value;
    };
    for (int x = 0; x < c.width; ++x)
        for (int i = 0; i < c.count; ++i) store(x, i, c.background[static_cast<std::size_t>(i)]);
    std::uint8_t previous[4];
    for (int i = 0; i < c.count; ++i) previous[i] = Byte(c.weight * c.background[static_cast<std::size_t>(i)]);
    for (int x = 0; x < c.sourceWidth; ++x) {
        std::uint8_t value[4];
        for (int i = 0; i < c.count; ++i) value[i] = source[x * c.from.pixelSize + c.from.offset[i]];
        for (int i = 0; i < c.count; ++i) {
            const std::uint8_t left = Byte(c.weight * value[i]);
            store(c.offset + x, i, static_cast<std::uint8_t>(value[i] - (left - previous[i])));
            previous[i] = left;
        }
    }
    for (int i = 0; i < c.count; ++i) {
        const double background = c.background[static_cast<std::size_t>(i)];
        store(c.offset + c.sourceWidth, i, Byte(background - (c.weight * background - previous[i])));
    }
}

PixelLayout RandomLayout(Random& random, int count) {
    PixelLayout layout{random.Between(1, 4), {}};
    const int shift = random.Below(4) == 0 ? random.Below(20) : 0;
    const int reach = random.Below(8) == 0 ? 8 : layout.pixelSize;
    for (int i = 0; i < count; ++i) layout.offset[i] = shift + random.Below(reach);
    return layout;
}

Case RandomCase(Random& random) {
    constexpr double kWeights[] = {0, 1, 0.5, 1 - 1e-16, 1e-300};
    Case c{};
    c.count = random.Between(1, 4);
    c.from = RandomLayout(random, c.count);
    c.to = random.Below(2) == 0 ? c.from : RandomLayout(random, c.count);
    c.background = random.NextBytes(4);
    c.weight = random.Below(5) == 0 ? kWeights[random.Below(5)] : random.Below(1 << 20) / 1048576.0;
    c.sourceWidth = random.Below(150);
    c.width = random.Below(150);
    c.offset = random.Between(-170, 170);
    if (random.Below(2) == 0) c.offset = random.Between(-3, 3);
    return c;
}

rows::SkewPlan PlanOf(const Case& c) { return rows::PlanSkew(c.count, c.from, c.to, c.background.data()); }

AT_EACH_LEVEL(SkewRow);
AT_EACH_LEVEL(SkewColumns);

TEST_P(SkewRow, GivesThePlainBytesForAnyLayoutAndOffsetAtEveryLevel) {
    Random random(31);
    for (int round = 0; round < 4000; ++round) {
        const Case c = RandomCase(random);
        const Bytes source = random.NextBytes(700);
        Bytes expected = random.NextBytes(700);
        Bytes actual = expected;
        Reference(c, source.data(), expected.data());
        rows::SkewRow(PlanOf(c), c.weight, c.offset, source.data(), c.sourceWidth, actual.data(), c.width);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << "round " << round;
    }
}

TEST_P(SkewRow, FillsFirstAndKeepsThePixelOrderWhereRowsOverlap) {
    Random random(32);
    for (int round = 0; round < 2000; ++round) {
        const Case c = RandomCase(random);
        const int from = random.Below(40), to = random.Below(40);
        Bytes expected = random.NextBytes(800);
        Bytes actual = expected;
        Reference(c, expected.data() + from, expected.data() + to);
        rows::SkewRow(PlanOf(c), c.weight, c.offset, actual.data() + from, c.sourceWidth, actual.data() + to, c.width);
        ASSERT_TRUE(support::SameBytes(actual, expected)) << "round " << round;
    }
}

// Blocks that end with their last channel byte, so that a step too far is seen by the sanitizer.
TEST_P(SkewRow, ReadsAndWritesNothingPastTheLastChannel) {
    Random random(33);
    for (int width = 1; width < 100; ++width) {
        const Case c{3, {4, {0, 1, 2}}, {4, {0, 1, 2}}, {1, 2, 3}, 0.25, 0, width, width};
        const auto size = static_cast<std::size_t>(width - 1) * 4 + 3;
        const Bytes source = random.NextBytes(size);
        Bytes expected(size), actual(size);
        Reference(c, source.data(), expected.data());
        rows::SkewRow(PlanOf(c), c.weight, c.offset, source.data(), width, actual.data(), width);
        ASSERT_EQ(actual, expected);
    }
}

TEST_P(SkewRow, AWholeStepOnlyMoves) {
    const std::uint8_t background = 9;
    const rows::SkewPlan plan = rows::PlanSkew(1, {1, {0}}, {1, {0}}, &background);
    const Bytes source = {1, 2, 3};
    Bytes row(6);
    rows::SkewRow(plan, 0, 2, source.data(), 3, row.data(), 6);
    EXPECT_EQ(row, (Bytes{9, 9, 1, 2, 3, 9}));
}

TEST_P(SkewRow, AHalfStepBlendsNeighbours) {
    const std::uint8_t background = 0;
    const rows::SkewPlan plan = rows::PlanSkew(1, {1, {0}}, {1, {0}}, &background);
    const Bytes source = {100, 200};
    Bytes row(4);
    rows::SkewRow(plan, 0.5, 0, source.data(), 2, row.data(), 4);
    EXPECT_EQ(row, (Bytes{50, 150, 100, 0}));
}

// Any weight, those whose products are whole numbers, and their neighbours.
double RandomWeight(Random& random) {
    const double weight = random.Below(2) == 0 ? static_cast<std::uint32_t>(random.Next()) / 4294967296.0
                                               : random.Below(256) / static_cast<double>(random.Between(255, 256));
    if (random.Below(3) == 0) return std::min(std::nextafter(weight, random.Below(3) - 1.0 + weight), 1.0);
    return std::min(weight, 1.0);
}

TEST_P(SkewColumns, ShearsEachColumnByItsOwnWeight) {
    Random random(34);
    for (int count = 0; count < 200; ++count) {
        std::vector<double> weights;
        for (int i = 0; i < count; ++i) weights.push_back(RandomWeight(random));
        std::vector<std::uint16_t> shares;
        for (const double weight : weights) shares.push_back(rows::ShareOfSkew(weight));
        const auto size = static_cast<std::size_t>(count);
        const Bytes values = random.NextBytes(size);
        Bytes left = random.NextBytes(size), moved(size);
        const Bytes before = left;
        rows::kSkewColumns.Chosen()(weights.data(), shares.data(), values.data(), left.data(), moved.data(), count);
        for (std::size_t i = 0; i < size; ++i) {
            const std::uint8_t leaves = Byte(weights[i] * values[i]);
            ASSERT_EQ(left[i], leaves);
            ASSERT_EQ(moved[i], static_cast<std::uint8_t>(values[i] - leaves + before[i]));
        }
    }
}

}  // namespace
