// Which bytes of a row an operation touches, and whether two rows get into each other's way.
#pragma once

#include <algorithm>
#include <cstdint>

namespace rows {

// The bytes of each pixel from its first touched one to its last.
struct PixelSpan {
    std::int32_t pixelSize;  // bytes
    std::int32_t offset;     // bytes from a pixel's start
    std::int64_t size;       // bytes; 0: none. Offsets may lie 2^31 - 1 apart.

    // Whether the touched bytes of neighbouring pixels don't interleave.
    constexpr bool IsCompact() const { return size <= pixelSize; }

    // Bytes from the first touched byte of `width` pixels (1 or more) to the last, both counted.
    constexpr std::int64_t Extent(std::int32_t width) const { return (std::int64_t{width} - 1) * pixelSize + size; }
};

// The span of the first `count` of a layout's offsets.
constexpr PixelSpan SpanOf(std::int32_t pixelSize, const std::int32_t* offsets, int count) {
    if (count < 1) return {pixelSize, 0, 0};
    const auto [least, most] = std::minmax_element(offsets, offsets + count);
    return {pixelSize, *least, std::int64_t{*most} - *least + 1};
}

// Whether rows of `width` pixels share no byte.
inline bool AreDisjoint(const PixelSpan& from, const std::uint8_t* source, const PixelSpan& to,
                        const std::uint8_t* destination, std::int32_t width) {
    const auto first = reinterpret_cast<std::uintptr_t>(source) + static_cast<std::uintptr_t>(from.offset);
    const auto other = reinterpret_cast<std::uintptr_t>(destination) + static_cast<std::uintptr_t>(to.offset);
    return first + static_cast<std::uintptr_t>(from.Extent(width)) <= other ||
           other + static_cast<std::uintptr_t>(to.Extent(width)) <= first;
}

// Whether several neighbouring pixels, from left to right, may be read before the first of them is
// written: no pixel writes a byte that a later one reads, and no two pixels write the same byte.
// Among pixels of one size that is so unless a byte is written a whole pixel or more past where
// the pixel is read.
inline bool MayReadAhead(const PixelSpan& from, const std::uint8_t* source, const PixelSpan& to,
                         const std::uint8_t* destination, std::int32_t width) {
    if (!from.IsCompact() || !to.IsCompact()) return false;
    if (AreDisjoint(from, source, to, destination, width)) return true;
    const auto lastWritten = reinterpret_cast<std::uintptr_t>(destination) + static_cast<std::uintptr_t>(to.offset) +
                             static_cast<std::uintptr_t>(to.size) - 1;
    const auto firstRead = reinterpret_cast<std::uintptr_t>(source) + static_cast<std::uintptr_t>(from.offset);
    return from.pixelSize == to.pixelSize &&
           static_cast<std::intptr_t>(lastWritten - firstRead) < static_cast<std::intptr_t>(from.pixelSize);
}

}  // namespace rows
