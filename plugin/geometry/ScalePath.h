// Which channels a scaling reads, how they lie in the intermediate picture, and where they go.
#pragma once

#include "plugin/buffer/PixelBuffer.h"
#include "plugin/rows/Move.h"
#include "plugin/rows/ScaleAcross.h"
#include "plugin/rows/ScaleSlots.h"

namespace tqx {

struct ScalePath {
    rows::Samples samples;      // in the source's pixels
    rows::SlotLayout slots;     // in the intermediate's pixels
    rows::MovePlan pack;        // source pixels → the sampled bytes side by side
    rows::MovePlan fromPacked;  // bytes of a pixel's values side by side → self
    rows::MovePlan fromSlots;   // bytes of all four slots → self

    int Values() const { return slots.values; }
};

// False when either picture is neither gray nor RGB. Alpha is scaled only between two pictures of
// a kind that both have it, and from RGB to gray; gray with alpha into RGB leaves self's alpha alone:
// intended. `pixels` of self will be written.
bool ChooseScalePath(const PixelBuffer& source, const PixelBuffer& self, std::int64_t pixels, ScalePath* path);

}  // namespace tqx
