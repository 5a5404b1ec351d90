// A picture's pixels as an off-screen world for the host.
#pragma once

#include "sdk/PluginInterface.h"

namespace tqx {

// A new GWorldTQX object that owns a world with a copy of the pixels, locked; owned by the caller.
// Gray makes a world of depth 8 with a gray ramp, alpha dropped; red, green, blue and alpha one of
// depth 32 (alpha, red, green, blue); red, green and blue one of depth 24. Nil for any other
// layout, an unusable or empty picture, or when the host can't. Yields once, before the work.
//
// In a world of depth 24 whose rows have room for four bytes a pixel, pixels are four bytes (255,
// red, green, blue), else three: intended.
sdk::Object* CopyGWorld(sdk::Object* self);

}  // namespace tqx
