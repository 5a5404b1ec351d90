#include <png.h>
#include <zlib.h>

#include <cstring>

#include "host/images/Codec.h"
#include "host/images/Orientation.h"

namespace host::codec {

namespace {

// Deflate never makes more than this many bytes out of one.
constexpr std::int64_t kMostInflation = 1032;

// Text, profiles and the like are skipped by the library: nothing here reads them through it, and a
// damaged one is no reason to refuse the pixels.
const png_byte kSkippedChunks[] = "iCCP\0iTXt\0tEXt\0zTXt\0eXIf\0sPLT\0hIST\0";

// --- Chunks -------------------------------------------------------------------------------------

constexpr std::int64_t kSignatureBytes = 8;
constexpr std::int64_t kMostExifBytes = 1 << 20;

std::uint32_t Big(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 | bytes[3];
}

// The orientation in a chunk whose name was just read; 1 where its check sum is wrong.
std::int32_t OrientationOfChunk(std::FILE* stream, std::uint32_t length) {
    std::vector<std::uint8_t> bytes(length + std::size_t{4});  // with the check sum
    ReadExactly(stream, bytes.data(), bytes.size());
    const uLong sum = crc32(crc32(0, reinterpret_cast<const Bytef*>("eXIf"), 4), bytes.data(), length);
    return sum == Big(bytes.data() + length) ? ExifOrientation(bytes.data(), length) : 1;
}

// Goes from chunk to chunk for the orientation, which may stand behind the pixels. A file that
// doesn't reach its end fails here, before anybody takes memory for the picture.
std::int32_t WalkChunks(const Input& input) {
    std::FILE* stream = input.stream.get();
    std::int32_t orientation = 1;
    for (std::int64_t at = kSignatureBytes;;) {
        std::uint8_t head[8];
        if (fseeko(stream, at, SEEK_SET) != 0) FailFormat("is cut short");
        ReadExactly(stream, head, sizeof head);
        const std::uint32_t length = Big(head);
        at += std::int64_t{length} + 12;
        if (at > input.size) FailFormat("is cut short");
        if (std::memcmp(head + 4, "IEND", 4) == 0) return orientation;
        if (std::memcmp(head + 4, "eXIf", 4) == 0 && length <= kMostExifBytes)
            orientation = OrientationOfChunk(stream, length);
    }
}

// --- Pixels -------------------------------------------------------------------------------------

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
        Guarded([this] {
            png_set_read_fn(png_, this, OnRead);
            png_set_user_limits(png_, 0x7fffffff, 0x7fffffff);
            png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, kSkippedChunks,
                                        static_cast<int>(sizeof kSkippedChunks / 5));
            png_read_info(png_, details_);
        });
        const std::int64_t width = png_get_image_width(png_, details_);
        const std::int64_t height = png_get_image_height(png_, details_);
        input_.CheckSize(width, height);
        CheckEnoughData(width, height);
        const std::int32_t orientation = FindOrientation();
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
        if (std::ferror(input_.stream.get())) FailFile("can't be read");
        FailFormat(message_);
    }

    // A file that can't hold its pixels however well they were packed is cut short.
    void CheckEnoughData(std::int64_t width, std::int64_t height) const {
        const std::int64_t bits = std::int64_t{png_get_bit_depth(png_, details_)} * png_get_channels(png_, details_);
        if ((width * bits + 7) / 8 * height > input_.size * kMostInflation) FailFormat("is cut short");
    }

    std::int32_t FindOrientation() const {
        const off_t position = ftello(input_.stream.get());
        const std::int32_t orientation = WalkChunks(input_);
        if (fseeko(input_.stream.get(), position, SEEK_SET) != 0) FailFile("can't be read");
        return orientation;
    }

    // Checks the check sum of the pixels and that the file is whole.
    void ReadEnd() {
        Guarded([this] { png_read_end(png_, nullptr); });
    }

    static void OnRead(png_structp png, png_bytep bytes, std::size_t length) {
        auto* self = static_cast<PngDecoder*>(png_get_io_ptr(png));
        if (std::fread(bytes, 1, length, self->input_.stream.get()) != length) png_error(png, "is cut short");
    }

    [[noreturn]] static void OnError(png_structp png, png_const_charp text) {
        auto* self = static_cast<PngDecoder*>(png_get_error_ptr(png));
        const bool own = std::strcmp(text, "is cut short") == 0;
        std::snprintf(self->message_, sizeof self->message_, own ? "%s" : "is a damaged PNG file (%s)", text);
        png_longjmp(png, 1);
    }

    static void OnWarning(png_structp, png_const_charp) {}

    Input input_;
    png_structp png_ = nullptr;
    png_infop details_ = nullptr;
    std::int32_t rowsRead_ = 0;
    char message_[256] = "";
};

}  // namespace

DecoderPointer OpenPng(Input input) {
    auto decoder = std::make_unique<PngDecoder>(std::move(input));
    if (decoder->ReadHead()) return decoder->ReadInterlaced();
    return decoder;
}

}  // namespace host::codec
