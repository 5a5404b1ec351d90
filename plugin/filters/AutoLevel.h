// Automatic levels: the contrast of a colour picture stretched in place.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Finds the luminances below which 0.5 % and above which 0.5 % of a rectangle's pixels lie, and
// maps that range linearly to 0 .. 255 for red, green and blue alike; alpha stays. False, and
// nothing changed, for a gray (intended) or unusable picture and for a rectangle without a pixel in
// it.
bool AutoLevel(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h);

// The same on the whole picture.
bool AutoLevel(sdk::Object* self);

}  // namespace tqx
