// Rectangles, ellipses and round rectangles: shapes whose every row is one run of pixels.
#include "host/framework/Shapes.h"

#include <cmath>

namespace host {

namespace {

bool DrawsNothing(const Pen& pen) { return pen.width < 1 || pen.height < 1; }

// The rows of a rectangle that lie inside the target, counted from the rectangle's top.
Span VisibleRows(const PictureStorage& target, const Rectangle& area) {
    const Span rows = Clip(area.y, area.height, target.height);
    return {rows.first - area.y, rows.end - area.y};
}

Span Moved(const Span& span, std::int64_t by) { return {span.first + by, span.end + by}; }

// rowOf(y) is the run of a row counted from the area's top left corner, empty outside of it.
template <class RowOf>
void Fill(PictureStorage& target, const Rectangle& area, RgbColor color, const RowOf& rowOf) {
    if (IsEmpty(area)) return;
    SpanPainter painter(target, color);
    const Span rows = VisibleRows(target, area);
    for (std::int64_t y = rows.first; y < rows.end; ++y) painter.Fill(area.y + y, Moved(rowOf(y), area.x));
}

template <class RowOf>
void Frame(PictureStorage& target, const Rectangle& area, const Pen& pen, RgbColor color, const RowOf& rowOf) {
    if (IsEmpty(area) || DrawsNothing(pen)) return;
    SpanPainter painter(target, color);
    const Span rows = VisibleRows(target, area);
    for (std::int64_t y = rows.first; y < rows.end; ++y) {
        const Span own = rowOf(y), above = rowOf(y - pen.height), below = rowOf(y + pen.height);
        // What has neighbours on all sides is left out.
        const Span inner{std::max({own.first + pen.width, above.first, below.first}),
                         std::min({own.end - pen.width, above.end, below.end})};
        const bool solid = inner.Count() == 0;
        painter.Fill(area.y + y, Moved({own.first, solid ? own.end : inner.first}, area.x));
        if (!solid) painter.Fill(area.y + y, Moved({inner.end, own.end}, area.x));
    }
}

// The columns of an ellipse's row whose centres lie inside it.
Span EllipseRow(std::int64_t width, std::int64_t height, std::int64_t row) {
    if (row < 0 || row >= height) return {};
    const double radiusX = static_cast<double>(width) / 2, radiusY = static_cast<double>(height) / 2;
    const double up = (static_cast<double>(row) + 0.5 - radiusY) / radiusY;
    const double half = radiusX * std::sqrt(std::max(0.0, 1 - up * up));
    const auto first = static_cast<std::int64_t>(std::ceil(radiusX - half - 0.5));
    return {first, width - first};
}

auto RowsOfRectangle(const Rectangle& area) {
    return [area](std::int64_t y) { return y < 0 || y >= area.height ? Span{} : Span{0, area.width}; };
}

auto RowsOfEllipse(const Rectangle& area) {
    return [area](std::int64_t y) { return EllipseRow(area.width, area.height, y); };
}

auto RowsOfRoundRectangle(const Rectangle& area, const Corners& corners) {
    const std::int64_t width = std::min<std::int64_t>(corners.width, area.width);
    const std::int64_t height = std::min<std::int64_t>(corners.height, area.height);
    return [=](std::int64_t y) {
        if (y < 0 || y >= area.height) return Span{};
        const std::int64_t fromEdge = std::min(y, area.height - 1 - y);
        if (width < 1 || fromEdge >= height / 2) return Span{0, area.width};
        const std::int64_t inset = EllipseRow(width, height, fromEdge).first;
        return Span{inset, area.width - inset};
    };
}

}  // namespace

void FillRectangle(PictureStorage& target, const Rectangle& area, RgbColor color) {
    Fill(target, area, color, RowsOfRectangle(area));
}

void FrameRectangle(PictureStorage& target, const Rectangle& area, const Pen& pen, RgbColor color) {
    Frame(target, area, pen, color, RowsOfRectangle(area));
}

void FillEllipse(PictureStorage& target, const Rectangle& area, RgbColor color) {
    Fill(target, area, color, RowsOfEllipse(area));
}

void FrameEllipse(PictureStorage& target, const Rectangle& area, const Pen& pen, RgbColor color) {
    Frame(target, area, pen, color, RowsOfEllipse(area));
}

void FillRoundRectangle(PictureStorage& target, const Rectangle& area, const Corners& corners, RgbColor color) {
    Fill(target, area, color, RowsOfRoundRectangle(area, corners));
}

void FrameRoundRectangle(PictureStorage& target, const Rectangle& area, const Corners& corners, const Pen& pen,
                         RgbColor color) {
    Frame(target, area, pen, color, RowsOfRoundRectangle(area, corners));
}

}  // namespace host
