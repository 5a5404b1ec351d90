#include "rows/Unsharp.h"

#include <cstdlib>

namespace rows {

namespace {

std::uint8_t Sharpened(const UnsharpRule& rule, int sample, int reference) {
    const int difference = sample - reference;
    if (std::abs(difference) < rule.threshold) return static_cast<std::uint8_t>(sample);
    const double value = reference + rule.gain * difference;
    if (value >= 255) return 255;
    return value > 0 ? static_cast<std::uint8_t>(value) : 0;
}

}  // namespace

void UnsharpRow(const UnsharpRule& rule, const std::uint8_t* reference, std::int64_t count, std::uint8_t* samples) {
    for (std::int64_t i = 0; i < count; ++i) samples[i] = Sharpened(rule, samples[i], reference[i]);
}

}  // namespace rows
