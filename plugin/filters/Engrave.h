// Engraving: the difference to a diagonal neighbour around middle gray.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Every channel less that of the pixel `level` to the right and below (any sign; taken from the
// edge where there is none), plus 128, clamped to 0..255. Alpha too, so what was opaque
// everywhere comes out with an alpha of 128: intended.
sdk::Object* EngraveFilter(sdk::Object* self, sdk::Object* dest, std::int32_t level);

}  // namespace tqx
