// Writing the same change over the channel bytes of every pixel of a row.
#pragma once

#include <cstdint>

#include "plugin/rows/PixelLayout.h"
#include "plugin/rows/PixelSpan.h"
#include "plugin/rows/Streaming.h"

namespace rows {

// A change of bytes, the same for every pixel: byte = (byte & keep) ^ value. It is kept for as
// many neighbouring pixels as fill kBytes, a common multiple of the pixel sizes 1 to 4 and of a
// cache line.
struct PixelPattern {
    static constexpr int kBytes = 192;
    void (*form)(const PixelPattern& pattern, std::uint8_t* row, std::int32_t width);
    PixelSpan span;              // the changed bytes; of size 0 when there is none
    bool writesAll;              // nothing is kept: the bytes there need not be read
    StreamTileFunction* stream;  // for patterns that write all, where many bytes are to be written; else null
    std::uint8_t keep[kBytes];
    std::uint8_t value[kBytes];
};

// Stores values[i] at the layout's channel i, for `count` channels (0 to 4). Where channels share
// a byte the last one counts. The channels of a pixel lie within pixelSize (1 to 4) bytes. `bytes`
// are those of all the pixels that it is for.
PixelPattern FillPattern(const PixelLayout& layout, int count, const std::uint8_t* values, std::int64_t bytes = 0);

// Complements the layout's first `count` channels; a byte that several share is complemented once.
PixelPattern InvertPattern(const PixelLayout& layout, int count);

// Changes `width` pixels of a row. A width of 0 or below does nothing.
void ApplyPattern(const PixelPattern& pattern, std::uint8_t* row, std::int32_t width);

}  // namespace rows
