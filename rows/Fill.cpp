#include "rows/Fill.h"

#include <algorithm>
#include <cstring>

namespace rows {

namespace {

// A pattern that changes nothing yet, over the bytes of the layout's first `count` channels.
PixelPattern KeepPattern(const PixelLayout& layout, int count) {
    PixelPattern pattern{};
    std::memset(pattern.keep, 255, sizeof(pattern.keep));
    pattern.pixelSize = layout.pixelSize;
    if (count < 1 || layout.pixelSize < 1) return pattern;
    const auto [least, most] = std::minmax_element(layout.offset, layout.offset + count);
    pattern.offset = *least;
    pattern.span = *most - *least + 1;
    return pattern;
}

void SetByte(PixelPattern& pattern, std::int32_t offset, std::uint8_t keep, std::uint8_t value) {
    for (std::int32_t at = offset - pattern.offset; at < PixelPattern::kBytes; at += pattern.pixelSize) {
        pattern.keep[at] = keep;
        pattern.value[at] = value;
    }
}

}  // namespace

PixelPattern FillPattern(const PixelLayout& layout, int count, const std::uint8_t* values) {
    PixelPattern pattern = KeepPattern(layout, count);
    if (pattern.span == 0) return pattern;
    for (int channel = 0; channel < count; ++channel) SetByte(pattern, layout.offset[channel], 0, values[channel]);
    pattern.writesAll = std::count(pattern.keep, pattern.keep + PixelPattern::kBytes, 0) == PixelPattern::kBytes;
    return pattern;
}

PixelPattern InvertPattern(const PixelLayout& layout, int count) {
    PixelPattern pattern = KeepPattern(layout, count);
    if (pattern.span == 0) return pattern;
    for (int channel = 0; channel < count; ++channel) SetByte(pattern, layout.offset[channel], 255, 255);
    return pattern;
}

void ApplyPattern(const PixelPattern& pattern, std::uint8_t* row, std::int32_t width) {
    if (width <= 0 || pattern.span == 0) return;
    constexpr std::int64_t kBytes = PixelPattern::kBytes;
    const std::uint8_t* __restrict const keep = pattern.keep;
    const std::uint8_t* __restrict const value = pattern.value;
    std::uint8_t* __restrict to = row + pattern.offset;
    std::int64_t left = (std::int64_t{width} - 1) * pattern.pixelSize + pattern.span;
    for (; left >= kBytes; left -= kBytes, to += kBytes) {
        if (pattern.writesAll)
            std::memcpy(to, value, kBytes);
        else
            for (int i = 0; i < kBytes; ++i) to[i] = static_cast<std::uint8_t>((to[i] & keep[i]) ^ value[i]);
    }
    for (int i = 0; i < left; ++i) to[i] = static_cast<std::uint8_t>((to[i] & keep[i]) ^ value[i]);
}

}  // namespace rows
