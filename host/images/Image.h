// What image files hold and how they can fail; shared by ImageReader and ImageWriter.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include "host/messages/Message.h"

namespace host {

enum class ImageFileFormat { Png, Jpeg, Tiff, WebP, Gif, Bmp, Pnm };

// The bytes of one pixel, in this order; the value is their count. Alpha is straight (not
// multiplied into the colours), 255 is opaque.
enum class PixelLayout : std::int32_t { Gray = 1, GrayAlpha = 2, Rgb = 3, Rgba = 4 };

constexpr std::int32_t BytesPerPixel(PixelLayout layout) { return static_cast<std::int32_t>(layout); }

constexpr bool HasAlpha(PixelLayout layout) { return layout == PixelLayout::GrayAlpha || layout == PixelLayout::Rgba; }

constexpr bool IsGray(PixelLayout layout) { return layout == PixelLayout::Gray || layout == PixelLayout::GrayAlpha; }

constexpr PixelLayout LayoutOf(bool gray, bool alpha) {
    return static_cast<PixelLayout>((gray ? 1 : 3) + (alpha ? 1 : 0));
}

struct ImageInfo {
    ImageFileFormat format;
    std::int32_t width;        // pixels, at least 1
    std::int32_t height;       // pixels, at least 1
    PixelLayout layout;        // the smallest layout that holds what the file says
    std::int32_t orientation;  // 1 to 8 as stored in the file, by the Exif numbering; 1 is upright
};

// A file that can't be read or written. The text names the file.
class ImageError : public std::runtime_error {
  public:
    enum class Kind {
        File,    // the file itself: missing, not permitted, disk full
        Format,  // what is in it: unknown, damaged, cut short, too large
    };

    ImageError(Kind errorKind, const std::string& path, const Said& said)
        : std::runtime_error(path + ": " + said.text()), kind(errorKind) {}

    Kind kind;
};

// How many pixels a file may hold where nobody says. A few bytes can state any size, and be a whole
// image of it; so the limit grows with the file: every picture of a camera or a scanner, and every
// drawing of some content, has far more than a byte for a thousand pixels.
constexpr std::int64_t kMostPixels = std::int64_t{1} << 28;
constexpr std::int64_t kFreePixels = std::int64_t{1} << 24;  // for the smallest of files
constexpr std::int64_t kPixelsPerByte = 1024;

// How files are read where the caller doesn't say; the command's options change it.
struct ImageReadSettings {
    // Width × height; 0: any. None: for a file of n bytes kFreePixels + kPixelsPerByte × n, and no
    // more than kMostPixels (--max-pixels).
    std::optional<std::int64_t> pixelLimit;
    bool applyOrientation = true;   // turn pictures upright (--no-orientation)
    std::int64_t pixelsAtHand = 0;  // the caller has room for so many already: they are never refused
};

ImageReadSettings& DefaultImageReadSettings();

}  // namespace host
