// Scaling along columns: weighted sums of rows of values, in double precision.
//
// A byte is the sum of weight × value from the top row to the bottom row, divided by the weights'
// total, clamped to 0..255 (not-a-number gives 0) and truncated. Every sum is made in that order,
// one product and one rounding at a time; the wide forms sum several values of a row side by side.
//
// Here neighbouring values of a row fill the registers without being turned, since all have the same
// weights. Rows of sums are walked in pieces of kPiece values, small enough for the sums of a piece
// to stay in registers from the first weight to the last.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"
#include "plugin/rows/Taps.h"

namespace rows {

// Rows to add to one output row. When it can't have all its rows at once, its sums are carried
// from one call to the next.
struct DownRow {
    const double* const* rows;  // values from 0 to 255, one row a weight
    const double* weights;
    int count;
    bool begins;          // the sums start with these rows; else with what was carried
    bool ends;            // the sums are complete: makes bytes; else carries them
    double total;         // as in Taps
    double reciprocal;    // as in Taps
    double* carried;      // sums; used unless the call both begins and ends them
    std::uint8_t* bytes;  // the result
};

// Adds to the outputs one after the other, piece by piece: `values` values each, a multiple of
// kPiece.
using SumDownFunction = void(const DownRow* outputs, int count, std::int64_t values);
extern const Forms<SumDownFunction> kSumDown;

// sums[i] += weight × value i, for rows of single-precision values at any address.
void AddWeighted(double weight, const std::uint8_t* floats, std::int64_t count, double* sums);

// Bytes of complete sums.
void BytesOfSums(const double* sums, double total, std::int64_t count, std::uint8_t* bytes);

}  // namespace rows
