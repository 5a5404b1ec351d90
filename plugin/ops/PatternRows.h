// Applying one change to every pixel of a picture's rectangle, in place.
#pragma once

#include <cstdint>

#include "plugin/buffer/PixelBuffer.h"
#include "plugin/ops/Rectangle.h"
#include "plugin/rows/Fill.h"

namespace tqx {

// A rectangle cut to the picture.
Rectangle ClipTo(const PixelBuffer& buffer, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

// Changes the pixels of a rectangle that was cut to the picture. Does nothing for an empty one or
// a picture that can't be used; yields for it before the first row and after each.
void ApplyInPlace(PixelBuffer& buffer, const Rectangle& area, const rows::PixelPattern& pattern);

}  // namespace tqx
