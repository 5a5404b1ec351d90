// Scaled samples that lie apart in a row, from the source's bytes by the definition of ScaleAcross.h and
// ScaleDown.h. Samples have nothing to do with each other, so the wide forms sum some side by side, one
// a lane, each in its own order.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"
#include "plugin/rows/Taps.h"

namespace rows {

struct ScatteredRow {
    const Taps* columns;  // the list of each column
    Taps down;
    const std::uint8_t* const* rows;  // sampled bytes, one row a weight of `down`
    int values;                       // of a pixel, 1 to 4
};

// Makes the bytes of `count` samples; a place is its column × values + channel. Reads up to 3 bytes past
// the last of a row.
using SumScatteredFunction = void(const ScatteredRow& row, const std::int32_t* places, std::int64_t count,
                                  std::uint8_t* bytes);
extern const Forms<SumScatteredFunction> kSumScattered;

// The same for long lists along rows, one sample after the other: the wide forms sum some rows of it side
// by side. Reads up to 15 bytes past the last of a row.
extern const Forms<SumScatteredFunction> kSumScatteredLong;

// The most weights of a list up to which fetching the bytes of several samples one by one is quicker.
inline constexpr std::int32_t kMostScatteredTaps = 12;

}  // namespace rows
