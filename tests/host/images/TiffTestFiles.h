// TIFF files written by the library itself.
#pragma once

#include <tiffio.h>

#include "tests/host/images/ImageTestFiles.h"

namespace host {

using Bytes = std::vector<std::uint8_t>;

struct TiffKind {
    int bits = 8, samples = 1, photometric = PHOTOMETRIC_MINISBLACK, planar = PLANARCONFIG_CONTIG;
    int compression = COMPRESSION_NONE, orientation = 1, extra = -1;
    int tile = 0;  // side of the tiles; 0: strips of two rows
    const std::uint16_t* palette = nullptr;
    int format = SAMPLEFORMAT_UINT;
};

// A TIFF file by the library itself. `planes` holds the packed rows of each plane, one after the
// other.
inline void WriteTiff(const std::string& path, int width, int height, const TiffKind& kind, std::vector<Bytes> planes) {
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, kind.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, kind.format);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, kind.samples);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kind.photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, kind.planar);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, kind.compression);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, kind.orientation);
    const std::uint16_t extra[] = {static_cast<std::uint16_t>(kind.extra)};
    if (kind.extra >= 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, extra);
    if (kind.palette) {
        const std::size_t count = std::size_t{1} << kind.bits;
        TIFFSetField(tiff, TIFFTAG_COLORMAP, kind.palette, kind.palette + count, kind.palette + 2 * count);
    }
    if (kind.tile > 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, kind.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, kind.tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 2);
    }
    for (std::size_t plane = 0; plane < planes.size(); ++plane) {
        const std::size_t rowBytes = planes[plane].size() / static_cast<std::size_t>(height);
        if (kind.tile == 0) {
            for (int y = 0; y < height; ++y)
                TIFFWriteScanline(tiff, planes[plane].data() + std::size_t(y) * rowBytes, static_cast<std::uint32_t>(y),
                                  static_cast<std::uint16_t>(plane));
            continue;
        }
        const std::size_t pixel = rowBytes / static_cast<std::size_t>(width);
        for (int top = 0; top < height; top += kind.tile)
            for (int left = 0; left < width; left += kind.tile) {
                Bytes tile(static_cast<std::size_t>(TIFFTileSize(tiff)));
                for (int y = top; y < std::min(height, top + kind.tile); ++y)
                    std::copy_n(planes[plane].data() + std::size_t(y) * rowBytes + std::size_t(left) * pixel,
                                std::size_t(std::min(kind.tile, width - left)) * pixel,
                                tile.data() + std::size_t(y - top) * std::size_t(kind.tile) * pixel);
                TIFFWriteTile(tiff, tile.data(), static_cast<std::uint32_t>(left), static_cast<std::uint32_t>(top), 0,
                              static_cast<std::uint16_t>(plane));
            }
    }
    TIFFClose(tiff);
}

// The planes of an image, one channel each.
inline std::vector<Bytes> PlanesOf(const TestImage& image) {
    std::vector<Bytes> planes(static_cast<std::size_t>(BytesPerPixel(image.layout)));
    for (std::size_t i = 0; i < image.pixels.size(); ++i) planes[i % planes.size()].push_back(image.pixels[i]);
    return planes;
}

}  // namespace host
