#include "rows/HostPixels.h"

namespace rows {

namespace {

constexpr int kHostPixel = 4;
constexpr int kColors = 3;

constexpr std::uint8_t Blend(int keep, int destination, int picture) {
    return static_cast<std::uint8_t>((keep * destination + (255 - keep) * picture) / 255);
}

// The definition: one pixel after the other.
void DrawMaskedPlain(const std::uint8_t* picture, const std::uint8_t* mask, std::uint8_t flip, const PixelLayout& to,
                     std::uint8_t* destination, std::int32_t width) {
    for (std::int32_t x = 0; x < width; ++x) {
        const std::uint8_t colors[kColors] = {picture[1], picture[2], picture[3]};
        destination[to.offset[3]] = (mask ? mask[1] : std::uint8_t{255}) ^ flip;
        for (int c = 0; c < kColors; ++c) destination[to.offset[c]] = colors[c];
        picture += kHostPixel;
        if (mask) mask += kHostPixel;
        destination += to.pixelSize;
    }
}

void BlendMaskedPlain(const std::uint8_t* picture, const std::uint8_t* mask, std::uint8_t flip, const PixelLayout& to,
                      std::uint8_t* destination, std::int32_t width) {
    for (std::int32_t x = 0; x < width; ++x) {
        std::uint8_t blended[kColors];
        for (int c = 0; c < kColors; ++c)
            blended[c] = Blend(mask[c + 1] ^ flip, destination[to.offset[c]], picture[c + 1]);
        for (int c = 0; c < kColors; ++c) destination[to.offset[c]] = blended[c];
        picture += kHostPixel;
        mask += kHostPixel;
        destination += to.pixelSize;
    }
}

constexpr std::uint8_t FlipOf(bool invert) { return invert ? 255 : 0; }

}  // namespace

void DrawMaskedRow(const std::uint8_t* picture, const std::uint8_t* mask, bool invert, const PixelLayout& to,
                   std::uint8_t* destination, std::int32_t width) {
    DrawMaskedPlain(picture, mask, FlipOf(invert), to, destination, width);
}

void BlendMaskedRow(const std::uint8_t* picture, const std::uint8_t* mask, bool invert, const PixelLayout& to,
                    std::uint8_t* destination, std::int32_t width) {
    BlendMaskedPlain(picture, mask, FlipOf(invert), to, destination, width);
}

}  // namespace rows
