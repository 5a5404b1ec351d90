// What a file format implements. Codecs know neither names nor the caller's layout: they deliver
// and take rows in the layout that suits the file, and throw CodecError.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/images/Image.h"
#include "host/messages/ImageMessages.h"

namespace host::codec {

struct CodecError {
    ImageError::Kind kind;
    Said said;
};

[[noreturn]] inline void FailFormat(Said said) { throw CodecError{ImageError::Kind::Format, std::move(said)}; }

[[noreturn]] inline void FailFile(Said said) { throw CodecError{ImageError::Kind::File, std::move(said)}; }

// --- Reading --------------------------------------------------------------------------------

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

// A file to decode, positioned at its start.
struct Input {
    Stream stream;
    std::int64_t size;        // bytes
    std::int64_t pixelLimit;  // 0: none
    bool limitedBySize;       // the limit is that of a file of this size

    // Refuses a size without pixels or with more than the limit; to be called before memory is
    // taken for the image.
    void CheckSize(std::int64_t width, std::int64_t height) const;
};

// Reads exactly `length` bytes or fails as cut short.
void ReadExactly(std::FILE* stream, void* bytes, std::size_t length);

class Decoder {
  public:
    virtual ~Decoder() = default;
    // Delivers the next row from the top, in the layout of `info`.
    virtual void ReadRow(std::uint8_t* pixels) = 0;

    ImageInfo info{};
    bool Alpha() const { return HasAlpha(info.layout); }
    std::size_t RowBytes() const { return std::size_t(info.width) * BytesPerPixel(info.layout); }
};
using DecoderPointer = std::unique_ptr<Decoder>;

DecoderPointer OpenPng(Input input);
DecoderPointer OpenJpeg(Input input);
DecoderPointer OpenTiff(Input input);
DecoderPointer OpenWebP(Input input);
DecoderPointer OpenGif(Input input);
DecoderPointer OpenBmp(Input input);
DecoderPointer OpenPnm(Input input);

// Zeroes whose memory is taken page by page as it is written: a damaged file can ask for much, but
// costs only what it fills.
class LazyBytes {
  public:
    explicit LazyBytes(std::size_t count = 0);
    std::uint8_t* data() { return bytes_.get(); }
    const std::uint8_t* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }

  private:
    struct Free {
        void operator()(std::uint8_t* bytes) const { std::free(bytes); }
    };
    std::unique_ptr<std::uint8_t, Free> bytes_;
    std::size_t size_;
};

// An image that is held whole because its file doesn't keep rows in order.
class HeldImage final : public Decoder {
  public:
    explicit HeldImage(const ImageInfo& imageInfo);

    std::uint8_t* Row(std::int32_t y) { return pixels_.data() + std::size_t(y) * RowBytes(); }
    void ReadRow(std::uint8_t* pixels) override;

  private:
    LazyBytes pixels_;
    std::int32_t next_ = 0;
};

// --- Writing --------------------------------------------------------------------------------

// Which of the PNM family: whatever suits the rows, grays, colours, or the one that names its layout.
enum class PnmKind { Any, Gray, Colors, Named };

// What to write; the stream stays the caller's.
struct Output {
    std::FILE* stream;
    std::int32_t width;
    std::int32_t height;
    PixelLayout layout;  // of the rows that the caller has
    std::optional<std::int32_t> quality;
    PnmKind pnmKind = PnmKind::Any;
};

class Encoder {
  public:
    virtual ~Encoder() = default;
    // Takes the next row from the top, in `layout`.
    virtual void WriteRow(const std::uint8_t* pixels) = 0;
    // Writes what follows the rows. The stream's own errors are the caller's to find.
    virtual void Finish() = 0;

    PixelLayout layout{};  // of the rows that WriteRow takes
};
using EncoderPointer = std::unique_ptr<Encoder>;

EncoderPointer CreatePng(const Output& output);
EncoderPointer CreateJpeg(const Output& output);
EncoderPointer CreateTiff(const Output& output);
EncoderPointer CreateWebP(const Output& output);
EncoderPointer CreateBmp(const Output& output);
EncoderPointer CreatePnm(const Output& output);

// Writes all bytes or fails with the system's reason.
void WriteExactly(std::FILE* stream, const void* bytes, std::size_t length);

}  // namespace host::codec
