// Applying one change to every pixel of a picture's rectangle, in place.
#pragma once

#include "plugin/buffer/PixelBuffer.h"
#include "plugin/buffer/Rectangle.h"
#include "plugin/rows/Fill.h"

namespace tqx {

// Changes the pixels of a rectangle that was cut to the picture. Does nothing for an empty one or
// a picture that can't be used; yields for it before the first row and after each.
void ApplyInPlace(PixelBuffer& buffer, const Rectangle& area, const rows::PixelPattern& pattern);

}  // namespace tqx
