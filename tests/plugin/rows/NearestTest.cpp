// Picked pixels at every level against the plain ones.
#include <gtest/gtest.h>

#include "plugin/rows/Nearest.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using rows_test::Bytes;
using rows_test::Random;

AT_EACH_LEVEL(PickPixels);

// Rows end with their last span, so that a step too far is seen by the sanitizer.
TEST_P(PickPixels, TakesTheSpansOfTheColumns) {
    Random random(1);
    for (int round = 0; round < 1500; ++round) {
        const int pixelSize = random.Between(1, 4), size = random.Between(1, pixelSize), offset = random.Below(9);
        const rows::PixelSpan span{pixelSize, offset, size};
        const int width = random.Between(1, 90), count = random.Below(120);
        const Bytes row = random.NextBytes(static_cast<std::size_t>(offset + span.Extent(width)));
        std::vector<std::int32_t> columns;
        for (int i = 0; i < count; ++i) columns.push_back(random.Below(width));
        std::sort(columns.begin(), columns.end());
        const int packed = rows::PickedPixelSize(span);
        Bytes picked(static_cast<std::size_t>(count * packed));
        rows::kPickPixels.Chosen()(span, row.data(), width, columns.data(), count, picked.data());
        for (int i = 0; i < count; ++i) {
            const std::int64_t from = offset + std::int64_t{columns[static_cast<std::size_t>(i)]} * pixelSize;
            for (int byte = 0; byte < size; ++byte)
                ASSERT_EQ(picked[static_cast<std::size_t>(i * packed + byte)],
                          row[static_cast<std::size_t>(from + byte)]);
        }
    }
}

}  // namespace
