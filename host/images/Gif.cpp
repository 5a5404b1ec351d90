// The first picture of a GIF file, laid on the file's canvas. What the picture doesn't cover is
// clear, and so are the pixels of the index that the file calls transparent.
#include <gif_lib.h>

#include <algorithm>
#include <cstring>

#include "host/images/Codec.h"

namespace host::codec {

namespace {

// A code is longer than a byte and stands for a text of less than the table's 4096 entries.
constexpr std::int64_t kMostPixelsPerByte = 4096;

class GifDecoder final : public Decoder {
  public:
    explicit GifDecoder(Input input) : input_(std::move(input)) {
        int error = 0;
        gif_ = DGifOpen(this, OnRead, &error);
        if (!gif_) Fail(error);
    }

    ~GifDecoder() override {
        if (gif_) DGifCloseFile(gif_, nullptr);
    }

    void ReadHead() {
        FindFrame();
        frame_ = gif_->Image;
        colors_ = frame_.ColorMap ? frame_.ColorMap : gif_->SColorMap;
        if (!colors_) FailFormat(kImageReadSays.gifDamaged("no colours"));
        const std::int32_t width = std::max(gif_->SWidth, frame_.Left + frame_.Width);
        const std::int32_t height = std::max(gif_->SHeight, frame_.Top + frame_.Height);
        input_.CheckSize(width, height);
        if (frame_.Width < 1 || frame_.Height < 1) FailFormat(kImageReadSays.gifDamaged("an empty picture"));
        const bool covered = frame_.Width == width && frame_.Height == height;
        info = {ImageFileFormat::Gif, width, height, LayoutOf(false, !covered || transparent_ >= 0), 1};
        CheckWhole();
        row_.resize(static_cast<std::size_t>(frame_.Width));
    }

    void ReadRow(std::uint8_t* pixels) override {
        const std::int32_t y = next_++ - frame_.Top;
        std::memset(pixels, 0, RowBytes());
        if (y < 0 || y >= frame_.Height) return;
        const int size = BytesPerPixel(info.layout);
        const std::uint8_t* indexes = IndexesOf(y);
        std::uint8_t* pixel = pixels + std::size_t(frame_.Left) * size;
        for (std::int32_t x = 0; x < frame_.Width; ++x, pixel += size) PutColor(pixel, indexes[x]);
    }

  private:
    // Whether the coded pixels end, and can be enough: known before anybody takes memory for the
    // picture.
    void CheckWhole() const {
        if (std::int64_t{frame_.Width} * frame_.Height > input_.size * kMostPixelsPerByte)
            FailFormat(kImageReadSays.cutShort());
        std::FILE* stream = input_.stream.get();
        const off_t position = ftello(stream);
        for (int length = std::getc(stream); length != 0; length = std::getc(stream))
            if (length == EOF || fseeko(stream, length, SEEK_CUR) != 0) FailFormat(kImageReadSays.cutShort());
        if (fseeko(stream, position, SEEK_SET) != 0) FailFile(kImageFileSays.cannotBeRead());
    }

    void FindFrame() {
        for (;;) {
            GifRecordType type = UNDEFINED_RECORD_TYPE;
            Check(DGifGetRecordType(gif_, &type));
            if (type == IMAGE_DESC_RECORD_TYPE) return Check(DGifGetImageDesc(gif_));
            if (type == EXTENSION_RECORD_TYPE) ReadExtension();
            if (type == TERMINATE_RECORD_TYPE) FailFormat(kImageReadSays.gifWithoutPicture());
        }
    }

    // Of the extensions only the one that names a transparent index matters.
    void ReadExtension() {
        int code = 0;
        GifByteType* block = nullptr;
        Check(DGifGetExtension(gif_, &code, &block));
        if (code == GRAPHICS_EXT_FUNC_CODE && block && block[0] >= 4) transparent_ = block[1] & 1 ? block[4] : -1;
        while (block) Check(DGifGetExtensionNext(gif_, &block));
    }

    const std::uint8_t* IndexesOf(std::int32_t y) {
        if (!frame_.Interlace) {
            Check(DGifGetLine(gif_, row_.data(), frame_.Width));
            return row_.data();
        }
        if (!held_) ReadInterlaced();
        return held_->Row(y);
    }

    // Every eighth row, those between, then every fourth, then every second.
    void ReadInterlaced() {
        constexpr int starts[] = {0, 4, 2, 1}, steps[] = {8, 8, 4, 2};
        held_ = std::make_unique<HeldImage>(
            ImageInfo{ImageFileFormat::Gif, frame_.Width, frame_.Height, PixelLayout::Gray, 1});
        for (int pass = 0; pass < 4; ++pass)
            for (std::int32_t y = starts[pass]; y < frame_.Height; y += steps[pass])
                Check(DGifGetLine(gif_, held_->Row(y), frame_.Width));
    }

    void PutColor(std::uint8_t* pixel, int index) const {
        const bool clear = index == transparent_;
        const GifColorType color = index < colors_->ColorCount ? colors_->Colors[index] : GifColorType{};
        pixel[0] = color.Red;
        pixel[1] = color.Green;
        pixel[2] = color.Blue;
        if (Alpha()) pixel[3] = clear ? 0 : 255;
    }

    void Check(int result) const {
        if (result != GIF_OK) Fail(gif_->Error);
    }

    [[noreturn]] static void Fail(int error) {
        if (error == D_GIF_ERR_READ_FAILED || error == D_GIF_ERR_EOF_TOO_SOON) FailFormat(kImageReadSays.cutShort());
        const char* reason = GifErrorString(error);
        FailFormat(kImageReadSays.gifDamaged(reason ? reason : "unknown reason"));
    }

    static int OnRead(GifFileType* gif, GifByteType* bytes, int count) {
        auto* self = static_cast<GifDecoder*>(gif->UserData);
        return static_cast<int>(std::fread(bytes, 1, static_cast<std::size_t>(count), self->input_.stream.get()));
    }

    Input input_;
    GifFileType* gif_ = nullptr;
    GifImageDesc frame_{};
    const ColorMapObject* colors_ = nullptr;
    int transparent_ = -1;
    std::vector<std::uint8_t> row_;
    std::unique_ptr<HeldImage> held_;  // the indexes of an interlaced picture
    std::int32_t next_ = 0;
};

}  // namespace

DecoderPointer OpenGif(Input input) {
    auto decoder = std::make_unique<GifDecoder>(std::move(input));
    decoder->ReadHead();
    return decoder;
}

}  // namespace host::codec
