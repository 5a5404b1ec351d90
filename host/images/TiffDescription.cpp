// The tags of a TIFF file read and checked before any pixel is.
#include "host/images/TiffDescription.h"

#include <algorithm>
#include <new>

namespace host::codec {

namespace {

// Alpha by the file's word; and a single sample beyond the colours of which the file says nothing,
// which many writers leave at that.
void FindAlpha(TIFF* tiff, TiffDescription& description) {
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    if (!TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds)) {
        if (description.samples == description.ColorSamples() + 1) description.alphaSample = description.ColorSamples();
        return;
    }
    if (count > 0 && !kinds) throw std::bad_alloc();  // the library's way to say so
    for (int i = 0; i < count && description.alphaSample < 0; ++i) {
        if (kinds[i] != EXTRASAMPLE_ASSOCALPHA && kinds[i] != EXTRASAMPLE_UNASSALPHA) continue;
        if (description.ColorSamples() + i >= description.samples) continue;
        description.alphaSample = description.ColorSamples() + i;
        description.premultiplied = kinds[i] == EXTRASAMPLE_ASSOCALPHA;
    }
}

// What the stored pixels of a strip or tile take.
std::uint64_t PlainBytes(TIFF* tiff, const TiffDescription& d, std::uint32_t block) {
    if (TIFFIsTiled(tiff)) return TIFFTileSize64(tiff);
    std::uint32_t rows = 0;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rows);
    rows = std::clamp(rows, 1u, d.height);
    const std::uint32_t strips = (d.height + rows - 1) / rows;
    return TIFFVStripSize64(tiff, std::min(rows, d.height - block % strips * rows));
}

// Without memory the library knows the length of the tables that all strips of JPEG data share,
// and uses them though they aren't there.
void CheckJpegTables(TIFF* tiff) {
    std::uint32_t length = 0;
    const void* tables = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_JPEGTABLES, &length, &tables) && length > 0 && !tables) throw std::bad_alloc();
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
    if (d.compression == COMPRESSION_JPEG) CheckJpegTables(tiff);
    if (d.compression == COMPRESSION_JPEG && d.photometric == PHOTOMETRIC_YCBCR && !d.Separate()) {
        // The library decodes to red, green and blue when asked to.
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        d.photometric = PHOTOMETRIC_RGB;
    }
    std::uint16_t inks = INKSET_CMYK;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_INKSET, &inks);
    d.knownInks = inks == INKSET_CMYK;
    if (d.orientation < 1 || d.orientation > 8) d.orientation = 1;
    FindAlpha(tiff, d);
    return d;
}

int TiffDescription::ColorSamples() const {
    switch (photometric) {
        case PHOTOMETRIC_RGB:
        case PHOTOMETRIC_YCBCR:
        case PHOTOMETRIC_CIELAB:
        case PHOTOMETRIC_ICCLAB:
        case PHOTOMETRIC_ITULAB:
        case PHOTOMETRIC_LOGLUV:
            return 3;
        case PHOTOMETRIC_SEPARATED:
            return 4;
        default:
            return 1;
    }
}

bool TiffDescription::IsPlain() const {
    const bool eight = bits == 8 || bits == 16;
    const bool known = IsGray() || photometric == PHOTOMETRIC_RGB || (IsPalette() && bits <= 8) ||
                       (IsInks() && knownInks) || (IsLab() && eight);
    const bool unsignedWhole = format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_VOID;
    // Two of the samples of CIE L*a*b* are signed, and some writers say so of all.
    const bool whole =
        (unsignedWhole || (IsLab() && format == SAMPLEFORMAT_INT)) && (eight || bits == 1 || bits == 2 || bits == 4);
    return knownPhotometric && known && (whole || IsReal()) && samples >= ColorSamples();
}

// The library's JBIG takes the size that the packed data state of themselves, whatever memory it
// needs, and its rows don't come one by one.
void CheckCompression(std::uint16_t compression) {
    if (compression != COMPRESSION_JBIG && TIFFIsCODECConfigured(compression)) return;
    const TIFFCodec* codec = TIFFFindCODEC(compression);
    const std::string name = codec ? codec->name : "number " + std::to_string(compression);
    FailFormat(kImageReadSays.tiffCompression(name));
}

void CheckBlocksInFile(TIFF* tiff, const TiffDescription& d, std::int64_t size) {
    const std::uint32_t count = TIFFIsTiled(tiff) ? TIFFNumberOfTiles(tiff) : TIFFNumberOfStrips(tiff);
    const auto end = static_cast<std::uint64_t>(size), description = TIFFCurrentDirOffset(tiff);
    for (std::uint32_t i = 0; i < count; ++i) {
        int failed = 0;
        const std::uint64_t from = TIFFGetStrileOffsetWithErr(tiff, i, &failed);
        const std::uint64_t bytes = failed ? 0 : TIFFGetStrileByteCountWithErr(tiff, i, &failed);
        // Plain pixels whose last block is said to be longer than it is are common and harmless.
        const bool plain = d.compression == COMPRESSION_NONE;
        if (failed || from > end || (!plain && bytes > end - from)) FailFormat(kImageReadSays.cutShort());
        // Where a file states less than there must be, the library looks behind it.
        if (plain && from <= description && description - from < std::min(bytes, PlainBytes(tiff, d, i)))
            FailFormat(kImageReadSays.tiffDamaged("a strip is too short"));
    }
}

void FailTiff(const TiffFile& file) {
    if (file.IsShortOfMemory()) throw std::bad_alloc();
    const std::string message = file.message();
    FailFormat(message.empty() ? kImageReadSays.tiffBare() : kImageReadSays.tiffDamaged(message));
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
