// Tone curves: every channel byte mapped through a table of 256 entries.
//
// Each takes a destination, or nil for a new picture like this one, and gives the destination,
// owned by the caller, or nil when either picture can't be used. Channels without a curve keep
// the destination's bytes. A picture that is neither gray nor RGB gives the untouched
// destination. A destination may be the picture itself.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Power curves: entry i = 255 (i / 255)^(1 / gamma), rounded. Any gamma is taken: what the
// arithmetic gives is clamped to 0..255. Without an alpha gamma alpha stays. A gray picture given
// three colour gammas uses their weighted mean in whole numbers, by which 2.2, 2.2, 2.2 is 2.
sdk::Object* GammaFilter(sdk::Object* self, sdk::Object* dest, double gamma);
sdk::Object* GammaFilter(sdk::Object* self, sdk::Object* dest, double gamma, double alphaGamma);
sdk::Object* GammaFilter(sdk::Object* self, sdk::Object* dest, double redGamma, double greenGamma, double blueGamma);
sdk::Object* GammaFilter(sdk::Object* self, sdk::Object* dest, double redGamma, double greenGamma, double blueGamma,
                         double alphaGamma);

// Gain and bias: a gain curve by power functions (Perlin), then the rational bias curve of Schlick
// (Fast Alternatives to Perlin's Bias and Gain Functions, 1994), one table for every channel,
// alpha included. 0.5 and 0.5 is the identity; inputs 0
// and 255 always give 0 and 255.
sdk::Object* GainFilter(sdk::Object* self, sdk::Object* dest, double gain, double bias);

// The caller's tables. Entries past an array's end are 0, elements past 256 do not count, a nil
// array is all 0; of a value the low byte is stored, unclamped: intended. A gray picture given
// red, green and blue uses green.
sdk::Object* TransferFilter(sdk::Object* self, sdk::Object* dest, sdk::Array* gray);
sdk::Object* TransferFilter(sdk::Object* self, sdk::Object* dest, sdk::Array* gray, sdk::Array* alpha);
sdk::Object* TransferFilter(sdk::Object* self, sdk::Object* dest, sdk::Array* red, sdk::Array* green, sdk::Array* blue);
sdk::Object* TransferFilter(sdk::Object* self, sdk::Object* dest, sdk::Array* red, sdk::Array* green, sdk::Array* blue,
                            sdk::Array* alpha);

// A fixed V-shaped curve, 255 at both ends and 0 in the middle, for every channel, alpha included.
sdk::Object* SolarizeFilter(sdk::Object* self, sdk::Object* dest);

}  // namespace tqx
