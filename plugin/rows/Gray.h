// The gray of colour pixels, side by side.
#pragma once

#include <cstdint>

#include "plugin/rows/PixelLayout.h"

namespace rows {

// The gray of a colour: (77 red + 151 green + 28 blue) / 256, truncated. White stays 255.
constexpr std::uint8_t Gray(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return static_cast<std::uint8_t>((77 * red + 151 * green + 28 * blue) >> 8);
}

// Writes the grays of `width` pixels whose first three channels are red, green and blue, one byte
// each. The grays must not overlap the pixels. A width of 0 or below does nothing.
void GrayRow(const PixelLayout& colour, const std::uint8_t* pixels, std::uint8_t* grays, std::int32_t width);

}  // namespace rows
