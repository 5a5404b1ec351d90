// The gray of colour pixels, side by side.
#pragma once

#include <cstdint>

#include "plugin/rows/PixelLayout.h"
#include "plugin/rows/PixelSpan.h"

namespace rows {

// The gray of a colour: (77 red + 151 green + 28 blue) / 256, truncated. White stays 255.
constexpr std::uint8_t Gray(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return static_cast<std::uint8_t>((77 * red + 151 * green + 28 * blue) >> 8);
}

struct GrayPlan;
using GrayFunction = void(const GrayPlan& plan, const std::uint8_t* pixels, std::uint8_t* grays, std::int32_t width);

// Where colours lie, and what the wider forms need of it; made once an operation.
struct GrayPlan {
    GrayFunction* form;
    PixelLayout colour;      // red, green and blue first
    PixelSpan span;          // of these
    bool compact;            // in pixels of up to four bytes that don't interleave: wider forms can run
    std::uint8_t index[16];  // red, green, green and blue of four pixels, from the first read byte
};

GrayPlan PlanGray(const PixelLayout& colour);

// Writes the grays of `width` pixels, one byte each. The grays must not overlap the pixels. A width
// of 0 or below does nothing.
void GrayRow(const GrayPlan& plan, const std::uint8_t* pixels, std::uint8_t* grays, std::int32_t width);

}  // namespace rows
