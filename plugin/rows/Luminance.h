// Histograms of luminance.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"
#include "plugin/rows/PixelLayout.h"

namespace rows {

// Counts of pixels by luminance; they wrap at 2^32.
struct Histogram {
    std::uint32_t count[256];
};

// Counts `width` pixels of a row by their luminance, 0.813 green + 0.177 red + 0.01 blue in
// doubles, each sum fused with its product, truncated. These weights are its own, other than those
// of gray elsewhere: intended. The layout is that of ChannelSet::Rgb.
using CountLuminanceFunction = void(const PixelLayout& layout, const std::uint8_t* row, std::int32_t width,
                                    Histogram* histogram);
extern const Forms<CountLuminanceFunction> kCountLuminance;

}  // namespace rows
