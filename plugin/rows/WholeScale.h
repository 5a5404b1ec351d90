// Scaling in whole numbers, where every pixel is made of two neighbours at most, with weights that are
// multiples of a 64th: geometry/ScaleWhole.cpp says when and why that gives the defined bytes.
//
// Such sums leave nothing to round, so the rows are summed first: that is little work when they become
// longer.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"

namespace rows {

// Weights are whole numbers that add up to this at most.
inline constexpr int kWholeWeight = 64;

// Rows that are summed across together, so that their runs are read once.
inline constexpr int kWholeRows = 4;

// Two rows of bytes as one: upper[i] × upperWeight + lower[i] × lowerWeight.
using WholeSumDownFunction = void(const std::uint8_t* upper, const std::uint8_t* lower, int upperWeight,
                                  int lowerWeight, std::int64_t count, std::uint16_t* sums);
extern const Forms<WholeSumDownFunction> kWholeSumDown;

// Each sum in the low half of a number, with the one `step` further on in the high half.
using WholePairFunction = void(const std::uint16_t* sums, std::int64_t step, std::int64_t count, std::uint32_t* pairs);
extern const Forms<WholePairFunction> kWholePair;

// Where neighbouring values of a row come from: value i is the pair base[i / 8] + index[i], its halves
// times those of weights[i] and added.
struct WholeRun {
    static constexpr int kValues = 32, kGroup = 8;
    std::int32_t index[kValues];  // 0 to 7
    std::uint32_t weights[kValues];
    std::int32_t base[kValues / kGroup];
};

// Whole runs of `rows` rows, 1 to kWholeRows; `shift` bits of the sums are cut off, of which there are
// 8 more at most. Reads up to 7 pairs past the last one wanted.
using WholeSumAcrossFunction = void(const WholeRun* runs, std::int64_t count, const std::uint32_t* const* pairs,
                                    int rows, int shift, std::uint8_t* const* bytes);
extern const Forms<WholeSumAcrossFunction> kWholeSumAcross;

}  // namespace rows
