// One row from a pixel layout to another.
#pragma once

#include <cstdint>

#include "host/images/Image.h"

namespace host {

// Converts `width` pixels; the rows must not overlap. Colours become gray by
// (77 R + 151 G + 28 B) / 256, truncated; missing alpha is 255.
void ConvertRow(const std::uint8_t* source, PixelLayout from, std::uint8_t* result, PixelLayout to, std::int32_t width);

}  // namespace host
