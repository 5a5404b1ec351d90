#include "host/images/ImageWriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "host/images/Codec.h"
#include "host/images/RowLayouts.h"

namespace host {

namespace codec {

void WriteExactly(std::FILE* stream, const void* bytes, std::size_t length) {
    if (std::fwrite(bytes, 1, length, stream) != length)
        FailFile(std::string("can't be written: ") + std::strerror(errno));
}

namespace {

struct Extension {
    const char* name;
    ImageFileFormat format;
};

constexpr Extension kExtensions[] = {
    {"png", ImageFileFormat::Png},  {"jpg", ImageFileFormat::Jpeg},  {"jpeg", ImageFileFormat::Jpeg},
    {"jpe", ImageFileFormat::Jpeg}, {"tif", ImageFileFormat::Tiff},  {"tiff", ImageFileFormat::Tiff},
    {"gif", ImageFileFormat::Gif},  {"webp", ImageFileFormat::WebP}, {"bmp", ImageFileFormat::Bmp},
    {"pnm", ImageFileFormat::Pnm},  {"pgm", ImageFileFormat::Pnm},   {"ppm", ImageFileFormat::Pnm},
    {"pam", ImageFileFormat::Pnm},
};

EncoderPointer Create(ImageFileFormat format, const Output& output) {
    switch (format) {
        case ImageFileFormat::Png:
            return CreatePng(output);
        case ImageFileFormat::Jpeg:
            return CreateJpeg(output);
        case ImageFileFormat::Tiff:
            return CreateTiff(output);
        case ImageFileFormat::WebP:
            return CreateWebP(output);
        case ImageFileFormat::Bmp:
            return CreateBmp(output);
        case ImageFileFormat::Pnm:
            return CreatePnm(output);
        case ImageFileFormat::Gif:
            break;
    }
    FailFormat("GIF files can be read, not written; PNG keeps all their pixels");
}

// The file that a name leads to: itself, or what a symbolic link points at.
std::string FollowLinks(const std::string& path) {
    char* resolved = realpath(path.c_str(), nullptr);
    if (!resolved) return path;  // does not exist yet
    std::string target = resolved;
    std::free(resolved);
    struct stat status {};
    if (stat(target.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        FailFile(S_ISDIR(status.st_mode) ? "is a folder" : "is not an ordinary file");
    return target;
}

// A new file beside the target, with the permissions that any new file gets.
std::FILE* CreateTemporary(const std::string& target, std::string& temporary) {
    std::string name = target + ".XXXXXX";
    const int descriptor = mkostemp(name.data(), O_CLOEXEC);
    if (descriptor < 0) FailFile(std::string("can't be written: ") + std::strerror(errno));
    temporary = name;
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(descriptor, 0666 & ~mask);
    std::FILE* stream = fdopen(descriptor, "wb+");
    if (!stream) {
        close(descriptor);
        unlink(name.c_str());
        throw std::bad_alloc();
    }
    return stream;
}

template <class Step>
void RunWriting(const std::string& name, Step step) {
    try {
        step();
    } catch (const CodecError& error) {
        throw ImageError(error.kind, name, error.text);
    } catch (const std::bad_alloc&) {
        throw ImageError(ImageError::Kind::File, name, "can't be written: out of memory");
    }
}

}  // namespace

}  // namespace codec

std::optional<ImageFileFormat> FormatOfExtension(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || path.find('/', dot) != std::string::npos) return std::nullopt;
    for (const codec::Extension& extension : codec::kExtensions)
        if (strcasecmp(path.c_str() + dot + 1, extension.name) == 0) return extension.format;
    return std::nullopt;
}

ImageWriter::ImageWriter(const std::string& path, std::int32_t width, std::int32_t height, PixelLayout layout,
                         const ImageWriteOptions& options)
    : path_(path), layout_(layout), width_(width), height_(height) {
    try {
        codec::RunWriting(path_, [&] {
            if (width < 1 || height < 1) codec::FailFormat("can't be written: the picture has no pixels");
            const auto format = options.format ? options.format : FormatOfExtension(path);
            if (!format) codec::FailFormat("has an unknown extension (known: png, jpg, tif, webp, bmp, pgm, ppm, pam)");
            target_ = codec::FollowLinks(path);
            stream_ = codec::CreateTemporary(target_, temporary_);
            encoder_ = codec::Create(*format, {stream_, width, height, layout, options.quality});
            row_.resize(static_cast<std::size_t>(width) * BytesPerPixel(encoder_->layout));
        });
    } catch (...) {
        RemoveTemporary();
        throw;
    }
}

ImageWriter::~ImageWriter() { RemoveTemporary(); }

void ImageWriter::RemoveTemporary() noexcept {
    encoder_.reset();
    if (stream_) std::fclose(std::exchange(stream_, nullptr));
    if (!temporary_.empty()) unlink(temporary_.c_str());
    temporary_.clear();
}

void ImageWriter::WriteRow(const std::uint8_t* pixels) {
    codec::RunWriting(path_, [&] {
        if (rowsWritten_ >= height_) codec::FailFormat("can't be written: too many rows");
        const std::uint8_t* row = pixels;
        if (encoder_->layout != layout_) {
            ConvertRow(pixels, layout_, row_.data(), encoder_->layout, width_);
            row = row_.data();
        }
        encoder_->WriteRow(row);
        ++rowsWritten_;
    });
}

void ImageWriter::Finish() {
    codec::RunWriting(path_, [&] {
        if (rowsWritten_ != height_) codec::FailFormat("can't be written: rows are missing");
        encoder_->Finish();
        encoder_.reset();
        // A full disk may show only when the last bytes leave the buffer.
        if (std::fclose(std::exchange(stream_, nullptr)) != 0 || rename(temporary_.c_str(), target_.c_str()) != 0)
            codec::FailFile(std::string("can't be written: ") + std::strerror(errno));
        temporary_.clear();
    });
}

}  // namespace host
