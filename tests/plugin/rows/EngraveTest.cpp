// Engraved rows at every level against the plain ones.
#include <gtest/gtest.h>

#include <algorithm>

#include "plugin/rows/Engrave.h"
#include "tests/plugin/rows/Levels.h"

namespace {

using namespace rows_test;
using support::SameBytes;

std::uint8_t Engraved(int pixel, int other) {
    return static_cast<std::uint8_t>(std::clamp(pixel - other + 128, 0, 255));
}

AT_EACH_LEVEL(Engrave);

TEST_P(Engrave, IsExactForEveryPairAtEveryLevel) {
    Bytes pixels(65536), others(65536), expected(65536);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(i & 255);
        others[i] = static_cast<std::uint8_t>(i >> 8);
        expected[i] = Engraved(pixels[i], others[i]);
    }
    Bytes result(65536);
    rows::kEngraveRow.Chosen()(pixels.data(), others.data(), 65536, result.data());
    EXPECT_TRUE(SameBytes(result, expected));
    Bytes same = pixels;
    rows::kEngraveRow.Chosen()(same.data(), others.data(), 65536, same.data());
    EXPECT_TRUE(SameBytes(same, expected));
}

TEST_P(Engrave, ShiftsByAnyDistanceAtEveryLevelAndWidth) {
    Random random(1);
    const Bytes pixels = random.NextBytes(800), others = random.NextBytes(800);
    for (int channels = 1; channels <= 4; ++channels)
        for (const int width : {1, 2, 21, 22, 43, 64, 65, 150})
            for (const int shift : {0, 1, -1, 7, -30, 149, 1 << 30, -(1 << 30)}) {
                Bytes expected(800, 9), result(800, 9);
                for (int x = 0; x < width; ++x)
                    for (int c = 0; c < channels; ++c) {
                        const int other = std::clamp(x + shift, 0, width - 1);
                        expected[static_cast<std::size_t>(x * channels + c)] =
                            Engraved(pixels[static_cast<std::size_t>(x * channels + c)],
                                     others[static_cast<std::size_t>(other * channels + c)]);
                    }
                rows::EngraveShiftedRow(rows::kEngraveRow.Chosen(), pixels.data(), others.data(), channels, width,
                                        shift, result.data());
                ASSERT_TRUE(SameBytes(result, expected)) << width << " by " << shift;
            }
}

}  // namespace
