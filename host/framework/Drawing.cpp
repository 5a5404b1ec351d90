#include "host/framework/Drawing.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <vector>

namespace host {

namespace {

// A range of whole numbers from `first` up to but not including `end`.
struct Span {
    std::int64_t first, end;

    std::int64_t Count() const { return std::max<std::int64_t>(end - first, 0); }
};

Span Clip(std::int64_t start, std::int64_t length, std::int64_t limit) {
    return {std::max<std::int64_t>(start, 0), std::min(start + length, limit)};
}

void FillSpan(PictureStorage& target, const Span& columns, std::int64_t y, RgbColor color, std::vector<RgbColor>& row) {
    if (columns.Count() == 0 || y < 0 || y >= target.height) return;
    row.assign(static_cast<std::size_t>(columns.Count()), color);
    StoreColors(target, static_cast<std::int32_t>(columns.first), static_cast<std::int32_t>(y),
                static_cast<std::int32_t>(row.size()), row.data());
}

void FillPixel(PictureStorage& target, std::int64_t x, std::int64_t y, RgbColor color) {
    if (Contains(target, x, y))
        StoreColors(target, static_cast<std::int32_t>(x), static_cast<std::int32_t>(y), 1, &color);
}

// --- Ellipses -------------------------------------------------------------------------------

// The columns of an ellipse's row whose centres lie inside it; counted from the rectangle's left.
Span EllipseRow(const Rectangle& area, std::int64_t row) {
    if (row < 0 || row >= area.height) return {0, 0};
    const double radiusX = static_cast<double>(area.width) / 2, radiusY = static_cast<double>(area.height) / 2;
    const double up = (static_cast<double>(row) + 0.5 - radiusY) / radiusY;
    const double half = radiusX * std::sqrt(std::max(0.0, 1 - up * up));
    const auto first = static_cast<std::int64_t>(std::ceil(radiusX - half - 0.5));
    return {first, area.width - first};
}

// The rows of a rectangle that lie inside the target, counted from the rectangle's top.
Span VisibleRows(const PictureStorage& target, const Rectangle& area) {
    const Span rows = Clip(area.y, area.height, target.height);
    return {rows.first - area.y, rows.end - area.y};
}

bool IsEmpty(const Rectangle& area) { return area.width < 1 || area.height < 1; }

Span Shifted(const PictureStorage& target, const Span& columns, std::int64_t x) {
    return Clip(columns.first + x, columns.Count(), target.width);
}

// --- Pictures -------------------------------------------------------------------------------

// The positions of one side of a drawing: `count` target pixels from `first` on, each with the
// source pixel under its centre.
struct Scaled {
    std::int64_t first = 0;
    std::vector<std::int32_t> source;
};

// floor((2 i + 1) · from / (2 · to)): the source pixel under the centre of pixel i.
std::int64_t PixelUnderCentre(std::int64_t i, std::int64_t from, std::int64_t to) {
    return static_cast<std::int64_t>((static_cast<__int128>(2 * i + 1) * from) / (2 * static_cast<__int128>(to)));
}

Scaled ScaleSide(std::int64_t to, std::int64_t toLength, std::int64_t from, std::int64_t fromLength,
                 std::int64_t targetLimit, std::int64_t sourceLimit) {
    Scaled scaled;
    const Span visible = Clip(to, toLength, targetLimit);
    for (std::int64_t at = visible.first; at < visible.end; ++at) {
        const std::int64_t source = from + PixelUnderCentre(at - to, fromLength, toLength);
        // Positions grow, so those inside the source are one run.
        if (source < 0) continue;
        if (source >= sourceLimit) break;
        if (scaled.source.empty()) scaled.first = at;
        scaled.source.push_back(static_cast<std::int32_t>(source));
    }
    return scaled;
}

RgbColor Blend(RgbColor below, RgbColor above, RgbColor mask) {
    RgbColor result = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const std::uint32_t keep = mask >> shift & 255;
        const std::uint32_t sum = keep * (below >> shift & 255) + (255 - keep) * (above >> shift & 255);
        result |= (sum + 127) / 255 << shift;
    }
    return result;
}

// A copy of a storage that goes with its scope.
class TemporaryCopy {
  public:
    explicit TemporaryCopy(const PictureStorage& source) {
        if (!CopyStorage(copy_, source)) throw std::bad_alloc();
    }
    ~TemporaryCopy() { DestroyStorage(copy_); }
    TemporaryCopy(const TemporaryCopy&) = delete;
    TemporaryCopy& operator=(const TemporaryCopy&) = delete;
    const PictureStorage* get() const { return &copy_; }

  private:
    PictureStorage copy_;
};

// One source row, picked into target columns.
void PickRow(const PictureStorage& source, std::int32_t y, const Scaled& columns, std::vector<RgbColor>& whole,
             std::vector<RgbColor>& picked) {
    const std::int32_t first = columns.source.front(), last = columns.source.back();
    whole.resize(static_cast<std::size_t>(last - first) + 1);
    LoadColors(source, first, y, last - first + 1, whole.data());
    picked.resize(columns.source.size());
    for (std::size_t i = 0; i < picked.size(); ++i)
        picked[i] = whole[static_cast<std::size_t>(columns.source[i] - first)];
}

}  // namespace

void FillRectangle(PictureStorage& target, const Rectangle& area, RgbColor color) {
    std::vector<RgbColor> row;
    const Span columns = Clip(area.x, area.width, target.width), rows = Clip(area.y, area.height, target.height);
    for (std::int64_t y = rows.first; y < rows.end; ++y) FillSpan(target, columns, y, color, row);
}

void FrameRectangle(PictureStorage& target, const Rectangle& area, RgbColor color) {
    if (IsEmpty(area)) return;
    FillRectangle(target, {area.x, area.y, area.width, 1}, color);
    FillRectangle(target, {area.x, area.y + area.height - 1, area.width, 1}, color);
    FillRectangle(target, {area.x, area.y, 1, area.height}, color);
    FillRectangle(target, {area.x + area.width - 1, area.y, 1, area.height}, color);
}

void FillEllipse(PictureStorage& target, const Rectangle& area, RgbColor color) {
    if (IsEmpty(area)) return;
    std::vector<RgbColor> row;
    const Span rows = VisibleRows(target, area);
    for (std::int64_t y = rows.first; y < rows.end; ++y)
        FillSpan(target, Shifted(target, EllipseRow(area, y), area.x), area.y + y, color, row);
}

void FrameEllipse(PictureStorage& target, const Rectangle& area, RgbColor color) {
    if (IsEmpty(area)) return;
    std::vector<RgbColor> row;
    const Span rows = VisibleRows(target, area);
    for (std::int64_t y = rows.first; y < rows.end; ++y) {
        const Span own = EllipseRow(area, y), above = EllipseRow(area, y - 1), below = EllipseRow(area, y + 1);
        // What has neighbours on all sides is left out.
        const std::int64_t innerFirst = std::max({own.first + 1, above.first, below.first});
        const std::int64_t innerEnd = std::min({own.end - 1, above.end, below.end});
        const bool solid = innerFirst >= innerEnd;
        FillSpan(target, Shifted(target, {own.first, solid ? own.end : innerFirst}, area.x), area.y + y, color, row);
        if (!solid) FillSpan(target, Shifted(target, {innerEnd, own.end}, area.x), area.y + y, color, row);
    }
}

void DrawLine(PictureStorage& target, std::int64_t x1, std::int64_t y1, std::int64_t x2, std::int64_t y2,
              RgbColor color) {
    const bool steep = std::abs(y2 - y1) > std::abs(x2 - x1);
    if (steep) std::swap(x1, y1), std::swap(x2, y2);
    if (x1 > x2) std::swap(x1, x2), std::swap(y1, y2);
    const std::int64_t run = x2 - x1, rise = y2 - y1;
    const Span visible = Clip(x1, run + 1, steep ? target.height : target.width);
    for (std::int64_t x = visible.first; x < visible.end; ++x) {
        // Rounded to the nearest, halves away from the line's start.
        const __int128 twice = 2 * static_cast<__int128>(x - x1) * rise;
        const auto offset = run == 0 ? 0 : static_cast<std::int64_t>((twice + (rise < 0 ? -run : run)) / (2 * run));
        if (steep)
            FillPixel(target, y1 + offset, x, color);
        else
            FillPixel(target, x, y1 + offset, color);
    }
}

void DrawStorage(PictureStorage& target, const Rectangle& to, const PictureStorage& source, const Rectangle& from,
                 const PictureStorage* mask) {
    if (IsEmpty(to) || IsEmpty(from)) return;
    if (source.bytes == target.bytes || (mask && mask->bytes == target.bytes)) {
        TemporaryCopy unchanged(target);
        const PictureStorage* copy = unchanged.get();
        return DrawStorage(target, to, source.bytes == target.bytes ? *copy : source, from,
                           mask && mask->bytes == target.bytes ? copy : mask);
    }
    const std::int64_t right = mask ? std::min(source.width, mask->width) : source.width;
    const std::int64_t bottom = mask ? std::min(source.height, mask->height) : source.height;
    const Scaled columns = ScaleSide(to.x, to.width, from.x, from.width, target.width, right);
    const Scaled rows = ScaleSide(to.y, to.height, from.y, from.height, target.height, bottom);
    if (columns.source.empty()) return;
    const auto x = static_cast<std::int32_t>(columns.first);
    const auto count = static_cast<std::int32_t>(columns.source.size());
    std::vector<RgbColor> whole, colors, opacity, below(columns.source.size());
    for (std::size_t i = 0; i < rows.source.size(); ++i) {
        const auto y = static_cast<std::int32_t>(rows.first + static_cast<std::int64_t>(i));
        PickRow(source, rows.source[i], columns, whole, colors);
        if (mask) {
            PickRow(*mask, rows.source[i], columns, whole, opacity);
            LoadColors(target, x, y, count, below.data());
            for (std::size_t k = 0; k < colors.size(); ++k) colors[k] = Blend(below[k], colors[k], opacity[k]);
        }
        StoreColors(target, x, y, count, colors.data());
    }
}

}  // namespace host
