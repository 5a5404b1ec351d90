// Diffusion: every pixel replaced by a random one nearby.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Copies each pixel, alpha included, from a place up to `level` columns and rows away, drawn from
// the process-wide generator `rand`: first the column, then the row, pixel by pixel; places outside
// the picture count as the nearest pixel of its edge. 0 copies the picture. Any level is taken. The
// destination is given or made as for every filter.
sdk::Object* DiffuseFilter(sdk::Object* self, sdk::Object* dest, std::int32_t level);

}  // namespace tqx
