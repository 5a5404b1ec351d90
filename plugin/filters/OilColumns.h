// The oil filter by columns: the neighbourhood of the next pixel gains one column of samples and
// loses one, whose histograms are added and taken away whole. The time doesn't grow with the range.
#pragma once

#include <cstdint>

#include "plugin/buffer/Operation.h"
#include "plugin/rows/OilHistogram.h"

namespace tqx {

// Paints pictures in memory that don't share pixels. False, with nothing done, for any others, for
// channels with alpha (which gathers pixel by pixel), for neighbourhoods too large to be counted in
// 16 bits, and when memory is short. `levels` is 1 to 256. Leaves in `blue` the histogram of the
// last painted pixel of a colour picture.
bool PaintByColumns(Operation& operation, std::int32_t levels, std::int32_t range, rows::OilHistogram* blue);

}  // namespace tqx
