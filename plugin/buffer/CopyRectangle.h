// The rule that cuts a copy from one picture to another, for pixel copies and drawn host pictures.
#pragma once

#include <cstdint>

namespace tqx {

// Destination pixel (destX + i, destY + j) comes from source pixel (sourceX + i, sourceY + j).
struct CopyRectangle {
    std::int32_t destX;
    std::int32_t destY;
    std::int32_t width;
    std::int32_t height;
    std::int32_t sourceX;
    std::int32_t sourceY;

    constexpr bool IsEmpty() const { return width <= 0 || height <= 0; }
    constexpr bool operator==(const CopyRectangle&) const = default;
};

// One axis of a copy.
struct CopySpan {
    std::int32_t dest;
    std::int32_t size;
    std::int32_t source;
};

// Cuts one axis to extents in pixels (below 1: nothing is left). A negative source offset moves
// the destination back by as much, and not the source forward: intended. A span that ends before
// the destination begins covers all of it: intended, its size is negative by then and is compared
// with the destination's as an unsigned number.
constexpr CopySpan ClipCopySpan(std::int64_t dest, std::int64_t size, std::int64_t source, std::int32_t destExtent,
                                std::int32_t sourceExtent) {
    if (source < 0) {
        dest += source;
        size += source;
        source = 0;
    }
    if (size < 0) {
        dest += size;
        size = -size;
    }
    if (dest < 0) {
        size += dest;
        source -= dest;
        dest = 0;
    }
    if (dest >= destExtent) return {0, 0, 0};
    if (size < 0 || size > destExtent - dest) size = destExtent - dest;
    if (size > sourceExtent - source) size = sourceExtent - source;
    if (size <= 0) return {0, 0, 0};
    return {static_cast<std::int32_t>(dest), static_cast<std::int32_t>(size), static_cast<std::int32_t>(source)};
}

// Cuts a copy to both pictures. Any arguments are taken.
constexpr CopyRectangle ClipCopy(const CopyRectangle& wanted, std::int32_t destWidth, std::int32_t destHeight,
                                 std::int32_t sourceWidth, std::int32_t sourceHeight) {
    const CopySpan columns = ClipCopySpan(wanted.destX, wanted.width, wanted.sourceX, destWidth, sourceWidth);
    const CopySpan lines = ClipCopySpan(wanted.destY, wanted.height, wanted.sourceY, destHeight, sourceHeight);
    return {columns.dest, lines.dest, columns.size, lines.size, columns.source, lines.source};
}

}  // namespace tqx
