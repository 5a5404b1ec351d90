// TIFF files of colours and samples that only the library can convert: luminance with colour
// differences, logarithms, and the like.
#include <algorithm>
#include <new>

#include "host/images/TiffDescription.h"

namespace host::codec {

namespace {

// The library gives alpha multiplied into the colours, whatever the file has.
void TakePixel(std::uint32_t packed, bool alpha, std::uint8_t* pixel) {
    const std::uint32_t opacity = alpha ? TIFFGetA(packed) : 255;
    const std::uint32_t colors[] = {TIFFGetR(packed), TIFFGetG(packed), TIFFGetB(packed)};
    for (int i = 0; i < 3; ++i)
        pixel[i] = static_cast<std::uint8_t>(
            opacity == 0 ? 0 : std::min<std::uint32_t>(255, (colors[i] * 255 + opacity / 2) / opacity));
    if (alpha) pixel[3] = static_cast<std::uint8_t>(opacity);
}

// The black and white of the samples, which the library makes up where the file has none, and goes
// on with any numbers where it has no memory for them.
void CheckBlackAndWhite(TIFF* tiff) {
    const float* numbers = nullptr;
    if (!TIFFGetFieldDefaulted(tiff, TIFFTAG_REFERENCEBLACKWHITE, &numbers) || !numbers) throw std::bad_alloc();
}

// The library's converter, ended with it, also by a constructor that fails half-way.
struct Converter : TIFFRGBAImage {
    Converter() : TIFFRGBAImage{} {}
    ~Converter() {
        if (began) TIFFRGBAImageEnd(this);
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool began = false;
};

// Rows of strips or tiles as the library's red, green, blue and alpha.
class ConvertedDecoder final : public Decoder {
  public:
    ConvertedDecoder(Input input, std::unique_ptr<TiffFile> file, const TiffDescription& d)
        : input_(std::move(input)), file_(std::move(file)) {
        info = {ImageFileFormat::Tiff, static_cast<std::int32_t>(d.width), static_cast<std::int32_t>(d.height),
                LayoutOf(false, d.alphaSample >= 0), d.orientation};
        // Turning is the caller's business.
        TIFFSetField(file_->get(), TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
        CheckBlackAndWhite(file_->get());
        char reason[1024] = "";
        if (!TIFFRGBAImageOK(file_->get(), reason) || !TIFFRGBAImageBegin(&image_, file_->get(), 1, reason))
            FailFormat(kImageReadSays.tiffKind(reason));
        image_.began = true;
        file_->StartPixels();
        image_.req_orientation = ORIENTATION_TOPLEFT;
        height_ = static_cast<std::int32_t>(std::min(BlocksOfTiff(*file_, d).height, d.height));
        packed_ = LazyBytes(std::size_t{d.width} * static_cast<std::size_t>(height_) * 4);
    }

    void ReadRow(std::uint8_t* pixels) override {
        const std::int32_t row = next_ % height_;
        auto* packed = reinterpret_cast<std::uint32_t*>(packed_.data());
        if (row == 0) {
            image_.row_offset = next_;
            const auto rows = static_cast<std::uint32_t>(std::min(height_, info.height - next_));
            const bool got = TIFFRGBAImageGet(&image_, packed, static_cast<std::uint32_t>(info.width), rows);
            if (!got || file_->IsDamaged()) FailTiff(*file_);
        }
        const std::uint32_t* from = packed + std::size_t(row) * static_cast<std::size_t>(info.width);
        for (std::int32_t x = 0; x < info.width; ++x, pixels += BytesPerPixel(info.layout))
            TakePixel(from[x], Alpha(), pixels);
        ++next_;
    }

  private:
    Input input_;
    std::unique_ptr<TiffFile> file_;
    Converter image_;
    LazyBytes packed_;         // the rows of a strip or of a row of tiles
    std::int32_t height_ = 1;  // of them
    std::int32_t next_ = 0;
};

}  // namespace

DecoderPointer OpenConvertedTiff(Input input, std::unique_ptr<TiffFile> file, const TiffDescription& d) {
    return std::make_unique<ConvertedDecoder>(std::move(input), std::move(file), d);
}

}  // namespace host::codec
