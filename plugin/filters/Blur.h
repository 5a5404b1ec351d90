// Blurs. Each works down the columns into the destination and then along the destination's rows.
//
// All channels are blurred alike, alpha included. Each takes a destination, or nil for a new
// picture like this one, and gives the destination, owned by the caller, or nil when either can't
// be used. A destination that shares memory with the picture gets what one apart gets. When
// memory is short the destination is given as it stands, not nil: intended.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// The mean over squares of 2 radius + 1 pixels, truncated after each direction; edge pixels stand
// for what lies beyond. The fraction of the radius does not count; a radius below 0 or not a
// number is 0. From 4210752 on it is too large, which is as if memory were short.
sdk::Object* BoxBlurFilter(sdk::Object* self, sdk::Object* dest, double radius);

// The same several times over, which approaches a Gaussian: the first time into `dest`, each
// further time into a new picture. Gives the last one, and the picture itself for less than one
// iteration.
sdk::Object* BoxBlurFilter(sdk::Object* self, sdk::Object* dest, double radius, std::int32_t iterations);

// Mixes each pixel with its neighbours by the fraction f of the radius alone: 0.4 and 7.4 are the
// same, a whole number copies, and so does what is no finite number; intended. Of each direction: (f (left + right) +
// centre) / (2 f + 1), truncated. The first row and the last column count as their own neighbours on both sides; the
// last row and the first column only beyond the edge: intended.
sdk::Object* BoxBlurFractionalFilter(sdk::Object* self, sdk::Object* dest, double radius);

}  // namespace tqx
