#include "rows/FractionalBlur.h"

#include <cmath>

namespace rows {

namespace {

std::uint8_t Mixed(const ThreeTaps& taps, int neighbours, int sample) {
    const double value = taps.norm * std::fma(taps.share, static_cast<double>(neighbours), static_cast<double>(sample));
    return value > 0 ? static_cast<std::uint8_t>(value) : 0;  // at most 255; not-a-number is 0
}

}  // namespace

void MixRows(const ThreeTaps& taps, const std::uint8_t* above, const std::uint8_t* row, const std::uint8_t* below,
             std::int32_t count, std::uint8_t* result) {
    for (std::int32_t i = 0; i < count; ++i)
        result[i] = Mixed(taps, (above ? above[i] : 0) + (below ? below[i] : 0), row[i]);
}

void MixAlongRow(const ThreeTaps& taps, const std::uint8_t* row, int channels, std::int32_t width,
                 std::uint8_t* result) {
    const std::int64_t count = std::int64_t{width} * channels;
    const std::int64_t last = count - channels;
    for (std::int64_t i = 0; i < count; ++i) {
        int neighbours = 2 * row[i];
        if (i < last) neighbours = row[i < channels ? i : i - channels] + row[i + channels];
        result[i] = Mixed(taps, neighbours, row[i]);
    }
}

}  // namespace rows
