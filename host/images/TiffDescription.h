// What a TIFF file says of its first picture.
#pragma once

#include "host/images/TiffFile.h"

namespace host::codec {

struct TiffDescription {
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 1, samples = 1, photometric = 0, planar = PLANARCONFIG_CONTIG;
    std::uint16_t format = SAMPLEFORMAT_UINT, compression = COMPRESSION_NONE, orientation = 1;
    int alphaSample = -1;  // none
    bool premultiplied = false;
    bool knownPhotometric = false;
    bool knownInks = true;  // those of IsInks

    std::int64_t Pixels() const { return std::int64_t{width} * height; }
    bool IsPalette() const { return photometric == PHOTOMETRIC_PALETTE; }
    bool IsInks() const { return photometric == PHOTOMETRIC_SEPARATED; }  // cyan, magenta, yellow, black
    bool IsLab() const { return photometric == PHOTOMETRIC_CIELAB || photometric == PHOTOMETRIC_ICCLAB; }
    bool IsGray() const { return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE; }
    int ColorSamples() const;
    bool Separate() const { return planar == PLANARCONFIG_SEPARATE; }

    // Samples of single precision, 0 to 1.
    bool IsReal() const { return format == SAMPLEFORMAT_IEEEFP && bits == 32 && !IsPalette() && !IsLab(); }

    // Whether the samples can be read here.
    bool IsPlain() const;
};

TiffDescription DescribeTiff(TIFF* tiff);

// The strips or tiles that the image consists of.
struct TiffBlocks {
    std::uint32_t width = 0;  // pixels
    std::uint32_t height = 0;
};

TiffBlocks BlocksOfTiff(const TiffFile& file, const TiffDescription& d);

// Fails where the pixels are packed in a way that can't be read.
void CheckCompression(std::uint16_t compression);

// Fails where a strip or tile lies beyond the file's end, or plain pixels reach into the description.
void CheckBlocksInFile(TIFF* tiff, const TiffDescription& d, std::int64_t size);

// Fails with the library's last message, or for lack of memory if that was it.
[[noreturn]] void FailTiff(const TiffFile& file);

// Reads, through the library's conversion, what isn't plain.
DecoderPointer OpenConvertedTiff(Input input, std::unique_ptr<TiffFile> file, const TiffDescription& d);

}  // namespace host::codec
