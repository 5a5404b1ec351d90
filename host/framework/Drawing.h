// Drawing into a picture's storage. Everything is clipped to it; coordinates may be any.
#pragma once

#include "host/framework/PictureStorage.h"

namespace host {

struct Rectangle {
    std::int64_t x, y;           // left, top
    std::int64_t width, height;  // below 1: empty
};

void FillRectangle(PictureStorage& target, const Rectangle& area, RgbColor color);

// A frame of one pixel, inside the rectangle.
void FrameRectangle(PictureStorage& target, const Rectangle& area, RgbColor color);

// The pixels whose centre lies inside the ellipse that fills the rectangle.
void FillEllipse(PictureStorage& target, const Rectangle& area, RgbColor color);

// The filled ellipse without those of its pixels whose four neighbours all belong to it.
void FrameEllipse(PictureStorage& target, const Rectangle& area, RgbColor color);

// Both ends included.
void DrawLine(PictureStorage& target, std::int64_t x1, std::int64_t y1, std::int64_t x2, std::int64_t y2,
              RgbColor color);

// Draws the rectangle `from` of a source over the rectangle `to`, scaled by the nearest pixel:
// the centre of a target pixel decides. Parts of `from` outside the source draw nothing, nor does
// what lies outside the mask where there is one. A mask's channel m keeps m / 255 of the target's
// channel, rounded: black is opaque. The source may be the target itself.
void DrawStorage(PictureStorage& target, const Rectangle& to, const PictureStorage& source, const Rectangle& from,
                 const PictureStorage* mask);

}  // namespace host
