// Three-tap averages of packed rows, in double precision.
#pragma once

#include <cstdint>

namespace rows {

// A sample and its two neighbours become trunc(norm × (share × (neighbour + neighbour) + sample)),
// the inner step fused; not-a-number becomes 0. norm is 1 / (2 share + 1).
struct ThreeTaps {
    double share;  // of each neighbour, 0 to 1
    double norm;
};

// Mixes each of `count` bytes with those above and below. A null row is all zero. The result is
// none of the rows.
void MixRows(const ThreeTaps& taps, const std::uint8_t* above, const std::uint8_t* row, const std::uint8_t* below,
             std::int32_t count, std::uint8_t* result);

// Mixes each channel of `width` packed pixels with those left and right. The first pixel's left
// neighbour is itself; the last pixel takes itself for both. The result is not the row.
void MixAlongRow(const ThreeTaps& taps, const std::uint8_t* row, int channels, std::int32_t width,
                 std::uint8_t* result);

}  // namespace rows
