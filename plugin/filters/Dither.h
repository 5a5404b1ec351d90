// Ordered dithering.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Reduces every channel, alpha included, to `levels` (2 to 256, else nil) evenly spaced values,
// choosing between the two nearest by a threshold matrix tiled from the picture's top left. The
// matrices are numbered 1 to 10; any other number gives the untouched destination. Where the
// pixel lies above the threshold it takes the lower value, so the picture comes out as its
// negative: intended.
sdk::Object* DitherFilter(sdk::Object* self, sdk::Object* dest, std::int32_t matrix, std::int32_t levels);

}  // namespace tqx
