// Which encoder a file's name means, and rows converted to its layout.
#include "host/images/ImageWriter.h"

#include <cerrno>
#include <cstring>
#include <new>

#include "host/images/Codec.h"
#include "host/images/OutputFile.h"
#include "host/images/RowLayouts.h"

namespace host {

namespace codec {

void WriteExactly(std::FILE* stream, const void* bytes, std::size_t length) {
    if (std::fwrite(bytes, 1, length, stream) != length) FailFile(kImageFileSays.cannotWrite(std::strerror(errno)));
}

namespace {

struct Extension {
    const char* name;
    ImageFileFormat format;
    PnmKind pnmKind = PnmKind::Any;
};

constexpr Extension kExtensions[] = {
    {"png", ImageFileFormat::Png},
    {"jpg", ImageFileFormat::Jpeg},
    {"jpeg", ImageFileFormat::Jpeg},
    {"jpe", ImageFileFormat::Jpeg},
    {"tif", ImageFileFormat::Tiff},
    {"tiff", ImageFileFormat::Tiff},
    {"gif", ImageFileFormat::Gif},
    {"webp", ImageFileFormat::WebP},
    {"bmp", ImageFileFormat::Bmp},
    {"pnm", ImageFileFormat::Pnm},
    {"pgm", ImageFileFormat::Pnm, PnmKind::Gray},
    {"ppm", ImageFileFormat::Pnm, PnmKind::Colors},
    {"pam", ImageFileFormat::Pnm, PnmKind::Named},
};

// What a name's extension stands for; null for an unknown one.
const Extension* FindExtension(const std::string& path) {
    const std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || path.find('/', dot) != std::string::npos) return nullptr;
    for (const Extension& extension : kExtensions)
        if (strcasecmp(path.c_str() + dot + 1, extension.name) == 0) return &extension;
    return nullptr;
}

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
    FailFormat(kImageWriteSays.gif());
}

// Runs a step of a codec and turns what it throws into ImageError. Where the system refused a write,
// that is the cause whatever the codec made of it.
template <class Step>
void RunWriting(const std::string& name, const std::unique_ptr<OutputFile>& file, Step step) {
    try {
        try {
            step();
        } catch (const CodecError&) {
            if (file) file->Check();
            throw;
        }
    } catch (const CodecError& error) {
        throw ImageError(error.kind, name, error.said);
    } catch (const std::bad_alloc&) {
        throw ImageError(ImageError::Kind::File, name, kImageFileSays.noMemoryToWrite());
    }
}

}  // namespace

}  // namespace codec

std::optional<ImageFileFormat> FormatOfExtension(const std::string& path) {
    const codec::Extension* extension = codec::FindExtension(path);
    return extension ? std::optional(extension->format) : std::nullopt;
}

ImageWriter::ImageWriter(const std::string& path, std::int32_t width, std::int32_t height, PixelLayout layout,
                         const ImageWriteOptions& options)
    : path_(path), layout_(layout), width_(width), height_(height) {
    codec::RunWriting(path_, file_, [&] {
        if (width < 1 || height < 1) codec::FailFormat(kImageWriteSays.noPixels());
        const codec::Extension* extension = codec::FindExtension(path);
        if (!extension && !options.format) codec::FailFormat(kImageWriteSays.extension());
        const auto format = options.format ? *options.format : extension->format;
        const auto kind = extension ? extension->pnmKind : codec::PnmKind::Any;
        file_ = std::make_unique<codec::OutputFile>(path);
        encoder_ = codec::Create(format, {file_->stream(), width, height, layout, options.quality, kind});
        row_.resize(static_cast<std::size_t>(width) * BytesPerPixel(encoder_->layout));
    });
}

ImageWriter::~ImageWriter() = default;

void ImageWriter::WriteRow(const std::uint8_t* pixels) {
    codec::RunWriting(path_, file_, [&] {
        if (rowsWritten_ >= height_) codec::FailFormat(kImageWriteSays.tooManyRows());
        const std::uint8_t* row = pixels;
        if (encoder_->layout != layout_) {
            ConvertRow(pixels, layout_, row_.data(), encoder_->layout, width_);
            row = row_.data();
        }
        encoder_->WriteRow(row);
        file_->Check();
        ++rowsWritten_;
    });
}

void ImageWriter::Finish() {
    codec::RunWriting(path_, file_, [&] {
        if (rowsWritten_ != height_) codec::FailFormat(kImageWriteSays.rowsMissing());
        if (!encoder_) codec::FailFormat(kImageWriteSays.twice());
        encoder_->Finish();
        // Libraries may write their last bytes when they are closed.
        encoder_.reset();
        file_->Complete();
    });
}

}  // namespace host
