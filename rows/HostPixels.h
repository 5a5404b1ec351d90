// Drawing pixels of host pictures through a mask.
//
// A host pixel is four bytes: unused, red, green, blue. A mask is made of host pixels too. Each
// destination pixel is worked on from left to right, read whole with its source and mask pixels
// and then written, so rows may overlap with that meaning. Bytes of the destination that are no
// channel named here stay as they are. A width of 0 or below does nothing.
#pragma once

#include <cstdint>

#include "rows/PixelLayout.h"

namespace rows {

// Writes alpha, which is the mask's red (255 where `mask` is null), or 255 less it with `invert`;
// then red, green and blue. `to` has red, green, blue, alpha. Where alpha shares a byte with a
// colour, the colour stays.
void DrawMaskedRow(const std::uint8_t* picture, const std::uint8_t* mask, bool invert, const PixelLayout& to,
                   std::uint8_t* destination, std::int32_t width);

// Blends each colour with the mask's channel m of the same name: (m × destination + (255 - m) ×
// picture) / 255, truncated; with `invert` m counts as 255 less it. `to` has red, green, blue.
void BlendMaskedRow(const std::uint8_t* picture, const std::uint8_t* mask, bool invert, const PixelLayout& to,
                    std::uint8_t* destination, std::int32_t width);

}  // namespace rows
