// Pixels of one layout spread out and packed as another.
#include "host/images/RowLayouts.h"

#include <cstddef>
#include <cstring>

namespace host {

namespace {

template <int From, int To>
void ConvertPixels(const std::uint8_t* source, std::uint8_t* result, std::int32_t width) {
    constexpr bool fromGray = From <= 2, toGray = To <= 2;
    constexpr bool fromAlpha = From % 2 == 0, toAlpha = To % 2 == 0;
    for (std::int32_t x = 0; x < width; ++x, source += From, result += To) {
        if constexpr (toGray && fromGray) {
            result[0] = source[0];
        } else if constexpr (toGray) {
            result[0] = static_cast<std::uint8_t>((77 * source[0] + 151 * source[1] + 28 * source[2]) / 256);
        } else {
            for (int channel = 0; channel < 3; ++channel) result[channel] = source[fromGray ? 0 : channel];
        }
        if constexpr (toAlpha) result[To - 1] = fromAlpha ? source[From - 1] : 255;
    }
}

using Converter = void (*)(const std::uint8_t*, std::uint8_t*, std::int32_t);

// By source and result layout, 1 to 4 channels each.
constexpr Converter kConverters[4][4] = {
    {ConvertPixels<1, 1>, ConvertPixels<1, 2>, ConvertPixels<1, 3>, ConvertPixels<1, 4>},
    {ConvertPixels<2, 1>, ConvertPixels<2, 2>, ConvertPixels<2, 3>, ConvertPixels<2, 4>},
    {ConvertPixels<3, 1>, ConvertPixels<3, 2>, ConvertPixels<3, 3>, ConvertPixels<3, 4>},
    {ConvertPixels<4, 1>, ConvertPixels<4, 2>, ConvertPixels<4, 3>, ConvertPixels<4, 4>},
};

}  // namespace

void ConvertRow(const std::uint8_t* source, PixelLayout from, std::uint8_t* result, PixelLayout to,
                std::int32_t width) {
    if (from == to) {
        std::memcpy(result, source, static_cast<std::size_t>(width) * BytesPerPixel(from));
        return;
    }
    kConverters[BytesPerPixel(from) - 1][BytesPerPixel(to) - 1](source, result, width);
}

}  // namespace host
