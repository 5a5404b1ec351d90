// The wider form of dithering, for Dither.cpp alone.
#pragma once

#include "plugin/rows/Dither.h"
#include "plugin/rows/X86.h"

namespace rows {

#ifdef ROWS_X86
// A row of cells expanded to the bytes of packed pixels, from the first cell on.
struct CellBytes {
    static constexpr std::int32_t kMostCells = 16;
    std::int32_t period;                          // bytes after which it repeats, at most 64
    std::uint8_t threshold[4 * kMostCells + 64];  // a register can be loaded from anywhere in a period
};

// Dithers `count` bytes, of which the first stands at byte `start` of the period.
void DitherAvx512(const DitherTables& tables, const CellBytes& cells, std::int32_t start, std::int64_t count,
                  const std::uint8_t* pixels, std::uint8_t* result);
#endif

}  // namespace rows
