// Neon: bright edges on black.
#pragma once

#include "sdk/PluginInterface.h"

namespace tqx {

// Twice the length of the gradient of every channel, alpha included, from the pixels to the right
// and below; at most 255, truncated. Below the last row all is 0, so it lights up. Right of the
// last column lie the row's next bytes, padding or of a wider picture, and 0 where it has none:
// both intended.
sdk::Object* NeonFilter(sdk::Object* self, sdk::Object* dest);

}  // namespace tqx
