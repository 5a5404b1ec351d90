#include "plugin/rows/Luminance.h"

#include "plugin/rows/Blocks.h"
#include "plugin/rows/LoopForms.h"

namespace rows {

namespace {

constexpr std::int32_t kPixelsATime = 512;

struct Counting {
    ROWS_INLINE static void LuminancesOf(const PixelLayout& layout, const std::uint8_t* row, std::int32_t count,
                                         std::int32_t* luminance) {
        double red[kPixelsATime], green[kPixelsATime], blue[kPixelsATime];
        const std::uint8_t* pixel = row;
        for (std::int32_t x = 0; x < count; ++x, pixel += layout.pixelSize) {
            red[x] = pixel[layout.offset[0]];
            green[x] = pixel[layout.offset[1]];
            blue[x] = pixel[layout.offset[2]];
        }
        for (std::int32_t x = 0; x < count; ++x)
            luminance[x] =
                static_cast<std::int32_t>(__builtin_fma(blue[x], 0.01, __builtin_fma(red[x], 0.177, green[x] * 0.813)));
    }

    ROWS_INLINE static void Run(const PixelLayout& layout, const std::uint8_t* row, std::int32_t width,
                                Histogram* histogram) {
        std::int32_t luminance[kPixelsATime];
        // Neighbouring pixels are often alike; two tables keep one count from waiting for the other.
        std::uint32_t second[256] = {};
        for (const auto [x, count] : Blocks(width, kPixelsATime)) {
            LuminancesOf(layout, row + std::int64_t{x} * layout.pixelSize, count, luminance);
            for (std::int32_t i = 0; i + 1 < count; i += 2) {
                ++histogram->count[luminance[i]];
                ++second[luminance[i + 1]];
            }
            if (count % 2 != 0) ++histogram->count[luminance[count - 1]];
        }
        for (int i = 0; i < 256; ++i) histogram->count[i] += second[i];
    }
};

}  // namespace

const Forms<CountLuminanceFunction> kCountLuminance = LoopForms<Counting>::kTable;

}  // namespace rows
