// Rows of pixels picked whole, by steps and one by one, against each pixel's own.
#include <gtest/gtest.h>

#include <algorithm>

#include "plugin/rows/PickSteps.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using support::SameBytes;

// Columns of a row, and their steps for the active level.
struct Planned {
    std::vector<std::int32_t> columns, from;
    Bytes index;
    rows::PickedPixels pixels{};

    Planned(int pixelSize, int width, std::vector<std::int32_t> given) : columns(std::move(given)) {
        from.resize(columns.size());
        index.resize(columns.size() * 4 + rows::kMostStepBytes);
        pixels.pixelSize = pixelSize;
        pixels.width = width;
        pixels.columns = columns.data();
        pixels.count = static_cast<std::int32_t>(columns.size());
        pixels.from = from.data();
        pixels.index = index.data();
        rows::PlanPickSteps(pixels);
    }

    Bytes Expected(const Bytes& row) const {
        Bytes picked;
        for (const std::int32_t column : columns)
            picked.insert(picked.end(), row.begin() + column * pixels.pixelSize,
                          row.begin() + (column + 1) * pixels.pixelSize);
        return picked;
    }
};

std::vector<std::int32_t> EvenColumns(int width, int count) {
    std::vector<std::int32_t> columns;
    for (int i = 0; i < count; ++i) columns.push_back(static_cast<std::int32_t>(double{1} * width / count * i));
    return columns;
}

std::vector<std::int32_t> RandomColumns(Random& random, int width, int count) {
    std::vector<std::int32_t> columns;
    for (int i = 0; i < count; ++i) columns.push_back(random.Below(width));
    std::sort(columns.begin(), columns.end());
    return columns;
}

AT_EACH_LEVEL(PickSteps);

// Row and result end with their last pixels, so that a step too far is seen by the sanitizer.
TEST_P(PickSteps, TakeThePixelsOfTheColumns) {
    Random random(1);
    for (int round = 0; round < 3000; ++round) {
        const int pixelSize = random.Between(1, 4), width = random.Between(1, 200), count = random.Between(1, 300);
        const Planned planned(pixelSize, width,
                              round % 3 == 0 ? RandomColumns(random, width, count) : EvenColumns(width, count));
        const Bytes row = random.NextBytes(static_cast<std::size_t>(width * pixelSize));
        Bytes picked(static_cast<std::size_t>(count * pixelSize));
        rows::PickRow(planned.pixels, rows::kPickSteps.Chosen(), row.data(), picked.data());
        ASSERT_TRUE(SameBytes(picked, planned.Expected(row))) << pixelSize << ", " << width << ", " << count;
        std::fill(picked.begin(), picked.end(), std::uint8_t{0});
        rows::PickRow(planned.pixels, rows::kPickSteps.plain, row.data(), picked.data());
        ASSERT_TRUE(SameBytes(picked, planned.Expected(row))) << pixelSize << ", " << width << ", " << count;
    }
}

// From half the columns to ten times as many nearly all pixels are picked by steps.
TEST_P(PickSteps, ReachAlmostToTheEnd) {
    for (int pixelSize = 1; pixelSize <= 4; ++pixelSize)
        for (const int count : {500, 640, 1000, 1300, 10000}) {
            const Planned planned(pixelSize, 1000, EvenColumns(1000, count));
            const std::int64_t left = count - std::int64_t{planned.pixels.steps} * planned.pixels.StepPixels();
            if (GetParam() == rows::CpuLevel::Plain)
                EXPECT_EQ(left, count);
            else
                EXPECT_LE(left * 1000 / count * pixelSize, 2 * 2 * rows::kMostStepBytes) << pixelSize << ", " << count;
        }
}

}  // namespace
