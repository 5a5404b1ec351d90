// WebP files; of animated ones the first picture. The library wants the whole file and gives the
// whole image, so both are held.
#include <webp/decode.h>
#include <webp/demux.h>
#include <webp/encode.h>

#include <algorithm>
#include <cstring>

#include "host/images/Codec.h"
#include "host/images/Orientation.h"

namespace host::codec {

namespace {

// No WebP file comes near this; one that does is not read into memory.
constexpr std::int64_t kMostFileBytes = std::int64_t{1} << 30;

// How hard the library tries without loss, 0 (fast) to 9: beyond 1 it takes many times as long
// for a few percent.
constexpr int kLosslessLevel = 1;

struct DeleteDemuxer {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};

using Bytes = std::vector<std::uint8_t>;

// A file is its name and length, its kind, and chunks of a name and a length each.
constexpr std::size_t kFileHead = 12;
constexpr std::size_t kChunkHead = 8;

std::size_t LittleAt(const Bytes& file, std::size_t at) {
    std::size_t number = 0;
    for (std::size_t i = 0; i < 4 && at + i < file.size(); ++i) number |= std::size_t{file[at + i]} << 8 * i;
    return number;
}

// The length that the file states of itself; the library misses only what it needs.
void CheckLength(const Bytes& file) {
    if (LittleAt(file, 4) + kChunkHead > file.size()) FailFormat(kImageReadSays.cutShort());
}

// The content of the first chunk of a name; empty when there is none.
std::string_view ChunkIn(const Bytes& file, std::string_view name) {
    std::string_view rest(reinterpret_cast<const char*>(file.data()), file.size());
    rest.remove_prefix(std::min<std::size_t>(rest.size(), kFileHead));
    while (rest.size() >= kChunkHead) {
        const std::size_t length = LittleAt(file, file.size() - rest.size() + 4);
        if (length > rest.size() - kChunkHead) break;
        if (rest.starts_with(name)) return rest.substr(kChunkHead, length);
        rest.remove_prefix(std::min(rest.size(), kChunkHead + length + length % 2));
    }
    return {};
}

// Exif data count before XMP data.
std::int32_t OrientationIn(const Bytes& file) {
    const std::string_view exif = ChunkIn(file, "EXIF");
    const auto orientation = ExifOrientation(reinterpret_cast<const std::uint8_t*>(exif.data()), exif.size());
    return orientation ? *orientation : XmpOrientation(ChunkIn(file, "XMP ")).value_or(1);
}

void FailStatus(VP8StatusCode status) {
    if (status == VP8_STATUS_OUT_OF_MEMORY) throw std::bad_alloc();
    if (status == VP8_STATUS_NOT_ENOUGH_DATA || status == VP8_STATUS_SUSPENDED) FailFormat(kImageReadSays.cutShort());
    if (status != VP8_STATUS_OK) FailFormat(kImageReadSays.webpDamaged());
}

// Decodes a coded picture of so many rows into the image, from a place on.
void DecodeAt(const WebPData& coded, HeldImage& image, int left, int top, int height) {
    WebPDecoderConfig config;
    if (!WebPInitDecoderConfig(&config)) FailFormat(kImageFileSays.libraryVersion());
    const std::size_t before = static_cast<std::size_t>(left) * BytesPerPixel(image.info.layout);
    config.output.colorspace = image.Alpha() ? MODE_RGBA : MODE_RGB;
    config.output.is_external_memory = 1;
    config.output.u.RGBA = {image.Row(top) + before, static_cast<int>(image.RowBytes()),
                            image.RowBytes() * static_cast<std::size_t>(height) - before};
    const VP8StatusCode status = WebPDecode(coded.bytes, coded.size, &config);
    WebPFreeDecBuffer(&config.output);
    FailStatus(status);
}

struct Frame : WebPIterator {
    Frame() : WebPIterator{} {}
    ~Frame() { WebPDemuxReleaseIterator(this); }
    Frame(const Frame&) = delete;
    Frame& operator=(const Frame&) = delete;
};

// The first picture of an animation, on the clear canvas that it is shown on.
void DecodeFirstFrame(const Bytes& file, HeldImage& image) {
    const WebPData data{file.data(), file.size()};
    const std::unique_ptr<WebPDemuxer, DeleteDemuxer> demuxer(WebPDemux(&data));
    Frame frame;
    if (!demuxer || !WebPDemuxGetFrame(demuxer.get(), 1, &frame) || !frame.complete)
        FailFormat(kImageReadSays.cutOrDamaged());
    DecodeAt(frame.fragment, image, frame.x_offset, frame.y_offset, frame.height);
}

// --- Writing --------------------------------------------------------------------------------

// A picture of the library's, freed with its scope.
struct OwnedPicture : WebPPicture {
    OwnedPicture() : WebPPicture{} {
        if (!WebPPictureInit(this)) FailFile(kImageFileSays.writerLibraryVersion());
    }
    ~OwnedPicture() { WebPPictureFree(this); }
    OwnedPicture(const OwnedPicture&) = delete;
    OwnedPicture& operator=(const OwnedPicture&) = delete;
};

struct OwnedWriter : WebPMemoryWriter {
    OwnedWriter() { WebPMemoryWriterInit(this); }
    ~OwnedWriter() { WebPMemoryWriterClear(this); }
    OwnedWriter(const OwnedWriter&) = delete;
    OwnedWriter& operator=(const OwnedWriter&) = delete;
};

class WebPEncoder final : public Encoder {
  public:
    explicit WebPEncoder(const Output& output) : output_(output) {
        layout = LayoutOf(false, HasAlpha(output.layout));
        if (output.width > WEBP_MAX_DIMENSION || output.height > WEBP_MAX_DIMENSION)
            FailFormat(kImageWriteSays.sideTooLong("WebP", WEBP_MAX_DIMENSION));
        rowBytes_ = static_cast<std::size_t>(output.width) * BytesPerPixel(layout);
        pixels_.reserve(rowBytes_ * static_cast<std::size_t>(output.height));
    }

    void WriteRow(const std::uint8_t* pixels) override { pixels_.insert(pixels_.end(), pixels, pixels + rowBytes_); }

    void Finish() override {
        WebPConfig config;
        if (!Configure(config)) FailFile(kImageFileSays.writerLibraryVersion());
        OwnedWriter writer;
        Encode(config, writer);
        Check(writer);
        WriteExactly(output_.stream, writer.mem, writer.size);
    }

  private:
    void Encode(const WebPConfig& config, OwnedWriter& writer) const {
        OwnedPicture picture;
        picture.use_argb = config.lossless;
        picture.width = output_.width;
        picture.height = output_.height;
        picture.writer = WebPMemoryWrite;
        picture.custom_ptr = static_cast<WebPMemoryWriter*>(&writer);
        const auto import = HasAlpha(layout) ? WebPPictureImportRGBA : WebPPictureImportRGB;
        if (!import(&picture, pixels_.data(), static_cast<int>(rowBytes_))) throw std::bad_alloc();
        if (WebPEncode(&config, &picture)) return;
        if (picture.error_code == VP8_ENC_ERROR_OUT_OF_MEMORY) throw std::bad_alloc();
        FailFile(kImageWriteSays.libraryFault("WebP error " + std::to_string(picture.error_code)));
    }

    // Reads back what was coded: where memory is short the library's encoder may lose data and call
    // it done.
    void Check(const OwnedWriter& writer) const {
        HeldImage back({ImageFileFormat::WebP, output_.width, output_.height, layout, 1});
        try {
            DecodeAt({writer.mem, writer.size}, back, 0, 0, output_.height);
        } catch (const CodecError&) {
            throw std::bad_alloc();
        }
        if (!output_.quality && std::memcmp(back.Row(0), pixels_.data(), pixels_.size()) != 0) throw std::bad_alloc();
    }

    bool Configure(WebPConfig& config) const {
        if (!WebPConfigInit(&config)) return false;
        if (!output_.quality) {
            config.exact = 1;  // colours under clear pixels too
            return WebPConfigLosslessPreset(&config, kLosslessLevel) != 0;
        }
        config.quality = static_cast<float>(std::clamp(*output_.quality, 0, 100));
        return true;
    }

    Output output_;
    std::size_t rowBytes_;
    Bytes pixels_;
};

}  // namespace

DecoderPointer OpenWebP(Input input) {
    if (input.size > kMostFileBytes) FailFormat(kImageReadSays.webpTooLarge());
    Bytes file(static_cast<std::size_t>(input.size));
    ReadExactly(input.stream.get(), file.data(), file.size());
    CheckLength(file);
    WebPBitstreamFeatures features{};
    FailStatus(WebPGetFeatures(file.data(), file.size(), &features));
    input.CheckSize(features.width, features.height);
    const bool alpha = features.has_alpha || features.has_animation;
    auto image = std::make_unique<HeldImage>(
        ImageInfo{ImageFileFormat::WebP, features.width, features.height, LayoutOf(false, alpha), OrientationIn(file)});
    if (features.has_animation)
        DecodeFirstFrame(file, *image);
    else
        DecodeAt({file.data(), file.size()}, *image, 0, 0, features.height);
    return image;
}

EncoderPointer CreateWebP(const Output& output) { return std::make_unique<WebPEncoder>(output); }

}  // namespace host::codec
