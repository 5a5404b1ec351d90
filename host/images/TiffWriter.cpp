// TIFF files through libtiff, a strip of rows at a time.
#include <algorithm>
#include <new>

#include "host/images/TiffFile.h"

namespace host::codec {

namespace {

// Files above this size want 64-bit offsets; a margin is left for what compression can't help.
constexpr std::int64_t kClassicBytes = 4'000'000'000;

class TiffEncoder final : public Encoder {
  public:
    explicit TiffEncoder(const Output& output) : file_(output.stream, NeedsLongOffsets(output) ? "w8m" : "wm", 0) {
        layout = output.layout;
        TIFF* tiff = file_.get();
        if (!tiff) Fail();
        const int channels = BytesPerPixel(layout);
        TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(output.width));
        TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(output.height));
        TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, channels);
        TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, IsGray(layout) ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
        TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
        const std::uint16_t straight[] = {EXTRASAMPLE_UNASSALPHA};
        if (HasAlpha(layout)) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, straight);
        // Without memory the library drops the field in silence.
        if (HasAlpha(layout) && !KnowsAlpha()) throw std::bad_alloc();
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tiff, 0));
        row_.resize(std::size_t(output.width) * channels);
    }

    // The predictor works in the row it is given, so it gets a copy.
    void WriteRow(const std::uint8_t* pixels) override {
        std::copy_n(pixels, row_.size(), row_.begin());
        if (TIFFWriteScanline(file_.get(), row_.data(), next_++, 0) < 0 || file_.IsDamaged()) Fail();
    }

    void Finish() override {
        if (!TIFFFlush(file_.get()) || file_.IsDamaged()) Fail();
    }

  private:
    static bool NeedsLongOffsets(const Output& output) {
        return std::int64_t{output.width} * output.height * BytesPerPixel(output.layout) > kClassicBytes / 2;
    }

    bool KnowsAlpha() const {
        std::uint16_t count = 0;
        std::uint16_t* kinds = nullptr;
        return TIFFGetField(file_.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) && count == 1 && kinds &&
               kinds[0] == EXTRASAMPLE_UNASSALPHA;
    }

    [[noreturn]] void Fail() const { FailFile(kImageWriteSays.libraryFault(file_.message())); }

    TiffFile file_;
    std::vector<std::uint8_t> row_;
    std::uint32_t next_ = 0;
};

}  // namespace

EncoderPointer CreateTiff(const Output& output) { return std::make_unique<TiffEncoder>(output); }

}  // namespace host::codec
