// Scaling along rows: weighted sums of the bytes of neighbouring columns, in double precision.
//
// The value of a pixel and channel is the sum of weight × byte from the left to the right,
// divided by the weights' total, clamped to 0..255 (not-a-number gives 0) and rounded to single
// precision. Every sum is made in that order, one product and one rounding at a time; the wide
// forms sum several rows side by side.
//
// A sum that keeps its order can't be split among the lanes of a register, but sums of different
// rows have nothing to do with each other. So kLanes rows, a band, go along together, one row a lane:
// the bytes of a band are turned so that what belongs to one column and channel lies side by side,
// every product and addition serves all rows, and the sums are turned back into rows.
//
// A band is kLanes rows. Values of a band lie in lanes: value v of row r at v × kLanes + r, with
// v = x × (values a pixel) + channel.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"
#include "plugin/rows/PixelLayout.h"
#include "plugin/rows/Taps.h"

namespace rows {

// What is read of a source pixel and the values that makes.
struct Samples {
    PixelLayout layout;  // red, green, blue or gray; then alpha if it is read
    int bytes;           // channels read of a pixel, 1 to 4
    bool luma;           // the first three make one value: 0.3 red + 0.59 green + 0.11 blue

    // Values of a pixel.
    int Values() const { return luma ? bytes - 2 : bytes; }
};

// One pixel of a row: the definition. Writes Values() doubles, each a single.
void SumAcrossPixel(const Samples& samples, const Taps& taps, const std::uint8_t* row, double* values);

// One value of some rows of sampled bytes. Each row is given by its address; the column's channel has
// its bytes from `offset` on, `stride` bytes apart, the first of them column 0's.
void SumAcrossSamples(const Taps& taps, const std::uint8_t* const* rows, int count, std::int64_t offset, int stride,
                      float* values);

// The first `count` bytes of kLanes rows, `stride` bytes apart, as doubles in lanes. Reads and
// writes up to 15 values past the count.
using BytesToLanesFunction = void(const std::uint8_t* band, std::int64_t stride, std::int64_t count, double* lanes);
extern const Forms<BytesToLanesFunction> kBytesToLanes;

// Red, green and blue of `pixels` pixels in lanes become one value each; with 4 values a pixel the
// last stays. In place: 3 values become 1, 4 become 2.
void LumaOfLanes(int values, std::int64_t pixels, double* lanes);

// Sums for `count` columns with 1 to 4 values a pixel. `lanes` begins with source column
// `firstColumn`. Writes count × values × kLanes floats, in lanes.
using SumAcrossFunction = void(int values, const Taps* columns, std::int64_t count, const double* lanes,
                               std::int64_t firstColumn, float* sums);
extern const Forms<SumAcrossFunction> kSumAcross;

// Values in lanes as rows, `stride` doubles apart. Writes whole groups of 8 values, so up to 7
// past the count, and reads as many.
using LanesToRowsFunction = void(const float* sums, std::int64_t count, double* rows, std::int64_t stride);
extern const Forms<LanesToRowsFunction> kLanesToRows;

}  // namespace rows
