#include "rows/BoxBlur.h"

#include <algorithm>

namespace rows {

namespace {

// One channel; `row` and `result` are its bytes of the first pixel.
void BlurChannel(const std::uint8_t* row, int channels, std::int32_t width, std::int32_t radius, std::uint8_t* result) {
    const auto at = [&](std::int64_t x) -> std::int32_t {
        return row[std::clamp<std::int64_t>(x, 0, width - 1) * channels];
    };
    const std::int32_t divisor = 2 * radius + 1;
    const std::int32_t inside = std::min(radius, width - 1);  // pixels right of the first that the window meets
    std::int32_t sum = at(0) * (radius + 1) + at(width - 1) * (radius - inside);
    for (std::int32_t x = 1; x <= inside; ++x) sum += at(x);
    for (std::int64_t x = 0; x < width; ++x) {
        result[x * channels] = static_cast<std::uint8_t>(sum / divisor);
        sum += at(x + radius + 1) - at(x - radius);
    }
}

}  // namespace

void AddRow(const std::uint8_t* row, std::int32_t times, std::int32_t count, std::int32_t* sums) {
    for (std::int32_t i = 0; i < count; ++i) sums[i] += times * row[i];
}

void SlideRow(std::int32_t* sums, std::int32_t divisor, const std::uint8_t* leaving, const std::uint8_t* entering,
              std::int32_t count, std::uint8_t* result) {
    for (std::int32_t i = 0; i < count; ++i) {
        result[i] = static_cast<std::uint8_t>(sums[i] / divisor);
        sums[i] += (entering ? entering[i] : 0) - (leaving ? leaving[i] : 0);
    }
}

void BlurRow(const std::uint8_t* row, int channels, std::int32_t width, std::int32_t radius, std::uint8_t* result) {
    for (int channel = 0; channel < channels; ++channel)
        BlurChannel(row + channel, channels, width, radius, result + channel);
}

}  // namespace rows
