// Image files written row by row: PNG, JPEG, TIFF, WebP, BMP and PNM.
//
// Rows go to a file of a temporary name in the same folder, which takes the wanted name when all
// is written; so a failure leaves an older file of that name as it was. The new file has the
// permissions of the older one, which must be writable; a symbolic link stays, and the file that it
// leads to is written. A file's other hard links keep the older content. The temporary file is
// among those of platform/ScratchFiles.h.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "host/images/Image.h"

namespace host {

namespace codec {
class Encoder;
class OutputFile;
}  // namespace codec

struct ImageWriteOptions {
    std::optional<ImageFileFormat> format;  // none: by the name's extension
    std::optional<std::int32_t> quality;    // 0 to 100; JPEG without: 90; WebP without: lossless
};

// Of PNM files, .pgm holds grays, .ppm colours, both without alpha; .pam is P7, with the layout of
// the rows; .pnm, and any other name when the format is given, is P5, P6 or, where there is alpha, P7.
//
// The format that a name's extension stands for; none for an unknown one.
std::optional<ImageFileFormat> FormatOfExtension(const std::string& path);

class ImageWriter {
  public:
    // Starts a file. Throws ImageError: an extension that can't be written, a size that the
    // format can't hold, a folder or an older file that can't be written to.
    ImageWriter(const std::string& path, std::int32_t width, std::int32_t height, PixelLayout layout,
                const ImageWriteOptions& options = {});

    // Without Finish, removes what was written.
    ~ImageWriter();
    ImageWriter(const ImageWriter&) = delete;
    ImageWriter& operator=(const ImageWriter&) = delete;

    // Writes the next row, from the top: width × BytesPerPixel(layout) bytes in the layout given
    // at the start. JPEG drops alpha. Throws ImageError, with the system's reason where it took no
    // more bytes.
    void WriteRow(const std::uint8_t* pixels);

    // Completes the file and gives it its name. Throws ImageError, also when rows are missing,
    // and when it is called again.
    void Finish();

  private:
    std::string path_;
    std::unique_ptr<codec::OutputFile> file_;
    std::unique_ptr<codec::Encoder> encoder_;  // goes before the file
    PixelLayout layout_;
    std::int32_t width_;
    std::int32_t height_;
    std::int32_t rowsWritten_ = 0;
    std::vector<std::uint8_t> row_;  // one row in the encoder's layout
};

}  // namespace host
