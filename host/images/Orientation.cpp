// Decoders that mirror rows or turn a whole image as a camera's note asks.
#include "host/images/Orientation.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace host::codec {

namespace {

// --- Exif -----------------------------------------------------------------------------------

// Bytes of either order, with reads beyond the end giving 0.
struct ExifBytes {
    const std::uint8_t* data;
    std::size_t length;
    bool bigEndian;

    std::uint32_t Number(std::size_t at, std::size_t size) const {
        if (at > length || size > length - at) return 0;
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < size; ++i)
            number |= static_cast<std::uint32_t>(data[at + i]) << 8 * (bigEndian ? size - 1 - i : i);
        return number;
    }
};

constexpr std::uint32_t kOrientationTag = 0x0112;
constexpr std::uint32_t kShortType = 3;

std::optional<std::int32_t> OrientationInDirectory(const ExifBytes& bytes) {
    const std::size_t directory = bytes.Number(4, 4);
    const std::uint32_t count = bytes.Number(directory, 2);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t entry = directory + 2 + std::size_t{12} * i;
        if (bytes.Number(entry, 2) != kOrientationTag || bytes.Number(entry + 2, 2) != kShortType) continue;
        const std::uint32_t value = bytes.Number(entry + 8, 2);
        if (value >= 1 && value <= 8) return static_cast<std::int32_t>(value);
    }
    return std::nullopt;
}

// --- Texts ----------------------------------------------------------------------------------

constexpr std::string_view kSpaces = " \t\r\n";

std::string_view Trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(kSpaces)));
    return text.substr(0, text.find_last_not_of(kSpaces) + 1);
}

// What follows the name in XMP: ="6" or >6<.
std::optional<std::int32_t> XmpValue(std::string_view text) {
    text = Trimmed(text);
    if (text.starts_with('>')) return OrientationDigit(text.substr(1, text.find('<') - 1));
    if (!text.starts_with('=')) return std::nullopt;
    text = Trimmed(text.substr(1));
    if (!text.starts_with('"') && !text.starts_with('\'')) return std::nullopt;
    return OrientationDigit(text.substr(1, text.find(text[0], 1) - 1));
}

// --- Turning --------------------------------------------------------------------------------

void MirrorRow(std::uint8_t* row, std::int32_t width, std::int32_t size) {
    std::uint8_t* left = row;
    std::uint8_t* right = row + std::size_t(width - 1) * size;
    for (; left < right; left += size, right -= size) std::swap_ranges(left, left + size, right);
}

class MirroredDecoder final : public Decoder {
  public:
    explicit MirroredDecoder(DecoderPointer source) : source_(std::move(source)) { info = source_->info; }

    void ReadRow(std::uint8_t* pixels) override {
        source_->ReadRow(pixels);
        MirrorRow(pixels, info.width, BytesPerPixel(info.layout));
    }

  private:
    DecoderPointer source_;
};

// Delivers rows of the upright image out of the held one.
class TurnedDecoder final : public Decoder {
  public:
    explicit TurnedDecoder(DecoderPointer source) : source_(std::move(source)), held_(source_->info) {
        info = held_.info;
        if (SwapsSides(info.orientation)) std::swap(info.width, info.height);
    }

    void ReadRow(std::uint8_t* pixels) override {
        if (next_ == 0)
            for (std::int32_t y = 0; y < held_.info.height; ++y) source_->ReadRow(held_.Row(y));
        const std::int32_t y = next_++;
        if (!SwapsSides(info.orientation)) {
            std::memcpy(pixels, held_.Row(held_.info.height - 1 - y), RowBytes());
            if (info.orientation == 3) MirrorRow(pixels, info.width, BytesPerPixel(info.layout));
            return;
        }
        const bool fromRight = info.orientation >= 7;  // which column of the held image
        const bool fromBottom = info.orientation == 6 || info.orientation == 7;
        const std::int32_t size = BytesPerPixel(info.layout);
        const std::size_t column = std::size_t(fromRight ? held_.info.width - 1 - y : y) * size;
        for (std::int32_t x = 0; x < info.width; ++x, pixels += size)
            std::memcpy(pixels, held_.Row(fromBottom ? info.width - 1 - x : x) + column, size);
    }

  private:
    DecoderPointer source_;
    HeldImage held_;
    std::int32_t next_ = 0;
};

}  // namespace

std::optional<std::int32_t> ExifOrientation(const std::uint8_t* data, std::size_t length) {
    if (length >= 6 && std::memcmp(data, "Exif\0\0", 6) == 0) data += 6, length -= 6;
    if (length < 8) return std::nullopt;
    if (std::memcmp(data, "MM\0*", 4) == 0) return OrientationInDirectory({data, length, true});
    if (std::memcmp(data, "II*\0", 4) == 0) return OrientationInDirectory({data, length, false});
    return std::nullopt;
}

std::optional<std::int32_t> OrientationDigit(std::string_view text) {
    text = Trimmed(text);
    if (text.size() != 1 || text[0] < '1' || text[0] > '8') return std::nullopt;
    return text[0] - '0';
}

std::optional<std::int32_t> XmpOrientation(std::string_view text) {
    constexpr std::string_view name = "tiff:Orientation";
    for (std::size_t at = text.find(name); at != std::string_view::npos; at = text.find(name, at + 1))
        // A window, so that many names in a row don't cost time; nobody writes more spaces.
        if (const auto value = XmpValue(text.substr(at + name.size(), 64))) return value;
    return std::nullopt;
}

DecoderPointer Upright(DecoderPointer source) {
    if (source->info.orientation == 1) return source;
    if (source->info.orientation == 2) return std::make_unique<MirroredDecoder>(std::move(source));
    return std::make_unique<TurnedDecoder>(std::move(source));
}

}  // namespace host::codec
