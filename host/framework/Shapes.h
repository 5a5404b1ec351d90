// Shapes in one colour, clipped to the picture; coordinates may be any.
//
// A pen is a rectangle that hangs to the right of and below each point of a line; a frame is as thick as
// it, inside the shape. A pen without width or height draws nothing.
#pragma once

#include <span>

#include "host/framework/Spans.h"

namespace host {

struct Pen {
    std::int32_t width = 1, height = 1;
};

void FillRectangle(PictureStorage& target, const Rectangle& area, RgbColor color);
void FrameRectangle(PictureStorage& target, const Rectangle& area, const Pen& pen, RgbColor color);

// The pixels whose centre lies inside the ellipse that fills the rectangle.
void FillEllipse(PictureStorage& target, const Rectangle& area, RgbColor color);

// The filled ellipse without those of its pixels that have others of it on all four sides, as far
// away as the pen is wide and high.
void FrameEllipse(PictureStorage& target, const Rectangle& area, const Pen& pen, RgbColor color);

// A rectangle whose corners are quarters of an ellipse of this size.
struct Corners {
    std::int32_t width, height;  // below 1: none
};

void FillRoundRectangle(PictureStorage& target, const Rectangle& area, const Corners& corners, RgbColor color);
void FrameRoundRectangle(PictureStorage& target, const Rectangle& area, const Corners& corners, const Pen& pen,
                         RgbColor color);

struct Point {
    std::int64_t x, y;
};

// Both ends included.
void DrawLine(PictureStorage& target, Point from, Point to, const Pen& pen, RgbColor color);

// From point to point and back to the first.
void FramePolygon(PictureStorage& target, std::span<const Point> points, const Pen& pen, RgbColor color);

// The pixels whose centre has an odd number of edges to its left; corners lie between pixels, so that a
// rectangle's are those of FillRectangle.
void FillPolygon(PictureStorage& target, std::span<const Point> points, RgbColor color);

}  // namespace host
