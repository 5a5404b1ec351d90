// Which samples of a row quick scaling leaves open, from a bit for each.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"

namespace rows {

struct OpenSamples {
    std::int32_t* samples;  // the places of those in pieces that have few, in turn; room for kOpenAtOnce more
    std::int64_t sampleCount;
    std::int32_t* pieces;  // the other pieces, in turn
    std::int64_t pieceCount;
};

// So many places are written before it is known how many a piece has.
inline constexpr int kOpenAtOnce = 4;

// Adds those of `count` pieces, a word each; up to `few` are few.
using ListOpenFunction = void(const std::uint64_t* undecided, std::int64_t count, int few, OpenSamples* open);
extern const Forms<ListOpenFunction> kListOpen;

}  // namespace rows
