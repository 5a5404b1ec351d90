// Scaling by picking the nearest pixel above and to the left.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Scales the whole source to width × height pixels at this picture's top left corner, in this
// picture's layout; sizes above this picture's are cut to it. Pixel (x, y) is the source's pixel
// (trunc(x · source width / width), trunc(y · source height / height)): no half pixel is added,
// intended. Colour becomes gray by (77 red + 151 green + 28 blue) / 256, gray becomes red = green = blue.
// Alpha is copied where both have it, but not from gray with alpha to colours with alpha.
//
// True when it ran, also when the source has no columns. False, with nothing written, for a nil
// source, a picture that can't be used or has no channels, or a size below 1. Yields for both
// pictures first and for this one after each row.
bool ScaleFast(sdk::Object* self, sdk::Object* source, std::int32_t width, std::int32_t height);

}  // namespace tqx
