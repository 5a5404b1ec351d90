// The image formats as a table of their own, and pictures' raw bytes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/PluginFixture.h"

namespace support {

// One image format. An absent channel's offset is 0, as the picture's properties state it.
struct Format {
    int code;
    const char* name;                   // the constant's name without "ImageFormat"
    int pixelSize;                      // bytes
    int red, green, blue, gray, alpha;  // byte offsets in a pixel
    bool isRGB, isGray, hasAlpha;

    bool HasRed() const { return isRGB; }
    bool HasGray() const { return isGray; }
};

inline constexpr int kFormatCount = 22;

// Indexed by code.
inline constexpr Format kFormats[kFormatCount] = {
    {0, "Unknown", 0, 0, 0, 0, 0, 0, false, false, false},   {1, "RGB", 3, 0, 1, 2, 0, 0, true, false, false},
    {2, "RGBA", 4, 0, 1, 2, 0, 3, true, false, true},        {3, "RGBX", 4, 0, 1, 2, 0, 0, true, false, false},
    {4, "ARGB", 4, 1, 2, 3, 0, 0, true, false, true},        {5, "XRGB", 4, 1, 2, 3, 0, 0, true, false, false},
    {6, "BGR", 3, 2, 1, 0, 0, 0, true, false, false},        {7, "BGRA", 4, 2, 1, 0, 0, 3, true, false, true},
    {8, "BGRX", 4, 2, 1, 0, 0, 0, true, false, false},       {9, "ABGR", 4, 3, 2, 1, 0, 0, true, false, true},
    {10, "XBGR", 4, 3, 2, 1, 0, 0, true, false, false},      {11, "G", 1, 0, 0, 0, 0, 0, false, true, false},
    {12, "GA", 2, 0, 0, 0, 0, 1, false, true, true},         {13, "AG", 2, 0, 0, 0, 1, 0, false, true, true},
    {14, "Scaling", 16, 0, 0, 0, 0, 0, false, false, false}, {15, "1of3", 3, 0, 0, 0, 0, 0, false, true, false},
    {16, "2of3", 3, 0, 0, 0, 1, 0, false, true, false},      {17, "3of3", 3, 0, 0, 0, 2, 0, false, true, false},
    {18, "1of4", 4, 0, 0, 0, 0, 0, false, true, false},      {19, "2of4", 4, 0, 0, 0, 1, 0, false, true, false},
    {20, "3of4", 4, 0, 0, 0, 2, 0, false, true, false},      {21, "4of4", 4, 0, 0, 0, 3, 0, false, true, false},
};

// The formats that have channels: all but Unknown and Scaling.
std::vector<Format> ChannelFormats();

// For the names of parameterised tests.
void PrintTo(const Format& format, std::ostream* stream);
std::string FormatName(const ::testing::TestParamInfo<Format>& info);

// Reproducible random numbers (SplitMix64).
class Random {
  public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t Next();
    int Below(int limit) { return static_cast<int>(Next() % static_cast<std::uint64_t>(limit)); }
    int Between(int least, int most) { return least + Below(most - least + 1); }
    Bytes NextBytes(std::size_t count);

  private:
    std::uint64_t state_;
};

// --- Raw storage -----------------------------------------------------------------------------
//
// A picture's row as it lies in its storage, from the row's first byte. For a clip that is the
// storage row's first pixel, not the clip's.

// The address of row y, through RawRow; null when there is none. Good until the next row of the
// picture is touched.
std::uint8_t* RowAddress(const Ref<Object>& picture, int y);

// Width × PixelSize bytes of row y.
Bytes ReadRow(const Ref<Object>& picture, int y);

// All rows, one after the other, Width × PixelSize bytes each.
Bytes ReadPixels(const Ref<Object>& picture);

// Writes all rows from bytes laid out as ReadPixels gives them.
void WritePixels(const Ref<Object>& picture, const Bytes& pixels);

// Writes reproducible random bytes over all pixels.
void FillRandom(const Ref<Object>& picture, std::uint64_t seed);

// One byte of a pixel, by its offset within the pixel (plus the picture's own row start).
int ByteAt(const Ref<Object>& picture, int x, int y, std::int64_t offset);

// A memory block of height × rowSize bytes and a picture around it.
struct WrappedPicture {
    Ref<Object> block;
    Ref<Object> picture;
};
WrappedPicture WrapBlock(int width, int height, int format, int rowSize);

// Success, or a message with both values at the first byte that differs and a few around it.
::testing::AssertionResult SameBytes(const Bytes& actual, const Bytes& expected, int bytesPerRow = 0,
                                     int bytesPerPixel = 1);

}  // namespace support
