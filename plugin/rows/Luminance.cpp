// Luminance in doubles, counted.
#include "plugin/rows/Luminance.h"

#include <algorithm>

#include "plugin/rows/Blocks.h"
#include "plugin/rows/PixelSpan.h"
#include "plugin/rows/X86.h"

namespace rows {

namespace {

// The definition.
ROWS_INLINE std::int32_t LuminanceOf(const PixelLayout& layout, const std::uint8_t* pixel) {
    const double red = pixel[layout.offset[0]], green = pixel[layout.offset[1]], blue = pixel[layout.offset[2]];
    return static_cast<std::int32_t>(__builtin_fma(blue, 0.01, __builtin_fma(red, 0.177, green * 0.813)));
}

void CountPlain(const PixelLayout& layout, const std::uint8_t* row, std::int32_t width, Histogram* histogram) {
    for (std::int32_t x = 0; x < width; ++x)
        ++histogram->count[LuminanceOf(layout, row + std::int64_t{x} * layout.pixelSize)];
}

[[maybe_unused]] constexpr std::int32_t kPixelsATime = 512;

// Neighbouring pixels are often alike; several tables keep one count from waiting for the other.
struct ManyCounts {
    static constexpr std::int32_t kTables = 4;
    std::uint32_t count[kTables][256] = {};

    void Add(const std::int32_t* values, std::int32_t number) {
        std::int32_t i = 0;
        for (; i + kTables <= number; i += kTables)
            for (std::int32_t table = 0; table < kTables; ++table) ++count[table][values[i + table]];
        for (; i < number; ++i) ++count[0][values[i]];
    }

    void AddTo(Histogram* histogram) const {
        for (const auto& table : count)
            for (int value = 0; value < 256; ++value) histogram->count[value] += table[value];
    }
};

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/LuminanceWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

const Forms<CountLuminanceFunction> kCountLuminance = ROWS_FORMS(CountPlain, CountLuminance);

}  // namespace rows
