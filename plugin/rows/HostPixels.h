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

#include "plugin/rows/Forms.h"
#include "plugin/rows/PixelLayout.h"
#include "plugin/rows/PixelSpan.h"

namespace rows {

struct MaskedPlan;
using MaskedFunction = void(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                            std::uint8_t* destination, std::int32_t width);

// A masked row, and what the wider forms need of it. They take four pixels a lane of 16 bytes.
struct MaskedPlan {
    MaskedFunction* form;       // for rows that may be read ahead
    PixelLayout layout;         // of the destination: red, green, blue, alpha
    std::uint8_t flip;          // exclusive-or of the mask: 255 inverts it
    PixelSpan host;             // the bytes read of a host pixel
    PixelSpan span;             // the destination's written bytes
    bool compact;               // pixels of 3 or 4 bytes that don't interleave: wider forms can run
    std::uint8_t written[16];   // 255: the byte of a lane's destination, from its first written one, is written
    std::uint8_t index[16];     // the host byte behind each destination byte
    std::uint8_t fromMask[16];  // 255: it is the mask's
    std::uint8_t maskFlip[16];  // the flip of each destination byte
    std::uint8_t inverse[16];   // the destination byte behind each host byte
};

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
