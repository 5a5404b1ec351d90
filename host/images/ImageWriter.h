// Image files written row by row: PNG, JPEG, TIFF, WebP, BMP and PNM.
//
// Rows go to a file of a temporary name in the same folder, which takes the wanted name when all
// is written; so a failure leaves an older file of that name as it was.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "host/images/Image.h"

namespace host {

namespace codec {
class Encoder;
}

struct ImageWriteOptions {
    std::optional<ImageFileFormat> format;  // none: by the name's extension
    std::optional<std::int32_t> quality;    // 0 to 100; JPEG without: 90; WebP without: lossless
};

// The format that a name's extension stands for; none for an unknown one.
std::optional<ImageFileFormat> FormatOfExtension(const std::string& path);

class ImageWriter {
  public:
    // Starts a file. Throws ImageError: an extension that can't be written, a size that the
    // format can't hold, a folder that can't be written to.
    ImageWriter(const std::string& path, std::int32_t width, std::int32_t height, PixelLayout layout,
                const ImageWriteOptions& options = {});

    // Without Finish, removes what was written.
    ~ImageWriter();
    ImageWriter(const ImageWriter&) = delete;
    ImageWriter& operator=(const ImageWriter&) = delete;

    // Writes the next row, from the top: width × BytesPerPixel(layout) bytes in the layout given
    // at the start. JPEG drops alpha. Throws ImageError.
    void WriteRow(const std::uint8_t* pixels);

    // Completes the file and gives it its name. Throws ImageError, also when rows are missing.
    void Finish();

  private:
    void RemoveTemporary() noexcept;

    std::string path_;
    std::string target_;     // path_ with symbolic links followed
    std::string temporary_;  // empty once the file has its name
    std::FILE* stream_ = nullptr;
    std::unique_ptr<codec::Encoder> encoder_;
    PixelLayout layout_;
    std::int32_t width_;
    std::int32_t height_;
    std::int32_t rowsWritten_ = 0;
    std::vector<std::uint8_t> row_;  // one row in the encoder's layout
};

}  // namespace host
