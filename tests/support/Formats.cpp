// The table of formats, and pixels written and read a byte at a time.
#include "tests/support/Formats.h"

#include <algorithm>
#include <cstdio>
#include <ostream>

namespace support {

std::vector<Format> ChannelFormats() {
    std::vector<Format> formats;
    for (const Format& format : kFormats)
        if (format.isRGB || format.isGray) formats.push_back(format);
    return formats;
}

void PrintTo(const Format& format, std::ostream* stream) { *stream << format.name; }

std::string FormatName(const ::testing::TestParamInfo<Format>& info) { return info.param.name; }

std::uint64_t Random::Next() {
    std::uint64_t z = state_ += 0x9E3779B97F4A7C15U;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31);
}

Bytes Random::NextBytes(std::size_t count) {
    Bytes bytes(count);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(Next());
    return bytes;
}

namespace {

std::size_t PackedRowSize(const Ref<Object>& picture) {
    const std::int64_t size = GetInt(picture, "Width") * GetInt(picture, "PixelSize");
    return size > 0 ? static_cast<std::size_t>(size) : 0;
}

}  // namespace

std::uint8_t* RowAddress(const Ref<Object>& picture, int y) { return BlockAddress(CallObject(picture, "RawRow", y)); }

Bytes ReadRow(const Ref<Object>& picture, int y) {
    const std::uint8_t* row = RowAddress(picture, y);
    return row ? Bytes(row, row + PackedRowSize(picture)) : Bytes();
}

Bytes ReadPixels(const Ref<Object>& picture) {
    Bytes pixels;
    const auto height = static_cast<int>(GetInt(picture, "Height"));
    for (int y = 0; y < height; ++y) {
        const Bytes row = ReadRow(picture, y);
        pixels.insert(pixels.end(), row.begin(), row.end());
    }
    return pixels;
}

void WritePixels(const Ref<Object>& picture, const Bytes& pixels) {
    const std::size_t size = PackedRowSize(picture);
    const auto height = static_cast<int>(GetInt(picture, "Height"));
    ASSERT_EQ(pixels.size(), size * static_cast<std::size_t>(std::max(height, 0)));
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = RowAddress(picture, y);
        ASSERT_NE(row, nullptr) << "row " << y;
        std::copy_n(pixels.data() + static_cast<std::size_t>(y) * size, size, row);
    }
}

void FillRandom(const Ref<Object>& picture, std::uint64_t seed) {
    const auto height = static_cast<std::size_t>(std::max<std::int64_t>(GetInt(picture, "Height"), 0));
    WritePixels(picture, Random(seed).NextBytes(PackedRowSize(picture) * height));
}

int ByteAt(const Ref<Object>& picture, int x, int y, std::int64_t offset) {
    const std::uint8_t* row = RowAddress(picture, y);
    return row ? row[x * GetInt(picture, "PixelSize") + offset] : -1;
}

WrappedPicture WrapBlock(int width, int height, int format, int rowSize) {
    WrappedPicture wrapped;
    wrapped.block = MakeBlock(static_cast<std::size_t>(height) * static_cast<std::size_t>(rowSize));
    wrapped.picture = New("PictureTQX", wrapped.block, width, height, format, rowSize);
    return wrapped;
}

namespace {

std::string Hex(const Bytes& bytes, std::size_t from, std::size_t to) {
    std::string text;
    for (std::size_t i = from; i < std::min(to, bytes.size()); ++i) {
        char two[4];
        std::snprintf(two, sizeof(two), " %02X", bytes[i]);
        text += two;
    }
    return text;
}

}  // namespace

::testing::AssertionResult SameBytes(const Bytes& actual, const Bytes& expected, int bytesPerRow, int bytesPerPixel) {
    if (actual == expected) return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure();
    if (actual.size() != expected.size())
        failure << actual.size() << " bytes where " << expected.size() << " were expected; ";
    const auto at = static_cast<std::size_t>(
        std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end()).first - actual.begin());
    failure << "first difference at byte " << at;
    if (bytesPerRow > 0) {
        const auto row = static_cast<std::size_t>(bytesPerRow);
        const auto pixel = static_cast<std::size_t>(bytesPerPixel);
        failure << " (x " << at % row / pixel << ", y " << at / row << ", byte " << at % row % pixel << ")";
    }
    const std::size_t from = at < 4 ? 0 : at - 4;
    return failure << "\n  actual  :" << Hex(actual, from, at + 12) << "\n  expected:" << Hex(expected, from, at + 12);
}

}  // namespace support
