// Rectangles of pixels and the one rule that cuts them to a picture.
#pragma once

#include <cstdint>

#include "plugin/buffer/PixelBuffer.h"

namespace tqx {

// What is left of a rectangle, in pixels: inside the picture, or empty.
struct Rectangle {
    std::int32_t x;
    std::int32_t y;
    std::int32_t width;
    std::int32_t height;

    constexpr bool IsEmpty() const { return width <= 0 || height <= 0; }
    constexpr RowRange Rows() const { return {y, y + height}; }
    constexpr bool operator==(const Rectangle&) const = default;
};

// One axis of a rectangle.
struct Span {
    std::int32_t start;
    std::int32_t size;
};

// Cuts one axis to a picture of `extent` pixels (below 1: nothing is left): a negative size
// reaches back from its start, what lies before the picture is dropped, and so is what lies past
// its end. A span that ends before the picture begins covers all of it: intended, its size is
// negative by then and sizes compare as unsigned numbers.
constexpr Span ClipSpan(std::int64_t start, std::int64_t size, std::int32_t extent) {
    if (size < 0) {
        start += size;
        size = -size;
    }
    if (start < 0) {
        size += start;
        start = 0;
    }
    if (start >= extent) return {0, 0};
    if (size < 0 || size > extent - start) size = extent - start;
    return {static_cast<std::int32_t>(start), static_cast<std::int32_t>(size)};
}

// Cuts a rectangle to a picture of pictureWidth × pictureHeight. Any arguments are taken.
constexpr Rectangle ClipRectangle(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                                  std::int32_t pictureWidth, std::int32_t pictureHeight) {
    const Span columns = ClipSpan(x, width, pictureWidth);
    const Span lines = ClipSpan(y, height, pictureHeight);
    return {columns.start, lines.start, columns.size, lines.size};
}

// Cuts a rectangle to a picture.
inline Rectangle ClipTo(const PixelBuffer& buffer, std::int32_t x, std::int32_t y, std::int32_t width,
                        std::int32_t height) {
    return ClipRectangle(x, y, width, height, buffer.Width, buffer.Height);
}

}  // namespace tqx
