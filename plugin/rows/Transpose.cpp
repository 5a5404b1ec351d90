// Blocks turned by squares, plainly.
#include "plugin/rows/Transpose.h"

#include <algorithm>
#include <cstring>

namespace rows {

namespace {

// A square of pixels; small enough for its rows on both sides to stay in the first cache.
constexpr std::int32_t kSquare = 8;

// A pixel of three bytes.
struct Triple {
    std::uint8_t bytes[3];
};

template <class Pixel>
Pixel Load(const std::uint8_t* from) {
    Pixel pixel;
    std::memcpy(&pixel, from, sizeof(pixel));
    return pixel;
}

// The definition.
template <class Pixel>
void TransposePlain(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                    std::int64_t destinationStride, std::int32_t width, std::int32_t height) {
    constexpr std::int64_t kSize = sizeof(Pixel);
    for (std::int64_t x = 0; x < width; ++x)
        for (std::int64_t y = 0; y < height; ++y) {
            const Pixel pixel = Load<Pixel>(source + y * sourceStride + x * kSize);
            std::memcpy(destination + x * destinationStride + y * kSize, &pixel, sizeof(pixel));
        }
}

// A whole square, through registers as far as the compiler has them.
template <class Pixel>
void TransposeSquare(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                     std::int64_t destinationStride) {
    Pixel columns[kSquare][kSquare];
    for (int y = 0; y < kSquare; ++y) {
        Pixel row[kSquare];
        std::memcpy(row, source + y * sourceStride, sizeof(row));
        for (int x = 0; x < kSquare; ++x) columns[x][y] = row[x];
    }
    for (int x = 0; x < kSquare; ++x) std::memcpy(destination + x * destinationStride, columns[x], sizeof(columns[x]));
}

template <class Pixel>
void TransposeBySquares(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                        std::int64_t destinationStride, std::int32_t width, std::int32_t height) {
    constexpr std::int64_t kSize = sizeof(Pixel);
    for (std::int32_t x = 0; x < width; x += kSquare)
        for (std::int32_t y = 0; y < height; y += kSquare) {
            const std::uint8_t* const from = source + y * sourceStride + x * kSize;
            std::uint8_t* const to = destination + x * destinationStride + y * kSize;
            const std::int32_t across = std::min(kSquare, width - x), down = std::min(kSquare, height - y);
            if (across == kSquare && down == kSquare)
                TransposeSquare<Pixel>(from, sourceStride, to, destinationStride);
            else
                TransposePlain<Pixel>(from, sourceStride, to, destinationStride, across, down);
        }
}

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/TransposeWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

constexpr Forms<TransposeFunction> kBytes = ROWS_FORMS(TransposeBySquares<std::uint8_t>, TransposeBytes);
constexpr Forms<TransposeFunction> kWords = ROWS_FORMS(TransposeBySquares<std::uint16_t>, TransposeWords);
constexpr Forms<TransposeFunction> kTriples = ROWS_FORMS(TransposeBySquares<Triple>, TransposeTriples);
constexpr Forms<TransposeFunction> kInts = ROWS_FORMS(TransposeBySquares<std::uint32_t>, TransposeInts);

}  // namespace

const Forms<TransposeFunction>& TransposeFormsFor(std::int32_t pixelSize) {
    switch (pixelSize) {
        case 1:
            return kBytes;
        case 2:
            return kWords;
        case 3:
            return kTriples;
        default:
            return kInts;
    }
}

}  // namespace rows
