// Drawing pictures into pictures.
#pragma once

#include "host/framework/Spans.h"

namespace host {

// Each channel of a mask m keeps m / 255 of what is below and takes the rest of what is above, rounded.
RgbColor Blend(RgbColor below, RgbColor above, RgbColor mask);

// Draws the rectangle `from` of a source over the rectangle `to`, scaled by the nearest pixel:
// the centre of a target pixel decides. Parts of `from` outside the source draw nothing, nor does
// what lies outside the mask where there is one. A mask's channel m keeps m / 255 of the target's
// channel, rounded: black is opaque. The source may be the target itself.
void DrawStorage(PictureStorage& target, const Rectangle& to, const PictureStorage& source, const Rectangle& from,
                 const PictureStorage* mask);

}  // namespace host
