// Drawing host pixels through a mask.
//
// A host pixel is four bytes: unused, red, green, blue. A mask is made of host pixels too. How a
// row is drawn is planned once an operation and applied to any number of rows. The definition is
// the plain loop: from left to right each destination pixel is read whole, with its picture and
// mask pixels, and then written. Wider forms run where they give the same bytes, which the plan
// and the rows' addresses tell. Bytes of the destination that are no channel of the plan stay as
// they are. A width of 0 or below does nothing.
#pragma once

#include <cstdint>

#include "plugin/rows/PixelLayout.h"
#include "plugin/rows/PixelSpan.h"

namespace rows {

// A masked row, and what the wider forms need of it. They take sixteen pixels a step, or the
// first four of these.
struct MaskedPlan {
    PixelLayout layout;         // of the destination: red, green, blue, alpha
    std::uint8_t flip;          // exclusive-or of the mask: 255 inverts it
    PixelSpan host;             // the bytes read of a host pixel
    PixelSpan span;             // the destination's written bytes
    bool compact;               // pixels of 3 or 4 bytes that don't interleave: wider forms can run
    std::uint64_t written;      // bit b: byte b of a step's destination, from its first written one
    std::uint8_t index[64];     // the host byte behind each destination byte, | kFromMask for the mask's
    std::uint8_t maskFlip[64];  // the flip of each destination byte
    std::uint8_t inverse[64];   // the destination byte behind each host byte
};

inline constexpr std::uint8_t kFromMask = 64;

// Plans rows of DrawMaskedRow and of BlendMaskedRow. `to` has red, green and blue, the former's
// alpha as well.
MaskedPlan PlanMaskedDraw(const PixelLayout& to, bool invert);
MaskedPlan PlanMaskedBlend(const PixelLayout& to, bool invert);

// Writes alpha, which is the mask's red (255 where `mask` is null), or 255 less it when inverted;
// then red, green and blue. Where alpha shares a byte with a colour, the colour stays.
void DrawMaskedRow(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                   std::uint8_t* destination, std::int32_t width);

// Blends each colour with the mask's channel m of the same name: (m × destination + (255 - m) ×
// picture) / 255, truncated; m counts as 255 less it when inverted.
void BlendMaskedRow(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                    std::uint8_t* destination, std::int32_t width);

}  // namespace rows
