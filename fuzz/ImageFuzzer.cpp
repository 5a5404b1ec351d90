// Any bytes as an image file of one format, TQX_FUZZ_FORMAT. Whatever they are, reading them ends
// in an image or in an error that names the file.
#include <cstdint>
#include <string_view>
#include <vector>

#include "host/images/ImageReader.h"

namespace {

constexpr host::ImageFileFormat kFormat = host::ImageFileFormat::TQX_FUZZ_FORMAT;

// Small enough that an honest image of so many pixels takes no noticeable time.
constexpr host::ImageReadSettings kSettings{.pixelLimit = 1 << 21, .applyOrientation = true};

// Files of other formats are other fuzzers' work.
bool IsOfFormat(std::string_view file) {
    using enum host::ImageFileFormat;
    switch (kFormat) {
        case Png:
            return file.starts_with("\x89PNG");
        case Jpeg:
            return file.starts_with("\xff\xd8\xff");
        case Tiff:
            return file.starts_with("II") || file.starts_with("MM");
        case WebP:
            return file.size() > 12 && file.substr(8).starts_with("WEBP");
        case Gif:
            return file.starts_with("GIF8");
        case Bmp:
            return file.starts_with("BM");
        case Pnm:
            return file.starts_with("P");
    }
    return false;
}

void Require(bool condition) {
    if (!condition) __builtin_trap();
}

// Reads all rows; the sum makes every byte count, so that tools see those nobody wrote.
void ReadAll(host::ImageReader& reader) {
    const host::ImageInfo& info = reader.Info();
    Require(info.format == kFormat && info.width > 0 && info.height > 0);
    std::vector<std::uint8_t> row(static_cast<std::size_t>(info.width) * 4);
    std::uint64_t sum = 0;
    for (std::int32_t y = 0; y < info.height; ++y) {
        // The layout of the file, and every other one.
        if (y % 2 == 0)
            reader.ReadRow(row.data());
        else
            reader.ReadRow(row.data(), static_cast<host::PixelLayout>(1 + y / 2 % 4));
        for (const std::uint8_t byte : row) sum += byte;
    }
    Require(sum != UINT64_MAX);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    if (!IsOfFormat(file)) return 0;
    try {
        host::ImageReader reader(data, size, "fuzz.image", kSettings);
        try {
            ReadAll(reader);
        } catch (const host::ImageError&) {
            // Asking on after a failure is legal and fails again.
            std::vector<std::uint8_t> row(static_cast<std::size_t>(reader.Info().width) * 4);
            try {
                reader.ReadRow(row.data());
                Require(false);
            } catch (const host::ImageError&) {
            }
            throw;
        }
    } catch (const host::ImageError& error) {
        Require(std::string_view(error.what()).starts_with("fuzz.image: "));
    }
    return 0;
}
