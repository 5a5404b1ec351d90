#include "rows/Convert.h"

namespace rows {

namespace {

struct Pixel {
    std::uint8_t red, green, blue, gray, alpha;
};

template <ChannelSet From>
Pixel Read(const PixelLayout& layout, const std::uint8_t* pixel) {
    if constexpr (From == ChannelSet::Gray || From == ChannelSet::GrayAlpha) {
        const std::uint8_t gray = pixel[layout.offset[0]];
        return {gray, gray, gray, gray, From == ChannelSet::GrayAlpha ? pixel[layout.offset[1]] : std::uint8_t{0}};
    } else {
        const std::uint8_t red = pixel[layout.offset[0]];
        const std::uint8_t green = pixel[layout.offset[1]];
        const std::uint8_t blue = pixel[layout.offset[2]];
        return {red, green, blue, Gray(red, green, blue),
                From == ChannelSet::RgbAlpha ? pixel[layout.offset[3]] : std::uint8_t{0}};
    }
}

template <ChannelSet To>
void Write(const PixelLayout& layout, const Pixel& value, bool writeAlpha, std::uint8_t alpha, std::uint8_t* pixel) {
    if constexpr (To == ChannelSet::Gray || To == ChannelSet::GrayAlpha) {
        pixel[layout.offset[0]] = value.gray;
        if (To == ChannelSet::GrayAlpha && writeAlpha) pixel[layout.offset[1]] = alpha;
    } else {
        pixel[layout.offset[0]] = value.red;
        pixel[layout.offset[1]] = value.green;
        pixel[layout.offset[2]] = value.blue;
        if (To == ChannelSet::RgbAlpha && writeAlpha) pixel[layout.offset[3]] = alpha;
    }
}

// The definition: one pixel after the other.
template <ChannelSet From, ChannelSet To>
void ConvertPlain(const Conversion& conversion, const std::uint8_t* source, std::uint8_t* destination,
                  std::int32_t width) {
    const AlphaRule rule = conversion.alpha;
    const bool inverts = rule == AlphaRule::Invert || rule == AlphaRule::InvertFirst;
    const bool fromFirst = rule == AlphaRule::CopyFirst || rule == AlphaRule::InvertFirst;
    const std::uint8_t flip = inverts ? 255 : 0;
    const std::uint8_t first = width > 0 ? Read<From>(conversion.from, source).alpha : std::uint8_t{0};
    for (std::int32_t x = 0; x < width; ++x) {
        const Pixel value = Read<From>(conversion.from, source);
        const std::uint8_t alpha = (fromFirst ? first : value.alpha) ^ flip;
        Write<To>(conversion.to, value, rule != AlphaRule::Leave, alpha, destination);
        source += conversion.from.pixelSize;
        destination += conversion.to.pixelSize;
    }
}

}  // namespace

void ConvertRow(const Conversion& conversion, const std::uint8_t* source, std::uint8_t* destination,
                std::int32_t width) {
    ForChannelSet(conversion.fromSet, [&]<ChannelSet From>() {
        ForChannelSet(conversion.toSet,
                      [&]<ChannelSet To>() { ConvertPlain<From, To>(conversion, source, destination, width); });
    });
}

}  // namespace rows
