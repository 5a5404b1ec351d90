// Stamp: a blurred picture in two colours.
#pragma once

#include "sdk/PluginInterface.h"

namespace tqx {

// Blurs three times by radius / 3 and maps what is darker than the threshold (0 to 1) to `black`,
// what is lighter to `white`, and a band of `softness` around it smoothly from one to the other.
// Each colour goes by its own channel, gray by the colours' green; alpha is not written. Gives a
// new picture, owned by the caller, nil when a picture can't be used or made. `dest`, which may
// be nil, receives the first of the blurs: intended.
sdk::Object* StampFilter(sdk::Object* self, sdk::Object* dest, double radius, double threshold, double softness,
                         sdk::Color black, sdk::Color white);

}  // namespace tqx
