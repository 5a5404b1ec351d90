// Converting pixels from one layout to another.
#pragma once

#include <cstdint>

#include "rows/PixelLayout.h"

namespace rows {

// What becomes of the destination's alpha.
enum class AlphaRule {
    Leave,        // not written
    Copy,         // each pixel's own alpha
    Invert,       // 255 less the pixel's own alpha
    CopyFirst,    // the alpha of the row's first pixel
    InvertFirst,  // 255 less the alpha of the row's first pixel
};

// A conversion, decided once and applied to any number of rows. Colour becomes gray by Gray();
// gray becomes red = green = blue. A rule other than Leave wants alpha in both sets.
struct Conversion {
    ChannelSet fromSet;
    ChannelSet toSet;
    PixelLayout from;
    PixelLayout to;
    AlphaRule alpha;
};

// The gray of a colour: (77 red + 151 green + 28 blue) / 256, truncated. White stays 255.
constexpr std::uint8_t Gray(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return static_cast<std::uint8_t>((77 * red + 151 * green + 28 * blue) >> 8);
}

// Converts `width` pixels from left to right. Each pixel is read whole and then written, red,
// green, blue (or gray) first and alpha last, so the rows may overlap with that meaning. Bytes of
// the destination that are no channel of the conversion stay as they are. A width of 0 or below
// does nothing.
void ConvertRow(const Conversion& conversion, const std::uint8_t* source, std::uint8_t* destination,
                std::int32_t width);

}  // namespace rows
