#include <csetjmp>
#include <cstring>

#include "host/images/Codec.h"
#include "host/images/JpegLibrary.h"
#include "host/images/Orientation.h"

namespace host::codec {

namespace {

// The least that a Huffman-coded block of 64 samples takes is one bit.
constexpr std::int64_t kMostPixelsPerByte = 64 * 8;

// No camera or editor writes more scans; a file that does wants to keep us busy.
constexpr int kMostScans = 100;

class JpegDecoder final : public Decoder {
  public:
    explicit JpegDecoder(Input input) : input_(std::move(input)) {
        jpeg_.err = jpeg_std_error(&errors_);
        jpeg_.client_data = this;
        errors_.error_exit = OnError;
        errors_.emit_message = OnMessage;
        progress_.progress_monitor = OnProgress;
    }

    ~JpegDecoder() override { jpeg_destroy_decompress(&jpeg_); }

    void ReadHead() {
        Guarded([this] {
            jpeg_create_decompress(&jpeg_);
            jpeg_.progress = &progress_;
            jpeg_stdio_src(&jpeg_, input_.stream.get());
            jpeg_save_markers(&jpeg_, JPEG_APP0 + 1, 0xffff);
            jpeg_read_header(&jpeg_, TRUE);
        });
        headRead_ = true;
        input_.CheckSize(jpeg_.image_width, jpeg_.image_height);
        if (!jpeg_.arith_code &&
            std::int64_t{jpeg_.image_width} * jpeg_.image_height > input_.size * kMostPixelsPerByte)
            FailFormat("is cut short");
        inkColors_ = jpeg_.num_components == 4;
        const bool gray = jpeg_.num_components == 1;
        jpeg_.out_color_space = inkColors_ ? JCS_CMYK : gray ? JCS_GRAYSCALE : JCS_RGB;
        info = {ImageFileFormat::Jpeg, static_cast<std::int32_t>(jpeg_.image_width),
                static_cast<std::int32_t>(jpeg_.image_height), LayoutOf(gray, false), FindOrientation()};
        if (inkColors_) inks_.resize(std::size_t{jpeg_.image_width} * 4);
    }

    void ReadRow(std::uint8_t* pixels) override {
        JSAMPROW row = inkColors_ ? inks_.data() : pixels;
        Guarded([this, &row] {
            if (!started_) jpeg_start_decompress(&jpeg_);
            started_ = true;
            jpeg_read_scanlines(&jpeg_, &row, 1);
        });
        if (inkColors_) ConvertInks(pixels);
    }

  private:
    // Runs calls of the library, whose errors jump back to here. `calls` must not hold anything
    // that wants a destructor.
    template <class Calls>
    void Guarded(Calls calls) {
        if (setjmp(jump_) == 0) {
            calls();
            return;
        }
        if (std::ferror(input_.stream.get())) FailFile("can't be read");
        FailFormat(message_);
    }

    // Inks without a profile: every colour is what its ink and black leave of white. Files of
    // the common editors hold the inks inverted and say so by their marker.
    void ConvertInks(std::uint8_t* pixels) const {
        const std::uint8_t flip = jpeg_.saw_Adobe_marker ? 0 : 255;
        for (std::size_t i = 0; i < inks_.size(); i += 4, pixels += 3)
            for (std::size_t channel = 0; channel < 3; ++channel)
                pixels[channel] =
                    static_cast<std::uint8_t>(((inks_[i + channel] ^ flip) * (inks_[i + 3] ^ flip) + 127) / 255);
    }

    std::int32_t FindOrientation() const {
        for (jpeg_saved_marker_ptr marker = jpeg_.marker_list; marker; marker = marker->next)
            if (marker->data_length >= 6 && std::memcmp(marker->data, "Exif\0\0", 6) == 0)
                return ExifOrientation(marker->data, marker->data_length);
        return 1;
    }

    [[noreturn]] void Fail(const char* text) {
        std::snprintf(message_, sizeof message_, "%s", text);
        std::longjmp(jump_, 1);
    }

    [[noreturn]] static void OnError(j_common_ptr jpeg) {
        auto* self = static_cast<JpegDecoder*>(jpeg->client_data);
        if (jpeg->err->msg_code == JERR_INPUT_EOF) self->Fail("is cut short");
        char reason[JMSG_LENGTH_MAX];
        jpeg->err->format_message(jpeg, reason);
        char text[sizeof self->message_];
        std::snprintf(text, sizeof text, "is a damaged JPEG file (%s)", reason);
        self->Fail(text);
    }

    // Warnings: of these, spare bytes between segments are harmless; the end of the file is too
    // when the one scan there is was complete. The rest means lost pixels.
    static void OnMessage(j_common_ptr jpeg, int level) {
        if (level >= 0) return;
        auto* self = static_cast<JpegDecoder*>(jpeg->client_data);
        switch (jpeg->err->msg_code) {
            case JWRN_EXTRANEOUS_DATA:
            case JWRN_ADOBE_XFORM:
            case JWRN_JFIF_MAJOR:
            case JWRN_TOO_MUCH_DATA:
                return;
            case JWRN_JPEG_EOF:
                if (self->headRead_ && !jpeg_has_multiple_scans(&self->jpeg_)) return;
                self->Fail("is cut short");
            case JWRN_HIT_MARKER:
                self->Fail("is cut short or damaged");
            default:
                OnError(jpeg);
        }
    }

    static void OnProgress(j_common_ptr jpeg) {
        auto* self = static_cast<JpegDecoder*>(jpeg->client_data);
        if (self->jpeg_.input_scan_number > kMostScans) self->Fail("is a damaged JPEG file (too many scans)");
    }

    Input input_;
    jpeg_decompress_struct jpeg_{};
    jpeg_error_mgr errors_{};
    jpeg_progress_mgr progress_{};
    std::jmp_buf jump_{};
    std::vector<std::uint8_t> inks_;
    bool inkColors_ = false;
    bool headRead_ = false;
    bool started_ = false;
    char message_[JMSG_LENGTH_MAX + 64] = "";
};

}  // namespace

DecoderPointer OpenJpeg(Input input) {
    auto decoder = std::make_unique<JpegDecoder>(std::move(input));
    decoder->ReadHead();
    return decoder;
}

}  // namespace host::codec
