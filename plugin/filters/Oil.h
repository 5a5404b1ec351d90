// Oil paint: the mean of the most populated intensity bin around each pixel.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// For each pixel and colour channel the samples up to `range` pixels away, cut at the picture's
// edges, are sorted into `levels` bins; the result is the mean of the fullest bin. Nil for levels
// below 1, also when a destination is given; above 256 counts as 256. A negative range has no
// samples and gives 0.
//
// Alpha is counted as well, in bins that are never emptied: they accumulate over all pixels of all
// calls since the plug-in was loaded, and are compared with the counts of blue. So the alpha of a
// result depends on earlier calls: intended. The destination is given or made as for every filter.
sdk::Object* OilFilter(sdk::Object* self, sdk::Object* dest, std::int32_t levels, std::int32_t range);

}  // namespace tqx
