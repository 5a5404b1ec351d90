// Image files read row by row: PNG, JPEG, TIFF, WebP, GIF (first frame), BMP and PNM, recognised
// by their first bytes.
//
// What a file of n bytes may cost is bounded. Where the caller sets no limit of his own, it holds at
// most 2^24 + 1024 n pixels, and never more than 2^28 (Image.h). A file of more is refused before
// memory is taken for it, and so is, as far as its structure shows it, one that is cut short.
// Reading takes at most 16 bytes a pixel, 80 MB and n bytes, as a rule far less: rows are decoded
// as they are asked for where the format allows it. The whole image is held (at BytesPerPixel a
// pixel) for interlaced files, for WebP, and for files whose orientation wants more than a mirror;
// large JPEG files of several scans keep their coefficients in a scratch file of 6 bytes a pixel.
#pragma once

#include <memory>
#include <vector>

#include "host/images/Image.h"

namespace host {

namespace codec {
class Decoder;
}

class ImageReader {
  public:
    // Opens a file and reads its head. Throws ImageError.
    explicit ImageReader(const std::string& path, const ImageReadSettings& settings = DefaultImageReadSettings());

    // The same for a file's content in memory, `name` standing for it in messages. The bytes must
    // outlive the reader.
    ImageReader(const void* bytes, std::size_t length, const std::string& name,
                const ImageReadSettings& settings = DefaultImageReadSettings());

    ~ImageReader();
    ImageReader(const ImageReader&) = delete;
    ImageReader& operator=(const ImageReader&) = delete;

    // Width and height are those of the upright picture when orientation is applied.
    const ImageInfo& Info() const { return info_; }

    // Reads the next row, from the top, as Width × BytesPerPixel(layout) bytes. Colours become
    // gray by (77 R + 151 G + 28 B) / 256; alpha that the file lacks is 255, alpha that the
    // layout lacks is dropped. Throws ImageError, also after the last row.
    void ReadRow(std::uint8_t* pixels, PixelLayout layout);

    // In the layout of the file.
    void ReadRow(std::uint8_t* pixels) { ReadRow(pixels, info_.layout); }

  private:
    void Open(std::FILE* stream, const ImageReadSettings& settings);

    std::string name_;
    std::unique_ptr<codec::Decoder> decoder_;
    ImageInfo info_{};
    std::int32_t nextRow_ = 0;
    std::vector<std::uint8_t> row_;  // one row in the file's layout
};

}  // namespace host
