// JPEG files through libjpeg, written row by row.
#include <algorithm>
#include <csetjmp>

#include "host/images/Codec.h"
#include "host/images/JpegLibrary.h"

namespace host::codec {

namespace {

constexpr std::int32_t kDefaultQuality = 90;

// The library's state, given up with it, also by a constructor that fails half-way.
struct Compression : jpeg_compress_struct {
    Compression() : jpeg_compress_struct{} {}
    ~Compression() { jpeg_destroy_compress(this); }
    Compression(const Compression&) = delete;
    Compression& operator=(const Compression&) = delete;
};

class JpegEncoder final : public Encoder {
  public:
    explicit JpegEncoder(const Output& output) {
        layout = LayoutOf(IsGray(output.layout), false);
        if (output.width > JPEG_MAX_DIMENSION || output.height > JPEG_MAX_DIMENSION)
            FailFormat(kImageWriteSays.sideTooLong("JPEG", JPEG_MAX_DIMENSION));
        jpeg_.err = jpeg_std_error(&errors_);
        jpeg_.client_data = this;
        errors_.error_exit = OnError;
        errors_.emit_message = [](j_common_ptr, int) {};
        const std::int32_t quality = std::clamp(output.quality.value_or(kDefaultQuality), 0, 100);
        Guarded([this, &output, quality] {
            jpeg_create_compress(&jpeg_);
            jpeg_stdio_dest(&jpeg_, output.stream);
            jpeg_.image_width = static_cast<JDIMENSION>(output.width);
            jpeg_.image_height = static_cast<JDIMENSION>(output.height);
            jpeg_.input_components = BytesPerPixel(layout);
            jpeg_.in_color_space = IsGray(layout) ? JCS_GRAYSCALE : JCS_RGB;
            jpeg_set_defaults(&jpeg_);
            jpeg_set_quality(&jpeg_, quality, TRUE);
            // Colours are not thinned out where the best quality is asked for.
            if (quality >= 95) jpeg_.comp_info[0].h_samp_factor = jpeg_.comp_info[0].v_samp_factor = 1;
            jpeg_start_compress(&jpeg_, TRUE);
        });
    }

    void WriteRow(const std::uint8_t* pixels) override {
        // The library does not write to the row; its interface merely lacks the word.
        JSAMPROW row = const_cast<std::uint8_t*>(pixels);
        Guarded([this, &row] { jpeg_write_scanlines(&jpeg_, &row, 1); });
    }

    void Finish() override {
        Guarded([this] { jpeg_finish_compress(&jpeg_); });
    }

  private:
    // Runs calls of the library, whose errors jump back to here.
    template <class Calls>
    void Guarded(Calls calls) {
        if (setjmp(jump_) == 0) {
            calls();
            return;
        }
        FailFile(kImageWriteSays.libraryFault(reason_));
    }

    [[noreturn]] static void OnError(j_common_ptr jpeg) {
        auto* self = static_cast<JpegEncoder*>(jpeg->client_data);
        jpeg->err->format_message(jpeg, self->reason_);
        std::longjmp(self->jump_, 1);
    }

    Compression jpeg_;
    jpeg_error_mgr errors_{};
    std::jmp_buf jump_{};
    char reason_[JMSG_LENGTH_MAX] = "";  // the library's
};

}  // namespace

EncoderPointer CreateJpeg(const Output& output) { return std::make_unique<JpegEncoder>(output); }

}  // namespace host::codec
