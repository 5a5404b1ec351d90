// The wider form of picking pixels, for Nearest.cpp alone.
#pragma once

#include "plugin/rows/Nearest.h"
#include "plugin/rows/X86.h"

namespace rows {

#ifdef ROWS_X86
// Picks from the first columns on, sixteen at a time, as long as those lie close together; gives
// how many were picked.
std::int32_t PickAvx512(const PixelSpan& span, const std::uint8_t* row, std::int32_t width, const std::int32_t* columns,
                        std::int32_t count, std::uint8_t* picked);
#endif

}  // namespace rows
