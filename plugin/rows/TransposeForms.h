// The wider form of a turned block, for Transpose.cpp alone.
#pragma once

#include <cstdint>

#include "plugin/rows/X86.h"

namespace rows {

#ifdef ROWS_X86
// Pixels on a side of a square that fits into sixteen registers of sixteen four-byte pixels.
constexpr std::int32_t kWideSquare = 16;

// Turns `across` × `down` such squares of four-byte pixels.
void TransposeSquaresAvx512(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                            std::int64_t destinationStride, std::int32_t across, std::int32_t down);
#endif

}  // namespace rows
