// Scaling by quick arithmetic: single precision, each product added in one rounding, where the doubles
// of ScaleAcross.h and ScaleDown.h are the definition. What comes out is near the defined value, and
// geometry/QuickTaps.h says how near: mostly near enough to know the byte.
//
// Weights are divided by their total beforehand, and kMiddle is taken off every sample, which halves
// the numbers that are rounded. Every sum is made from both ends of its list to the middle, in the same
// order by all forms, which so give the same bits. Weights in the middle are the large ones: sums
// stay small, and so do their errors, until these are added.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"

namespace rows {

// Rows that go along together, a lane each. Value v of row r lies at v × kQuickLanes + r.
inline constexpr int kQuickLanes = 16;

inline constexpr int kMiddle = 128;

// A run of neighbours and their weights, each divided by the total. Lists side by side whose weights lie at the same
// place are summed quicker.
struct QuickTaps {
    const float* weights;
    std::int32_t first;
    std::int32_t count;
};

// Which weight of `count` a sum takes as its i-th: 0, count - 1, 1, count - 2, …
constexpr std::int32_t QuickTurn(std::int32_t i, std::int32_t count) { return i % 2 == 0 ? i / 2 : count - 1 - i / 2; }

// The first `count` bytes of kQuickLanes rows, `stride` bytes apart, less kMiddle, in lanes. Reads up to
// 31 bytes past the count and writes up to 3 values.
using QuickBytesToLanesFunction = void(const std::uint8_t* band, std::int64_t stride, std::int64_t count, float* lanes);
extern const Forms<QuickBytesToLanesFunction> kQuickBytesToLanes;

// Sums for `count` columns with 1 to 4 values a pixel, clamped to 0..255 less kMiddle. `lanes` begins
// with source column `firstColumn`.
using QuickSumAcrossFunction = void(int values, const QuickTaps* columns, std::int64_t count, const float* lanes,
                                    std::int64_t firstColumn, float* sums);
extern const Forms<QuickSumAcrossFunction> kQuickSumAcross;

// Values in lanes as rows, `stride` floats apart. Writes whole groups of 8 values, so up to 7 past
// the count, and reads as many.
using QuickLanesToRowsFunction = void(const float* sums, std::int64_t count, float* rows, std::int64_t stride);
extern const Forms<QuickLanesToRowsFunction> kQuickLanesToRows;

// An output row. The defined value of a sample lies between its sum + low and its sum + high.
struct QuickRow {
    const float* const* rows;  // of values less kMiddle, one row a weight
    const float* weights;
    int count;
    float low;
    float high;
    const std::uint64_t* whole;  // null, or a bit for each sample of a piece that is a whole number where it is open
    std::uint8_t* bytes;         // what sum + low gives, clamped and truncated; where it is a whole number, what
                                 // sum + high gives
    std::uint64_t* undecided;    // a bit for each other sample of a piece whose sum + high gives another byte
};

// Adds for the outputs piece by piece: the values from `at` to `end` of each, multiples of kPiece.
using QuickSumDownFunction = void(const QuickRow* outputs, int count, std::int64_t at, std::int64_t end);
extern const Forms<QuickSumDownFunction> kQuickSumDown;

}  // namespace rows
