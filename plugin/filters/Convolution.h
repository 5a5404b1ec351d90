// Convolution with a kernel of the caller's.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Convolves every channel, alpha included, with 25 weights, five rows of five from the top left:
// trunc(scaleFactor × (delta + Σ weight × sample)), clamped to 0..255. The sum is 32 bits wide and
// wraps; a weight of 255 or more makes a hole that adds nothing: intended. A sample outside the
// picture is taken from the pixel's own row or column, not from the nearest edge: intended too. In
// place a pixel sees those before it changed.
//
// Gives `dest`, or for nil a new picture, owned by the caller. The new picture has this one's
// width and height exchanged (intended); what falls outside it is skipped. Nil when the array is
// nil or hasn't exactly 25 elements, or when a picture can't be used.
sdk::Object* ApplyMatrix(sdk::Object* self, sdk::Object* dest, sdk::Array* matrix);
sdk::Object* ApplyMatrix(sdk::Object* self, sdk::Object* dest, sdk::Array* matrix, std::int32_t delta);
sdk::Object* ApplyMatrix(sdk::Object* self, sdk::Object* dest, sdk::Array* matrix, std::int32_t delta,
                         double scaleFactor);

}  // namespace tqx
