// Dividing box sums without dividing.
#pragma once

#include <cstdint>

namespace rows {

// floor(sum / size) for an odd size and 0 <= sum <= 255 × size, as trunc((sum + 1/2) × (1 / size)).
//
// The exact (sum + 1/2) / size lies at least 1 / (2 size) from any whole number. In single
// precision three roundings err by less than 255.5 × 2^-22, which is below that up to size 8191;
// in double precision it is for every size whose sums have 32 bits.
template <class Real>
struct Mean {
    Real reciprocal;

    explicit Mean(std::int32_t size) : reciprocal(Real{1} / static_cast<Real>(size)) {}

    [[gnu::always_inline]] std::uint8_t operator()(std::int32_t sum) const {
        const Real quotient = (static_cast<Real>(sum) + Real{0.5}) * reciprocal;
        return static_cast<std::uint8_t>(static_cast<std::int32_t>(quotient));
    }
};

inline constexpr std::int32_t kLargestSingleMean = 8191;

}  // namespace rows
