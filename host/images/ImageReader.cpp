// Which format a file's first bytes mean, and the rows of its decoder as they are asked for.
#include "host/images/ImageReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "host/images/Codec.h"
#include "host/images/Orientation.h"
#include "host/images/RowLayouts.h"

namespace host {

ImageReadSettings& DefaultImageReadSettings() {
    static ImageReadSettings settings;
    return settings;
}

namespace codec {

void Input::CheckSize(std::int64_t width, std::int64_t height) const {
    if (width < 1 || height < 1) FailFormat(kImageReadSays.noPixels());
    const std::string sides = std::to_string(width) + " x " + std::to_string(height);
    if (width > INT32_MAX / 4 || height > INT32_MAX) FailFormat(kImageReadSays.tooLarge(sides));
    // Both sides fit 32 bits, so their product fits 64.
    if (pixelLimit == 0 || width * height <= pixelLimit) return;
    const std::string ofSize = limitedBySize ? " for a file of " + std::to_string(size) + " bytes" : "";
    FailFormat(kImageReadSays.aboveLimit(sides, std::to_string(pixelLimit) + ofSize));
}

void ReadExactly(std::FILE* stream, void* bytes, std::size_t length) {
    if (std::fread(bytes, 1, length, stream) == length) return;
    if (std::ferror(stream)) FailFile(kImageFileSays.cannotRead(std::strerror(errno)));
    FailFormat(kImageReadSays.cutShort());
}

LazyBytes::LazyBytes(std::size_t count) : size_(count) {
    if (count > 0) bytes_.reset(static_cast<std::uint8_t*>(std::calloc(count, 1)));
    if (count > 0 && !bytes_) throw std::bad_alloc();
}

HeldImage::HeldImage(const ImageInfo& imageInfo) {
    info = imageInfo;
    pixels_ = LazyBytes(static_cast<std::size_t>(info.height) * RowBytes());
}

void HeldImage::ReadRow(std::uint8_t* pixels) { std::memcpy(pixels, Row(next_++), RowBytes()); }

namespace {

constexpr std::size_t kSignatureBytes = 12;

struct Signature {
    std::size_t offset;
    const char* bytes;
    std::size_t length;
    DecoderPointer (*open)(Input);
};

constexpr Signature kSignatures[] = {
    {0, "\x89PNG\r\n\x1a\n", 8, OpenPng},
    {0, "\xff\xd8\xff", 3, OpenJpeg},
    {0, "II*\0", 4, OpenTiff},
    {0, "MM\0*", 4, OpenTiff},
    {0, "II+\0", 4, OpenTiff},
    {0, "MM\0+", 4, OpenTiff},
    {8, "WEBP", 4, OpenWebP},
    {0, "GIF8", 4, OpenGif},
    {0, "BM", 2, OpenBmp},
    {0, "P1", 2, OpenPnm},
    {0, "P2", 2, OpenPnm},
    {0, "P3", 2, OpenPnm},
    {0, "P4", 2, OpenPnm},
    {0, "P5", 2, OpenPnm},
    {0, "P6", 2, OpenPnm},
    {0, "P7", 2, OpenPnm},
};

DecoderPointer OpenBySignature(Input input) {
    if (input.size == 0) FailFormat(kImageReadSays.empty());
    char head[kSignatureBytes] = {};
    const std::size_t length = std::fread(head, 1, sizeof head, input.stream.get());
    if (std::ferror(input.stream.get())) FailFile(kImageFileSays.cannotRead(std::strerror(errno)));
    std::rewind(input.stream.get());
    for (const Signature& signature : kSignatures)
        if (signature.offset + signature.length <= length &&
            std::memcmp(head + signature.offset, signature.bytes, signature.length) == 0)
            return signature.open(std::move(input));
    FailFormat(kImageReadSays.unknown());
}

// Opens an ordinary file; anything that could block or has no end is refused.
std::FILE* OpenFile(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) FailFile(kImageFileSays.cannotOpen(std::strerror(errno)));
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        close(descriptor);
        FailFile(S_ISDIR(status.st_mode) ? kImageFileSays.folder() : kImageFileSays.notOrdinary());
    }
    std::FILE* stream = fdopen(descriptor, "rb");
    if (!stream) {
        close(descriptor);
        FailFile(kImageFileSays.noMemoryToOpen());
    }
    return stream;
}

std::int64_t SizeOf(std::FILE* stream) {
    std::int64_t size = -1;
    if (fseeko(stream, 0, SEEK_END) == 0) size = ftello(stream);
    std::rewind(stream);
    return size;
}

Input NewInput(Stream stream, const ImageReadSettings& settings) {
    const std::int64_t size = SizeOf(stream.get());
    const std::int64_t bySize = kFreePixels + std::max<std::int64_t>(size, 0) * kPixelsPerByte;
    std::int64_t limit = settings.pixelLimit.value_or(std::min(bySize, kMostPixels));
    bool limitedBySize = !settings.pixelLimit && limit == bySize;
    if (limit > 0 && limit < settings.pixelsAtHand) limit = settings.pixelsAtHand, limitedBySize = false;
    return {std::move(stream), size, limit, limitedBySize};
}

// Runs a step of a codec and turns what it throws into ImageError.
template <class Step>
void Run(const std::string& name, Step step) {
    try {
        step();
    } catch (const CodecError& error) {
        throw ImageError(error.kind, name, error.said);
    } catch (const std::bad_alloc&) {
        throw ImageError(ImageError::Kind::File, name, kImageFileSays.noMemoryToOpen());
    }
}

}  // namespace

}  // namespace codec

ImageReader::ImageReader(const std::string& path, const ImageReadSettings& settings) : name_(path) {
    codec::Run(name_, [&] { Open(codec::OpenFile(path), settings); });
}

ImageReader::ImageReader(const void* bytes, std::size_t length, const std::string& name,
                         const ImageReadSettings& settings)
    : name_(name) {
    codec::Run(name_, [&] {
        // An empty buffer can't be opened as a stream.
        if (length == 0) codec::FailFormat(kImageReadSays.empty());
        std::FILE* stream = fmemopen(const_cast<void*>(bytes), length, "rb");
        if (!stream) codec::FailFile(kImageFileSays.noMemoryToOpen());
        Open(stream, settings);
    });
}

ImageReader::~ImageReader() = default;

void ImageReader::Open(std::FILE* stream, const ImageReadSettings& settings) {
    decoder_ = codec::OpenBySignature(codec::NewInput(codec::Stream(stream), settings));
    if (settings.applyOrientation) decoder_ = codec::Upright(std::move(decoder_));
    info_ = decoder_->info;
    row_.resize(decoder_->RowBytes());
}

void ImageReader::ReadRow(std::uint8_t* pixels, PixelLayout layout) {
    codec::Run(name_, [&] {
        if (nextRow_ >= info_.height) codec::FailFormat(kImageReadSays.noMoreRows());
        // A decoder that failed is not asked again.
        const std::int32_t row = std::exchange(nextRow_, info_.height);
        decoder_->ReadRow(layout == info_.layout ? pixels : row_.data());
        nextRow_ = row + 1;
    });
    if (layout != info_.layout) ConvertRow(row_.data(), info_.layout, pixels, layout, info_.width);
}

}  // namespace host
