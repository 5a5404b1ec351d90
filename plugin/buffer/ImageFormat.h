// The image formats: 22 byte-interleaved pixel layouts, each named by a code.
#pragma once

#include <cstdint>
#include <iterator>

#include "sdk/PluginInterface.h"

namespace tqx {

enum ImageFormatCode : std::int32_t {
    ImageFormatUnknown = 0,
    ImageFormatRGB = 1,
    ImageFormatRGBA = 2,
    ImageFormatRGBX = 3,
    ImageFormatARGB = 4,
    ImageFormatXRGB = 5,
    ImageFormatBGR = 6,
    ImageFormatBGRA = 7,
    ImageFormatBGRX = 8,
    ImageFormatABGR = 9,
    ImageFormatXBGR = 10,
    ImageFormatG = 11,
    ImageFormatGA = 12,
    ImageFormatAG = 13,
    ImageFormatScaling = 14,  // four 32-bit floats: red, green, blue, alpha
    ImageFormat1of3 = 15,     // one byte of a 3-byte pixel, as gray
    ImageFormat2of3 = 16,
    ImageFormat3of3 = 17,
    ImageFormat1of4 = 18,  // one byte of a 4-byte pixel, as gray
    ImageFormat2of4 = 19,
    ImageFormat3of4 = 20,
    ImageFormat4of4 = 21,
};

inline constexpr std::int32_t kImageFormatCount = 22;

// One row of the format table. A channel that the layout lacks has offset 0.
struct ImageFormatRow {
    std::int32_t pixelSize;  // bytes
    std::int32_t red, green, blue, gray, alpha;
    bool isRGB, isGray, hasRed, hasGreen, hasBlue, hasGray, hasAlpha;
    const char* name;  // for ImageFormatString; null: none
};

// Indexed by format code. Row 0 describes nothing.
extern const ImageFormatRow kImageFormats[kImageFormatCount];

// A stand-alone description of a layout: the fields, by the same names, that a PixelBuffer holds
// for its own pixels.
struct ImageFormatInfo {
    std::int32_t Width = 0;   // pixels a row
    std::int32_t Height = 0;  // rows
    std::int32_t ImageFormat = 0;
    std::int32_t PixelSize = 0;  // bytes
    std::int32_t RedOffset = 0, GreenOffset = 0, BlueOffset = 0, GrayOffset = 0, AlphaOffset = 0;
    bool IsRGB = false, IsGray = false;
    bool HasRed = false, HasGreen = false, HasBlue = false, HasGray = false, HasAlpha = false;
    std::int32_t RowSize = 0;  // cleared by the set-up; the storage code sets it
};

// Writes size, code and layout of a format into a PixelBuffer or an ImageFormatInfo. False for
// an unknown code (0, negative or above 21): the record then describes nothing, yet keeps the
// size and the code that were asked for. A null record gives false.
template <class Record>
bool SetUpDescriptor(Record* record, std::int32_t width, std::int32_t height, std::int32_t format) {
    if (!record) return false;
    const bool known = format > ImageFormatUnknown && format < kImageFormatCount;
    const ImageFormatRow& row = kImageFormats[known ? format : ImageFormatUnknown];
    record->Width = width;
    record->Height = height;
    record->ImageFormat = format;
    record->PixelSize = row.pixelSize;
    record->RedOffset = row.red;
    record->GreenOffset = row.green;
    record->BlueOffset = row.blue;
    record->GrayOffset = row.gray;
    record->AlphaOffset = row.alpha;
    record->IsRGB = row.isRGB;
    record->IsGray = row.isGray;
    record->HasRed = row.hasRed;
    record->HasGreen = row.hasGreen;
    record->HasBlue = row.hasBlue;
    record->HasGray = row.hasGray;
    record->HasAlpha = row.hasAlpha;
    record->RowSize = 0;
    return known;
}

// The property ImageFormatString: the short name of the picture's format, nil for the codes from
// ImageFormat1of3 on and for any unknown one.
sdk::String* GetImageFormatString(sdk::Object* self);

}  // namespace tqx
