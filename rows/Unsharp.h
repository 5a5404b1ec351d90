// Sharpening of packed rows against a reference.
#pragma once

#include <cstdint>

namespace rows {

// Where a sample is at least `threshold` away from its reference it becomes trunc(reference + gain
// × (sample - reference)), clamped to 0..255; in double precision, not fused; not-a-number is 0.
struct UnsharpRule {
    double gain;
    std::int32_t threshold;
};

// Sharpens `count` samples in place. The rows don't overlap.
void UnsharpRow(const UnsharpRule& rule, const std::uint8_t* reference, std::int64_t count, std::uint8_t* samples);

}  // namespace rows
