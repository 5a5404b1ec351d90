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

// The same for odd sizes from 3 on, in 16 bits: (sum × factor) / 2^(16 + shift), truncated. The factor
// is 2^(16 + shift) / size rounded up, 2^shift the largest power of two below the size. Exact for
// all sums of sizes up to kLargestWordMean; 203 is the first size for which some are not.
struct WordMean {
    std::uint16_t factor;
    int shift;

    explicit WordMean(std::int32_t size) : factor(0), shift(31 - __builtin_clz(static_cast<unsigned>(size))) {
        factor = static_cast<std::uint16_t>((std::int64_t{1} << (16 + shift)) / size + 1);
    }

    [[gnu::always_inline]] std::uint8_t operator()(std::uint16_t sum) const {
        const auto high = static_cast<std::uint16_t>(std::uint32_t{sum} * factor >> 16);
        return static_cast<std::uint8_t>(high >> shift);
    }
};

inline constexpr std::int32_t kLargestWordMean = 201;

constexpr bool WordMeanServes(std::int32_t size) { return size >= 3 && size <= kLargestWordMean; }

}  // namespace rows
