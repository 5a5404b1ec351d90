#include "host/images/TiffDescription.h"

#include <algorithm>

namespace host::codec {

namespace {

void FindAlpha(TIFF* tiff, TiffDescription& description) {
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (!TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds)) return;
    for (int i = 0; i < count && description.alphaSample < 0; ++i) {
        if (kinds[i] != EXTRASAMPLE_ASSOCALPHA && kinds[i] != EXTRASAMPLE_UNASSALPHA) continue;
        if (description.ColorSamples() + i >= description.samples) continue;
        description.alphaSample = description.ColorSamples() + i;
        description.premultiplied = kinds[i] == EXTRASAMPLE_ASSOCALPHA;
    }
}

}  // namespace

TiffDescription DescribeTiff(TIFF* tiff) {
    TiffDescription d;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &d.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &d.height);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &d.bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &d.samples);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PLANARCONFIG, &d.planar);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &d.format);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_COMPRESSION, &d.compression);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &d.orientation);
    d.knownPhotometric = TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &d.photometric) != 0;
    if (d.compression == COMPRESSION_JPEG && d.photometric == PHOTOMETRIC_YCBCR && !d.Separate()) {
        // The library decodes to red, green and blue when asked to.
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        d.photometric = PHOTOMETRIC_RGB;
    }
    if (d.orientation < 1 || d.orientation > 8) d.orientation = 1;
    FindAlpha(tiff, d);
    return d;
}

void CheckBlocksInFile(TIFF* tiff, const TiffDescription& d, std::int64_t size) {
    const std::uint32_t count = TIFFIsTiled(tiff) ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
    const auto end = static_cast<std::uint64_t>(size);
    for (std::uint32_t i = 0; i < count; ++i) {
        int failed = 0;
        const std::uint64_t from = TIFFGetStrileOffsetWithErr(tiff, i, &failed);
        const std::uint64_t bytes = failed ? 0 : TIFFGetStrileByteCountWithErr(tiff, i, &failed);
        // Plain pixels whose last block is said to be longer than it is are common and harmless.
        const bool whole = d.compression == COMPRESSION_NONE || bytes <= end - from;
        if (failed || from > end || !whole) FailFormat("is cut short");
    }
}

void FailTiff(const TiffFile& file) {
    const std::string message = file.message();
    FailFormat(message.empty() ? "is a damaged TIFF file" : "is a damaged TIFF file (" + message + ")");
}

TiffBlocks BlocksOfTiff(const TiffFile& file, const TiffDescription& d) {
    TiffBlocks blocks{d.width, 0};
    if (TIFFIsTiled(file.get())) {
        TIFFGetField(file.get(), TIFFTAG_TILEWIDTH, &blocks.width);
        TIFFGetField(file.get(), TIFFTAG_TILELENGTH, &blocks.height);
        if (blocks.width == 0 || blocks.height == 0) FailTiff(file);
    } else {
        TIFFGetFieldDefaulted(file.get(), TIFFTAG_ROWSPERSTRIP, &blocks.height);
        blocks.height = std::clamp(blocks.height, 1u, d.height);
    }
    return blocks;
}

}  // namespace host::codec
