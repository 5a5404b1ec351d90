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

// Most steps as products: a rise is (distance << shift) × rise >> 16, a fall one more than that with
// `fall`, both held within 255. Distances that this does not hold for, a few at most, are odd; those below the
// threshold stay as they are.
struct UnsharpProducts {
    bool serve;  // else look the steps up
    bool odd;    // whether any distance is
    std::int32_t shift;
    std::uint16_t rise, fall;
    std::uint8_t threshold;
    // By the low four bits of a distance below 128 and of one from there on: a bit for each value of its
    // next three bits, set where it is odd.
    std::uint8_t oddLow[16], oddHigh[16];
};

// The rule in whole steps, by the distance between sample and reference: a result is the reference
// plus `rise`, or minus `fall` where the sample is below it, held within 0..255; and one less where
// that is below `limit`. The limits are there for products a hair below a whole number, which a
// sum of some size rounds up to it and a smaller one doesn't.
struct UnsharpSteps {
    std::uint8_t rise[256], riseLimit[256];
    std::uint8_t fall[256], fallLimit[256];
    bool limited;  // whether any limit is above 0
    UnsharpProducts products;
};

// The rule, and its steps where they give what it gives for each of the 65,536 pairs of samples
// (as they do for a gain of 0 or above) and enough samples will follow to pay for finding out.
struct UnsharpPlan {
    void (*byRule)(const UnsharpRule& rule, const std::uint8_t* reference, std::int64_t count, std::uint8_t* samples);
    void (*bySteps)(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count,
                    std::uint8_t* samples);
    UnsharpRule rule;
    bool stepped;
    UnsharpSteps steps;
};

UnsharpPlan PlanUnsharp(const UnsharpRule& rule, std::int64_t samples);

// Sharpens `count` samples in place. The rows don't overlap.
void UnsharpRow(const UnsharpPlan& plan, const std::uint8_t* reference, std::int64_t count, std::uint8_t* samples);

}  // namespace rows
