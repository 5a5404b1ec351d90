// PNG files through libpng: rows as they come, interlaced ones held whole.
#include <png.h>

#include <cstring>

#include "host/images/Codec.h"
#include "host/images/PngChunks.h"

namespace host::codec {

namespace {

// Deflate never makes more than this many bytes out of one.
constexpr std::int64_t kMostInflation = 1032;

constexpr int kAllButPixels = -1;

class PngDecoder final : public Decoder {
  public:
    explicit PngDecoder(Input input) : input_(std::move(input)) {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
        if (png_) details_ = png_create_info_struct(png_);
        if (!details_) {
            png_destroy_read_struct(&png_, &details_, nullptr);
            throw std::bad_alloc();
        }
    }

    ~PngDecoder() override { png_destroy_read_struct(&png_, &details_, nullptr); }

    // Reads everything before the pixels; true when rows come in several passes.
    bool ReadHead() {
        const std::int32_t orientation = WalkPngChunks(input_);
        Guarded([this] {
            png_set_read_fn(png_, this, OnRead);
            png_set_user_limits(png_, 0x7fffffff, 0x7fffffff);
            // Text, profiles, units and the like are skipped: nothing here reads them through the
            // library, and a damaged one is no reason to refuse the pixels.
            png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, nullptr, kAllButPixels);
            png_read_info(png_, details_);
        });
        const std::int64_t width = png_get_image_width(png_, details_);
        const std::int64_t height = png_get_image_height(png_, details_);
        input_.CheckSize(width, height);
        CheckEnoughData(width, height);
        int passes = 1;
        Guarded([this, &passes] {
            png_set_scale_16(png_);
            png_set_expand(png_);
            passes = png_set_interlace_handling(png_);
            png_read_update_info(png_, details_);
        });
        info = {ImageFileFormat::Png, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height),
                static_cast<PixelLayout>(png_get_channels(png_, details_)), orientation};
        return passes > 1;
    }

    void ReadRow(std::uint8_t* pixels) override {
        Guarded([this, pixels] { png_read_row(png_, pixels, nullptr); });
        if (++rowsRead_ == info.height) ReadEnd();
    }

    // All passes of an interlaced image, each row refined by the next pass.
    DecoderPointer ReadInterlaced() {
        auto held = std::make_unique<HeldImage>(info);
        for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass)
            for (std::int32_t y = 0; y < info.height; ++y) {
                png_bytep row = held->Row(y);
                Guarded([this, row] { png_read_row(png_, row, nullptr); });
            }
        ReadEnd();
        return held;
    }

  private:
    // Runs calls of the library, whose errors jump back to here. `calls` must not hold anything
    // that wants a destructor.
    template <class Calls>
    void Guarded(Calls calls) {
        if (setjmp(png_jmpbuf(png_)) == 0) {
            calls();
            return;
        }
        if (std::ferror(input_.stream.get())) FailFile(kImageFileSays.cannotBeRead());
        FailFormat(cutShort_ ? kImageReadSays.cutShort() : kImageReadSays.pngDamaged(reason_));
    }

    // A file that can't hold its pixels however well they were packed is cut short.
    void CheckEnoughData(std::int64_t width, std::int64_t height) const {
        const std::int64_t bits = std::int64_t{png_get_bit_depth(png_, details_)} * png_get_channels(png_, details_);
        if ((width * bits + 7) / 8 * height > input_.size * kMostInflation) FailFormat(kImageReadSays.cutShort());
    }

    // Checks the check sum of the pixels and that the file is whole.
    void ReadEnd() {
        Guarded([this] { png_read_end(png_, nullptr); });
    }

    static void OnRead(png_structp png, png_bytep bytes, std::size_t length) {
        auto* self = static_cast<PngDecoder*>(png_get_io_ptr(png));
        self->cutShort_ = std::fread(bytes, 1, length, self->input_.stream.get()) != length;
        if (self->cutShort_) png_error(png, "");
    }

    [[noreturn]] static void OnError(png_structp png, png_const_charp text) {
        auto* self = static_cast<PngDecoder*>(png_get_error_ptr(png));
        std::snprintf(self->reason_, sizeof self->reason_, "%s", text);
        png_longjmp(png, 1);
    }

    static void OnWarning(png_structp, png_const_charp) {}

    Input input_;
    png_structp png_ = nullptr;
    png_infop details_ = nullptr;
    std::int32_t rowsRead_ = 0;
    bool cutShort_ = false;
    char reason_[256] = "";  // the library's
};

}  // namespace

DecoderPointer OpenPng(Input input) {
    auto decoder = std::make_unique<PngDecoder>(std::move(input));
    if (decoder->ReadHead()) return decoder->ReadInterlaced();
    return decoder;
}

}  // namespace host::codec
