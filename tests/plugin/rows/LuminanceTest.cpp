// Counted luminances at every level against the plain ones.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "plugin/rows/CpuLevel.h"
#include "plugin/rows/Luminance.h"
#include "tests/plugin/rows/Levels.h"

namespace {

AT_EACH_LEVEL(Luminance);

TEST_P(Luminance, CountsTheSameAtEveryLevelAndWidth) {
    std::mt19937 random(1);
    std::vector<std::uint8_t> row(4 * 1200);
    for (std::uint8_t& byte : row) byte = static_cast<std::uint8_t>(random());
    for (const rows::PixelLayout& layout : {rows::PixelLayout{3, {0, 1, 2}}, {4, {3, 2, 1}}}) {
        rows::Histogram expected{};
        for (std::int32_t width = 0; width <= 1100; ++width) {
            if (width <= 140 || width % 97 == 0) {
                rows::Histogram counted{};
                rows::kCountLuminance.Chosen()(layout, row.data(), width, &counted);
                for (int i = 0; i < 256; ++i) ASSERT_EQ(counted.count[i], expected.count[i]) << width << " " << i;
            }
            const std::uint8_t* const pixel = row.data() + width * layout.pixelSize;
            const double red = pixel[layout.offset[0]], green = pixel[layout.offset[1]], blue = pixel[layout.offset[2]];
            ++expected.count[static_cast<int>(std::fma(blue, 0.01, std::fma(red, 0.177, green * 0.813)))];
        }
    }
}

TEST_P(Luminance, OfWhiteIsTheHighestLevelItReaches) {
    // The weights add up to 1 in decimal; the fused doubles decide whether white is 255 or 254.
    const std::uint8_t white[] = {255, 255, 255};
    rows::Histogram counted{};
    rows::kCountLuminance.Chosen()({3, {0, 1, 2}}, white, 1, &counted);
    EXPECT_EQ(counted.count[static_cast<int>(std::fma(255.0, 0.01, std::fma(255.0, 0.177, 255.0 * 0.813)))], 1u);
}

}  // namespace
