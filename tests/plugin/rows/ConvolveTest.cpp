// Convolved rows at every level against the plain ones.
#include <gtest/gtest.h>

#include <climits>

#include "plugin/rows/Convolve.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using support::SameBytes;

AT_EACH_LEVEL(Convolve);

// A row's form for all pixels against the definition pixel by pixel.
TEST_P(Convolve, GivesTheSameAtEveryLevelAndWidth) {
    Random random(1);
    const Bytes bytes = random.NextBytes(5 * 700);
    const std::pair<int, int> ranges[] = {{-2, 3}, {-128, 254}, {-32768, 254}, {-32769, -32768}, {INT_MIN, 254}};
    for (const auto& [least, most] : ranges)
        for (const double scale : {1.0, 0.04, -0.5, 1e-5, 1e300})
            for (int channels = 1; channels <= 4; ++channels)
                for (int width = 1; width <= 160; width += width < 40 ? 1 : 13) {
                    rows::Kernel kernel{{}, random.Between(-300, 300), scale};
                    const auto span = static_cast<std::uint64_t>(std::int64_t{most} - least + 1);
                    for (auto& weight : kernel.weight)
                        weight = static_cast<std::int32_t>(least + static_cast<std::int64_t>(random.Next() % span));
                    rows::KernelRows rows{{}, channels, width};
                    // Each row ends with its allocation, so that a step too far is seen.
                    std::vector<Bytes> copies;
                    for (int row = 0; row < 5; ++row)
                        copies.emplace_back(bytes.begin() + 700 * row, bytes.begin() + 700 * row + width * channels);
                    for (int row = 0; row < 5; ++row)
                        if (row == 2 || random.Below(8) != 0)
                            rows.row[row] = copies[static_cast<std::size_t>(row)].data();
                    Bytes expected(700, 9);
                    rows::ConvolveInOrder(kernel, rows, 0, width, expected.data());
                    Bytes result(700, 9);
                    rows::ConvolveRow(rows::PlanConvolution(kernel), rows, result.data());
                    ASSERT_TRUE(SameBytes(result, expected)) << channels << ", " << width << ", " << scale;
                }
}

// Magnitudes of 127 together, and deltas that fill 16 bits with them or are one too much.
TEST_P(Convolve, GivesTheSameWhereSumsFill16Bits) {
    const int width = 200;
    const Bytes zeros(width, 0), ones(width, 255);
    for (const auto& [first, second] : {std::pair{127, 0}, {-127, 0}, {100, -27}, {-1, 126}, {64, 64}, {-128, 0}})
        for (const int delta : {0, 382, 383, -382, -383, 32767, -32768, 40000, INT_MIN, INT_MAX})
            for (const double scale : {1.0, 0.01, -0.01})
                for (int bits = 0; bits < 32; ++bits) {
                    rows::Kernel kernel{{}, delta, scale};
                    kernel.weight[7] = first;
                    kernel.weight[24] = second;
                    rows::KernelRows rows{{}, 1, width};
                    for (int row = 0; row < 5; ++row) rows.row[row] = (bits >> row & 1 ? ones : zeros).data();
                    Bytes expected(width, 9), result(width, 9);
                    rows::ConvolveInOrder(kernel, rows, 0, width, expected.data());
                    rows::ConvolveRow(rows::PlanConvolution(kernel), rows, result.data());
                    ASSERT_TRUE(SameBytes(result, expected)) << first << ", " << second << ", " << delta;
                }
}

TEST_P(Convolve, GivesTheSameForEveryNumberOfNeighbours) {
    Random random(2);
    for (int count = 0; count <= 25; ++count) {
        const int width = random.Between(50, 90);
        rows::Kernel kernel{{}, 20, 1.0};
        for (int k = 0; k < count; ++k) kernel.weight[24 - k] = k % 2 == 0 ? 4 : -3;
        const Bytes bytes = random.NextBytes(static_cast<std::size_t>(15 * width));
        rows::KernelRows rows{{}, 3, width};
        for (int row = 0; row < 5; ++row) rows.row[row] = bytes.data() + 3 * width * row;
        Bytes expected(300, 9), result(300, 9);
        rows::ConvolveInOrder(kernel, rows, 0, width, expected.data());
        rows::ConvolveRow(rows::PlanConvolution(kernel), rows, result.data());
        ASSERT_TRUE(SameBytes(result, expected)) << count;
    }
}

TEST_P(Convolve, SeesWhatItStoredInTheMiddleRow) {
    const std::uint8_t none[4] = {};
    std::uint8_t row[4] = {1, 2, 3, 4};
    rows::Kernel kernel{{}, 0, 1.0};
    kernel.weight[11] = 2;  // the pixel to the left
    rows::ConvolveInOrder(kernel, {{none, none, row, none, none}, 1, 4}, 0, 4, row);
    EXPECT_EQ(Bytes(row, row + 4), (Bytes{2, 4, 8, 16}));
}

}  // namespace
