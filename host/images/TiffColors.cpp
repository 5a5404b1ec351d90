// Samples of a TIFF file, of any width and colour model, to bytes of colour.
#include "host/images/TiffColors.h"

#include <algorithm>
#include <new>

#include "host/images/LabColor.h"

namespace host::codec {

TiffColors::TiffColors(TIFF* tiff, const TiffDescription& description)
    : d_(description), most_(d_.bits > 8 ? 65535 : 255) {
    if (d_.IsPalette()) ReadPalette(tiff);
}

void TiffColors::ReadPalette(TIFF* tiff) {
    std::uint16_t* parts[3];
    if (!TIFFGetField(tiff, TIFFTAG_COLORMAP, &parts[0], &parts[1], &parts[2]))
        FailFormat(kImageReadSays.tiffDamaged("no colours"));
    if (!parts[0] || !parts[1] || !parts[2]) throw std::bad_alloc();  // the library's way to say so
    const std::size_t count = std::size_t{1} << d_.bits;
    bool small = true;  // some writers forget that entries have 16 bits
    for (const auto* part : parts) small = small && std::all_of(part, part + count, [](int v) { return v < 256; });
    for (std::size_t i = 0; i < count; ++i)
        for (const auto* part : parts) palette_.push_back(static_cast<std::uint8_t>(small ? part[i] : part[i] >> 8));
}

// Whether samples are the bytes of pixels already.
bool TiffColors::AreBytes() const {
    const bool known = d_.photometric == PHOTOMETRIC_MINISBLACK || d_.photometric == PHOTOMETRIC_RGB;
    return known && most_ == 255 && !d_.premultiplied;
}

void TiffColors::Convert(const std::uint16_t* samples, std::uint8_t* pixels) const {
    const int colors = d_.ColorSamples();
    const bool hasAlpha = d_.alphaSample >= 0;
    const int results = d_.IsGray() ? 1 : 3;
    if (AreBytes()) {
        std::copy_n(samples, std::size_t{d_.width} * static_cast<std::size_t>(colors + hasAlpha), pixels);
        return;
    }
    for (std::uint32_t x = 0; x < d_.width; ++x, samples += colors + hasAlpha) {
        const std::uint32_t alpha = hasAlpha ? samples[colors] : most_;
        StoreColor(samples, d_.premultiplied ? alpha : most_, pixels);
        pixels += results;
        if (hasAlpha) *pixels++ = ToByte(alpha);
    }
}

std::uint8_t TiffColors::ToByte(std::uint32_t sample) const {
    return static_cast<std::uint8_t>(most_ == 255 ? sample : (sample * 255 + 32895) >> 16);
}

// A sample that was multiplied by alpha, and is now a byte that wasn't.
std::uint8_t TiffColors::Straight(std::uint32_t sample, std::uint32_t alpha) const {
    if (alpha == most_) return ToByte(sample);
    return static_cast<std::uint8_t>(alpha == 0 ? 0 : std::min(255u, (sample * 255 + alpha / 2) / alpha));
}

// `alpha` is what the samples were multiplied by.
void TiffColors::StoreColor(const std::uint16_t* sample, std::uint32_t alpha, std::uint8_t* pixel) const {
    if (d_.IsPalette()) {
        std::copy_n(palette_.data() + std::size_t{sample[0]} * 3, 3, pixel);
    } else if (d_.IsInks()) {
        StoreInks(sample, alpha, pixel);
    } else if (d_.IsLab()) {
        StoreLabSamples(sample, alpha, pixel);
    } else {
        const std::uint32_t flip = d_.photometric == PHOTOMETRIC_MINISWHITE ? most_ : 0;
        for (int i = 0; i < d_.ColorSamples(); ++i) pixel[i] = Straight(sample[i] ^ flip, alpha);
    }
}

// Inks without a profile: every colour is what its ink and black leave of white.
void TiffColors::StoreInks(const std::uint16_t* sample, std::uint32_t alpha, std::uint8_t* pixel) const {
    const int light = 255 - Straight(sample[3], alpha);
    for (int i = 0; i < 3; ++i)
        pixel[i] = static_cast<std::uint8_t>(alpha == 0 ? 0 : light * (255 - Straight(sample[i], alpha)) / 255);
}

// L* takes the whole range, or in the way of colour profiles all but the last 255 of 65536; a* and
// b* are signed, or shifted by half the range.
void TiffColors::StoreLabSamples(const std::uint16_t* sample, std::uint32_t alpha, std::uint8_t* pixel) const {
    if (alpha == 0) return void(std::fill_n(pixel, 3, std::uint8_t{0}));
    const bool shifted = d_.photometric == PHOTOMETRIC_ICCLAB, wide = most_ > 255;
    const double straight = static_cast<double>(most_) / alpha;
    const auto hue = [&](std::uint16_t value) {
        const int half = wide ? 32768 : 128, whole = 2 * half;
        const int number = shifted ? value - half : value < half ? value : value - whole;
        return number * straight / (wide ? 256 : 1);
    };
    const double lightest = shifted && wide ? 65280 : most_;
    StoreLab({sample[0] * straight * 100 / lightest, hue(sample[1]), hue(sample[2])}, pixel);
}

}  // namespace host::codec
