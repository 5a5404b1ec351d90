// How one pixel of a scaled row or column is made of its source: a run of neighbours and their
// weights.
#pragma once

#include <cstdint>

namespace rows {

struct Taps {
    const double* weights;  // of `count` neighbours; a weight of 0 in between counts for nothing
    std::int32_t first;     // index of the first neighbour: a column or a row
    std::int32_t count;
    double total;  // sum of the weights, which the weighted sum is divided by

    // 1 / total where multiplying by it tells nearly every rounded quotient, and the wide forms
    // divide only where it leaves a doubt; 0 where they must always divide. It may stand only if
    // the total is a normal number above 0, no weight but 0 is less than 2^-70 of it, and the
    // weights' magnitudes add up to 4 times the total at most: quotients then lie within ±1020
    // and are 0 or no less than 2^-123.
    double reciprocal;
};

// How many rows the wide forms scale at once. Each row has a lane of its own, so that the sum of
// every pixel keeps its order.
inline constexpr int kLanes = 8;

// Sums of a row are made in pieces of so many values. Rows of values and of bytes that the
// functions of ScaleDown.h work on are padded to whole pieces.
inline constexpr int kPiece = 64;

}  // namespace rows
