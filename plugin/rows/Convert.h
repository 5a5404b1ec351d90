// Converting pixels from one layout to another.
#pragma once

#include <cstdint>

#include "plugin/rows/Gray.h"
#include "plugin/rows/Move.h"
#include "plugin/rows/PixelLayout.h"

namespace rows {

// What becomes of the destination's alpha.
enum class AlphaRule {
    Leave,        // not written
    Copy,         // each pixel's own alpha
    Invert,       // 255 less the pixel's own alpha
    CopyFirst,    // the alpha of the row's first pixel
    InvertFirst,  // 255 less the alpha of the row's first pixel
};

// A conversion, decided once and applied to any number of rows. Colour becomes gray by Gray() (Gray.h);
// gray becomes red = green = blue. A rule other than Leave wants alpha in both sets.
struct Conversion {
    ChannelSet fromSet;
    ChannelSet toSet;
    PixelLayout from;
    PixelLayout to;
    AlphaRule alpha;
};

// A conversion and what its wider forms need; made once an operation.
struct ConversionPlan {
    Conversion conversion;
    bool byMoves;     // bytes only change places
    bool byGrays;     // colour becomes gray
    bool alphaMoves;  // and alpha is moved
    PixelSpan from;   // the bytes that are read
    PixelSpan to;     // the bytes that are written
    GrayPlan grays;   // with byGrays
    MovePlan moves;   // of all channels; with byGrays, from packed grays
    MovePlan alpha;
};

// `bytes`: of the pixels of all the rows that are written by the plan.
ConversionPlan PlanConversion(const Conversion& conversion, std::int64_t bytes = 0);

// Converts `width` pixels from left to right. Each pixel is read whole and then written, red,
// green, blue (or gray) first and alpha last, so the rows may overlap with that meaning. Bytes of
// the destination that are no channel of the conversion stay as they are. A width of 0 or below
// does nothing.
void ConvertRow(const ConversionPlan& plan, const std::uint8_t* source, std::uint8_t* destination, std::int32_t width);

// The same for a single row.
void ConvertRow(const Conversion& conversion, const std::uint8_t* source, std::uint8_t* destination,
                std::int32_t width);

}  // namespace rows
