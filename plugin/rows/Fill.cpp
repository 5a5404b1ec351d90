// A pixel's pattern repeated over a row, and the loops over the pattern.
#include "plugin/rows/Fill.h"

#include <algorithm>
#include <cstring>

#include "plugin/rows/AskFor.h"
#include "plugin/rows/LoopForms.h"

namespace rows {

namespace {

struct Applying {
    ROWS_INLINE static void Run(const PixelPattern& pattern, std::uint8_t* row, std::int32_t width) {
        constexpr std::int64_t kBytes = PixelPattern::kBytes, kBytesAhead = 2048;
        const std::uint8_t* __restrict const keep = pattern.keep;
        const std::uint8_t* __restrict const value = pattern.value;
        std::uint8_t* __restrict to = row + pattern.span.offset;
        std::int64_t left = pattern.span.Extent(width);
        for (; left >= kBytes; left -= kBytes, to += kBytes) {
            if (pattern.writesAll) {
                std::memcpy(to, value, kBytes);
                continue;
            }
            AskFor(to + kBytesAhead, kBytes);
            for (int i = 0; i < kBytes; ++i) to[i] = static_cast<std::uint8_t>((to[i] & keep[i]) ^ value[i]);
        }
        for (int i = 0; i < left; ++i) to[i] = static_cast<std::uint8_t>((to[i] & keep[i]) ^ value[i]);
    }
};

// Where every byte gets the same value the C library knows best.
void SetBytes(const PixelPattern& pattern, std::uint8_t* row, std::int32_t width) {
    std::memset(row + pattern.span.offset, pattern.value[0], static_cast<std::size_t>(pattern.span.Extent(width)));
}

bool WritesOneValue(const PixelPattern& pattern) {
    return pattern.writesAll &&
           std::count(pattern.value, pattern.value + PixelPattern::kBytes, pattern.value[0]) == PixelPattern::kBytes;
}

// A pattern that changes nothing yet, over the bytes of the layout's first `count` channels.
PixelPattern KeepPattern(const PixelLayout& layout, int count) {
    PixelPattern pattern{};
    pattern.form = LoopForms<Applying>::kTable.Chosen();
    std::memset(pattern.keep, 255, sizeof(pattern.keep));
    if (layout.pixelSize > 0) pattern.span = SpanOf(layout.pixelSize, layout.offset, count);
    return pattern;
}

void SetByte(PixelPattern& pattern, std::int32_t offset, std::uint8_t keep, std::uint8_t value) {
    for (std::int32_t at = offset - pattern.span.offset; at < PixelPattern::kBytes; at += pattern.span.pixelSize) {
        pattern.keep[at] = keep;
        pattern.value[at] = value;
    }
}

}  // namespace

PixelPattern FillPattern(const PixelLayout& layout, int count, const std::uint8_t* values, std::int64_t bytes) {
    PixelPattern pattern = KeepPattern(layout, count);
    if (pattern.span.size == 0) return pattern;
    for (int channel = 0; channel < count; ++channel) SetByte(pattern, layout.offset[channel], 0, values[channel]);
    pattern.writesAll = std::count(pattern.keep, pattern.keep + PixelPattern::kBytes, 0) == PixelPattern::kBytes;
    if (WritesOneValue(pattern)) pattern.form = &SetBytes;
    if (pattern.writesAll && bytes >= kBytesToStream) pattern.stream = kStreamTile.Chosen();
    return pattern;
}

PixelPattern InvertPattern(const PixelLayout& layout, int count) {
    PixelPattern pattern = KeepPattern(layout, count);
    if (pattern.span.size == 0) return pattern;
    for (int channel = 0; channel < count; ++channel) SetByte(pattern, layout.offset[channel], 255, 255);
    return pattern;
}

void ApplyPattern(const PixelPattern& pattern, std::uint8_t* row, std::int32_t width) {
    if (width <= 0 || pattern.span.size == 0) return;
    if (pattern.stream)
        pattern.stream(pattern.value, row + pattern.span.offset, pattern.span.Extent(width));
    else
        pattern.form(pattern, row, width);
}

}  // namespace rows
