// Complementing pixels in place.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Each channel byte b of the rectangle (cut to the picture) becomes 255 - b: gray; gray and alpha;
// red, green and blue; but of a picture with red, green, blue and alpha only red and blue.
// Anything else is silently left. Yields for the picture before the first row and after each.
void Invert(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

// The whole picture.
void Invert(sdk::Object* self);

}  // namespace tqx
