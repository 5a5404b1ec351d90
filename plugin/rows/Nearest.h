// Picking pixels of a row by their columns.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"
#include "plugin/rows/PixelSpan.h"

namespace rows {

// Bytes of a packed pixel that holds a span of up to four bytes.
constexpr std::int32_t PickedPixelSize(const PixelSpan& span) { return span.size == 3 ? 4 : span.size; }

// Writes the spans of the pixels columns[0 .. count - 1] of a row of `width` pixels side by side,
// PickedPixelSize bytes each; a fourth byte to three has no meaning. The columns don't fall and are
// below width. The span is compact and has 1 to 4 bytes; the rows must not overlap.
using PickPixelsFunction = void(const PixelSpan& span, const std::uint8_t* row, std::int32_t width,
                                const std::int32_t* columns, std::int32_t count, std::uint8_t* picked);
extern const Forms<PickPixelsFunction> kPickPixels;

}  // namespace rows
