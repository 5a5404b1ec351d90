// Three-tap averages of packed rows.
#pragma once

#include <cstdint>

namespace rows {

// A sample and its two neighbours become trunc(norm × (share × (neighbour + neighbour) + sample)),
// in double precision, the inner step fused; not-a-number becomes 0. norm is 1 / (2 share + 1).
struct ThreeTaps {
    double share;  // of each neighbour, 0 to 1
    double norm;
};

// The same in whole numbers: a sample plus gain × (neighbour + neighbour - 2 sample), rounded down.
//
// Where that product is a whole number, or would be but for the last bits of the doubles, their
// roundings decide whether the average reaches the number or stays a hair below. They do so by
// how large the sample is: an average of v stays below, and becomes v - 1, for samples (turned
// upside down by `flip`, and 0 taken as 1) above limit[v].
struct WholeTaps {
    std::int32_t gain;      // 22 fraction bits
    std::int16_t wordGain;  // 16 fraction bits
    bool limited;           // whether any average stays below
    std::uint8_t flip;      // exclusive-or for samples: 0 or 255
    std::uint8_t limit[256];
};

// Averages, and a whole form where one gives the same for each of the 130,816 sums of neighbours
// and samples and enough samples will follow to pay for finding out.
struct ThreeTapsPlan {
    void (*byDoubles)(const ThreeTaps& taps, const std::uint8_t* first, const std::uint8_t* row,
                      const std::uint8_t* second, std::int64_t count, std::uint8_t* result);
    void (*byWholes)(const WholeTaps& taps, const std::uint8_t* first, const std::uint8_t* row,
                     const std::uint8_t* second, std::int64_t count, std::uint8_t* result);
    ThreeTaps taps;
    bool whole;
    WholeTaps wholeTaps;
};

ThreeTapsPlan PlanThreeTaps(const ThreeTaps& taps, std::int64_t samples);

// Mixes each of `count` bytes with those above and below. A null row is all zero. The result is
// none of the rows.
void MixRows(const ThreeTapsPlan& plan, const std::uint8_t* above, const std::uint8_t* row, const std::uint8_t* below,
             std::int32_t count, std::uint8_t* result);

// Mixes each channel of `width` packed pixels with those left and right. The first pixel's left
// neighbour is itself; the last pixel takes itself for both. The result is not the row.
void MixAlongRow(const ThreeTapsPlan& plan, const std::uint8_t* row, int channels, std::int32_t width,
                 std::uint8_t* result);

}  // namespace rows
