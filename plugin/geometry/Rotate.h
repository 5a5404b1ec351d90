// Rotation by any angle.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// This picture turned by `angle` degrees, positive as Rotate90 turns, in a new picture large enough
// for it; the corners are red, green, blue (and alpha), or gray, each by its low byte. Of gray with
// alpha only gray is turned, and the new picture's alpha stays as it was made.
//
// A multiple of 360 gives the picture itself, not a copy: intended; other multiples of 90 are exact turns.
// Any other angle is brought to within 45 degrees of zero by one of those and sheared three times,
// across, down and across, with neighbours blended. All pictures are made for this one, so by its
// factory; at most three of them live at a time. The caller owns the result. Nil for an angle that
// is not finite, a picture that can't be used or has no channels, or when one can't be made.
sdk::Object* Rotate(sdk::Object* self, double angle, std::int32_t red, std::int32_t green, std::int32_t blue,
                    std::int32_t alpha, std::int32_t gray);

}  // namespace tqx
