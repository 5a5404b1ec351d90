// JPEG files through libjpeg: gray, colours, inks, and what a camera says of itself.
#include <csetjmp>
#include <cstring>
#include <utility>

#include "host/images/Codec.h"
#include "host/images/JpegCoefficients.h"
#include "host/images/JpegLibrary.h"
#include "host/images/JpegScans.h"
#include "host/images/Orientation.h"

namespace host::codec {

namespace {

// The least that a Huffman-coded block of 64 samples takes is one bit.
constexpr std::int64_t kMostPixelsPerByte = 64 * 8;

// No camera or editor writes more scans; a file that does wants to keep us busy.
constexpr int kMostScans = 100;

// Nor do its scans go through so many blocks for what they hold: an image of one colour in ten
// scans has 20 a byte, or 80 where everything was spared. A second is enough for the free ones and
// those of some hundred kilobytes.
constexpr std::int64_t kFreeBlocks = 1 << 23;
constexpr std::int64_t kMostBlocksPerByte = 128;

// Coefficients of several scans that are held in memory.
constexpr std::int64_t kMostHeldBytes = 80 << 20;

// Pictures of more take noticeable memory.
constexpr std::int64_t kLargePixels = 16 << 20;

class JpegDecoder final : public Decoder {
  public:
    explicit JpegDecoder(Input input) : input_(std::move(input)) {
        jpeg_.err = jpeg_std_error(&errors_);
        jpeg_.client_data = this;
        errors_.error_exit = OnError;
        errors_.emit_message = OnMessage;
    }

    ~JpegDecoder() override { jpeg_destroy_decompress(&jpeg_); }

    void ReadHead() {
        Guarded([this] {
            jpeg_create_decompress(&jpeg_);
            jpeg_stdio_src(&jpeg_, input_.stream.get());
            jpeg_save_markers(&jpeg_, JPEG_APP0 + 1, 0xffff);
            jpeg_read_header(&jpeg_, TRUE);
        });
        headRead_ = true;
        input_.CheckSize(jpeg_.image_width, jpeg_.image_height);
        if (!jpeg_.arith_code &&
            std::int64_t{jpeg_.image_width} * jpeg_.image_height > input_.size * kMostPixelsPerByte)
            FailFormat(kImageReadSays.cutShort());
        if (jpeg_has_multiple_scans(&jpeg_)) PrepareScans();
        inkColors_ = jpeg_.num_components == 4;
        const bool gray = jpeg_.num_components == 1;
        jpeg_.out_color_space = inkColors_ ? JCS_CMYK : gray ? JCS_GRAYSCALE : JCS_RGB;
        info = {ImageFileFormat::Jpeg, static_cast<std::int32_t>(jpeg_.image_width),
                static_cast<std::int32_t>(jpeg_.image_height), LayoutOf(gray, false), FindOrientation()};
        if (inkColors_) inks_.resize(std::size_t{jpeg_.image_width} * 4);
        // Damage in any scan shows here, before anybody takes memory for the picture.
        if (jpeg_has_multiple_scans(&jpeg_)) Start();
    }

    // Whether a large image has no end mark. That alone is forgiven, but who opens it takes memory
    // for all its rows, so they are tried first.
    bool MayLackPixels() const {
        const bool large = std::int64_t{info.width} * info.height > kLargePixels;
        return large && !started_ && !CountScans(input_.stream.get(), jpeg_, kMostScans).ended;
    }

    // Reads all rows and gives the file back at its start.
    Input ReadForNothing() {
        std::vector<std::uint8_t> row(RowBytes());
        for (std::int32_t y = 0; y < info.height; ++y) ReadRow(row.data());
        std::rewind(input_.stream.get());
        return std::move(input_);
    }

    void ReadRow(std::uint8_t* pixels) override {
        JSAMPROW row = inkColors_ ? inks_.data() : pixels;
        Start();
        Guarded([this, &row] { jpeg_read_scanlines(&jpeg_, &row, 1); });
        if (inkColors_) ConvertInks(pixels);
    }

  private:
    void Start() {
        if (!std::exchange(started_, true)) Guarded([this] { jpeg_start_decompress(&jpeg_); });
    }

    // Runs calls of the library, whose errors jump back to here. `calls` must not hold anything
    // that wants a destructor.
    template <class Calls>
    void Guarded(Calls calls) {
        if (setjmp(jump_) == 0) {
            calls();
            return;
        }
        if (std::ferror(input_.stream.get())) FailFile(kImageFileSays.cannotBeRead());
        if (scratchFailed_) FailFile((*said_)(reason_));
        FailFormat((*said_)(reason_));
    }

    // All scans are decoded before the first row; what can be known of them is checked before.
    void PrepareScans() {
        const JpegScans scans = CountScans(input_.stream.get(), jpeg_, kMostScans);
        if (scans.count > kMostScans || scans.blocks > kFreeBlocks + input_.size * kMostBlocksPerByte)
            FailFormat(kImageReadSays.jpegScans());
        if (!scans.ended) FailFormat(kImageReadSays.cutShort());
        std::int64_t bytes = 0;
        for (int i = 0; i < jpeg_.num_components; ++i)
            bytes += std::int64_t{jpeg_.comp_info[i].width_in_blocks} * jpeg_.comp_info[i].height_in_blocks *
                     static_cast<std::int64_t>(sizeof(JBLOCK));
        if (bytes > kMostHeldBytes) HoldInFile();
    }

    void HoldInFile() {
        jpeg_.mem->request_virt_barray = [](j_common_ptr jpeg, int, boolean, JDIMENSION across, JDIMENSION rows,
                                            JDIMENSION most) {
            auto* self = static_cast<JpegDecoder*>(jpeg->client_data);
            const jvirt_barray_ptr array = self->coefficients_.Request(across, rows, most);
            if (!array) self->FailScratch();
            return array;
        };
        jpeg_.mem->access_virt_barray = [](j_common_ptr jpeg, jvirt_barray_ptr array, JDIMENSION first,
                                           JDIMENSION count, boolean writable) {
            const JBLOCKARRAY rows = JpegCoefficients::Access(array, first, count, writable != FALSE);
            if (!rows) static_cast<JpegDecoder*>(jpeg->client_data)->FailScratch();
            return rows;
        };
    }

    [[noreturn]] void FailScratch() {
        scratchFailed_ = true;
        Fail(kImageFileSays.noScratch);
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

    // Exif data count before XMP data.
    std::int32_t FindOrientation() const {
        constexpr std::string_view exifMark("Exif\0\0", 6), xmpMark("http://ns.adobe.com/xap/1.0/\0", 29);
        std::optional<std::int32_t> exif, xmp;
        for (jpeg_saved_marker_ptr marker = jpeg_.marker_list; marker; marker = marker->next) {
            const std::string_view data(reinterpret_cast<const char*>(marker->data), marker->data_length);
            if (!exif && data.starts_with(exifMark)) exif = ExifOrientation(marker->data, marker->data_length);
            if (!xmp && data.starts_with(xmpMark)) xmp = XmpOrientation(data);
        }
        return exif.value_or(xmp.value_or(1));
    }

    [[noreturn]] void Fail(const Message& row) {
        said_ = &row;
        std::longjmp(jump_, 1);
    }

    [[noreturn]] static void OnError(j_common_ptr jpeg) {
        auto* self = static_cast<JpegDecoder*>(jpeg->client_data);
        if (jpeg->err->msg_code == JERR_INPUT_EOF) self->Fail(kImageReadSays.cutShort);
        jpeg->err->format_message(jpeg, self->reason_);
        self->Fail(kImageReadSays.jpegDamaged);
    }

    // Warnings: of these, spare bytes between segments are harmless; the end of the file is too
    // when the one scan there is was complete, which arithmetic coding can't tell. The rest means
    // lost pixels.
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
                if (self->headRead_ && !self->jpeg_.arith_code && !jpeg_has_multiple_scans(&self->jpeg_)) return;
                self->Fail(kImageReadSays.cutShort);
            case JWRN_HIT_MARKER:
                self->Fail(kImageReadSays.cutOrDamaged);
            default:
                OnError(jpeg);
        }
    }

    Input input_;
    jpeg_decompress_struct jpeg_{};
    jpeg_error_mgr errors_{};
    std::jmp_buf jump_{};
    JpegCoefficients coefficients_;
    std::vector<std::uint8_t> inks_;
    bool inkColors_ = false;
    bool headRead_ = false;
    bool started_ = false;
    bool scratchFailed_ = false;
    const Message* said_ = nullptr;
    char reason_[JMSG_LENGTH_MAX] = "";  // the library's
};

}  // namespace

DecoderPointer OpenJpeg(Input input) {
    auto decoder = std::make_unique<JpegDecoder>(std::move(input));
    decoder->ReadHead();
    if (!decoder->MayLackPixels()) return decoder;
    input = decoder->ReadForNothing();
    decoder = std::make_unique<JpegDecoder>(std::move(input));
    decoder->ReadHead();
    return decoder;
}

}  // namespace host::codec
