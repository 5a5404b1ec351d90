// The differences plainly.
#include "plugin/rows/Engrave.h"

#include <algorithm>

#define ROWS_WIDE "plugin/rows/EngraveWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

// The definition.
void EngravePlain(const std::uint8_t* pixels, const std::uint8_t* others, std::int64_t count, std::uint8_t* result) {
    for (std::int64_t i = 0; i < count; ++i) {
        const auto difference = static_cast<std::int16_t>(pixels[i] - others[i] + 128);
        result[i] = static_cast<std::uint8_t>(std::clamp<std::int16_t>(difference, std::int16_t{0}, std::int16_t{255}));
    }
}

}  // namespace

const Forms<EngraveFunction> kEngraveRow = ROWS_FORMS(EngravePlain, EngraveRow);

void EngraveShiftedRow(EngraveFunction* engrave, const std::uint8_t* pixels, const std::uint8_t* others, int channels,
                       std::int32_t width, std::int32_t level, std::uint8_t* result) {
    const std::int64_t shift = std::clamp<std::int64_t>(level, -(std::int64_t{width} - 1), width - 1);
    const std::int64_t first = std::max<std::int64_t>(-shift, 0);  // pixels that have one at that distance
    const std::int64_t end = width - std::max<std::int64_t>(shift, 0);
    const auto edge = [&](std::int64_t from, std::int64_t to, std::int64_t other) {
        for (std::int64_t x = from; x < to; ++x)
            EngravePlain(pixels + x * channels, others + other * channels, channels, result + x * channels);
    };
    edge(0, first, 0);
    engrave(pixels + first * channels, others + (first + shift) * channels, (end - first) * channels,
            result + first * channels);
    edge(end, width, width - 1);
}

}  // namespace rows
