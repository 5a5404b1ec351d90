// The threshold matrices of ordered dithering.
#pragma once

#include <cstdint>

namespace tqx {

inline constexpr std::int32_t kLargestDitherMatrix = 16;

// size × size thresholds; of each row the first `size` count.
struct DitherMatrix {
    std::int32_t size;
    std::uint8_t threshold[kLargestDitherMatrix][kLargestDitherMatrix];
};

// The matrix of a number from 1 to 10, null for any other.
const DitherMatrix* FindDitherMatrix(std::int32_t number);

}  // namespace tqx
