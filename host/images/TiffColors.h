// The samples of a TIFF file's pixels as the pixels of an image.
#pragma once

#include "host/images/TiffDescription.h"

namespace host::codec {

class TiffColors {
  public:
    TiffColors(TIFF* tiff, const TiffDescription& description);

    // Converts a row of pixels, their colour samples followed by that of alpha if there is one, into
    // gray or red, green and blue, and straight alpha. Samples of more than 8 bits come with 16, so
    // that colours which were multiplied by their alpha keep their precision; the others with 8.
    void Convert(const std::uint16_t* samples, std::uint8_t* pixels) const;

  private:
    void ReadPalette(TIFF* tiff);
    bool AreBytes() const;
    std::uint8_t ToByte(std::uint32_t sample) const;
    std::uint8_t Straight(std::uint32_t sample, std::uint32_t alpha) const;
    void StoreColor(const std::uint16_t* sample, std::uint32_t alpha, std::uint8_t* pixel) const;
    void StoreInks(const std::uint16_t* sample, std::uint32_t alpha, std::uint8_t* pixel) const;
    void StoreLabSamples(const std::uint16_t* sample, std::uint32_t alpha, std::uint8_t* pixel) const;

    TiffDescription d_;
    std::uint32_t most_;                 // the largest sample, 255 or 65535
    std::vector<std::uint8_t> palette_;  // red, green, blue
};

}  // namespace host::codec
