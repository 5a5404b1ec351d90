// Turned blocks at every level against the plain ones.
#include <gtest/gtest.h>

#include "plugin/rows/Transpose.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using rows_test::Bytes;
using rows_test::Random;

AT_EACH_LEVEL(TransposePixels);

TEST_P(TransposePixels, TurnsBlocksOfEverySizeAndLeavesTheRest) {
    Random random(1);
    for (const int size : {1, 2, 3, 4})
        for (int width = 0; width < 36; ++width)
            for (int height = 0; height < 36; ++height) {
                const int stride = width * size + random.Below(5), turnedStride = height * size + random.Below(5);
                const Bytes source = random.NextBytes(static_cast<std::size_t>(stride * height));
                Bytes expected = random.NextBytes(static_cast<std::size_t>(turnedStride * width));
                Bytes actual = expected;
                for (int y = 0; y < height; ++y)
                    for (int x = 0; x < width; ++x)
                        for (int i = 0; i < size; ++i)
                            expected[static_cast<std::size_t>(x * turnedStride + y * size + i)] =
                                source[static_cast<std::size_t>(y * stride + x * size + i)];
                rows::TransposeFormsFor(size).Chosen()(source.data(), stride, actual.data(), turnedStride, width,
                                                       height);
                ASSERT_TRUE(support::SameBytes(actual, expected)) << width << " x " << height << " of " << size;
            }
}

}  // namespace
