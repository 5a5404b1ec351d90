// Lines and what consists of them.
#include <algorithm>
#include <cstdlib>

#include "host/framework/Shapes.h"

namespace host {

namespace {

// A line as pixels along its longer side, the other side rounded to the nearest pixel, halves away
// from the line's start.
class Course {
  public:
    Course(Point from, Point to) : steep_(std::abs(to.y - from.y) > std::abs(to.x - from.x)), from_(from) {
        if (steep_ ? from.y > to.y : from.x > to.x) std::swap(from_, to);
        run_ = steep_ ? to.y - from_.y : to.x - from_.x;
        rise_ = steep_ ? to.x - from_.x : to.y - from_.y;
    }

    std::int64_t Length() const { return run_ + 1; }
    bool IsSteep() const { return steep_; }

    Point At(std::int64_t step) const {
        const __int128 twice = 2 * static_cast<__int128>(step) * rise_;
        const auto off = run_ == 0 ? 0 : static_cast<std::int64_t>((twice + (rise_ < 0 ? -run_ : run_)) / (2 * run_));
        return steep_ ? Point{from_.x + off, from_.y + step} : Point{from_.x + step, from_.y + off};
    }

    // The steps whose pixels are in rows from one to before another; the line is monotonous.
    Span StepsIn(const Span& rows) const {
        const bool down = steep_ || rise_ >= 0;
        const auto before = [&](std::int64_t row) {  // the first step that is at the row or beyond
            std::int64_t low = 0, high = Length();
            while (low < high) {
                const std::int64_t middle = low + (high - low) / 2, y = At(middle).y;
                (down ? y < row : y >= row) ? low = middle + 1 : high = middle;
            }
            return low;
        };
        return down ? Span{before(rows.first), before(rows.end)} : Span{before(rows.end), before(rows.first)};
    }

  private:
    bool steep_;
    Point from_;
    std::int64_t run_, rise_;
};

// An edge that goes down from its first row to before its end.
struct Edge {
    Point top, bottom;

    // The first column whose centre is not left of the edge, in the middle of a row:
    // ceil(top.x + (2 y + 1 - 2 top.y) dx / (2 dy) - 1/2), with all over 2 dy.
    std::int64_t ColumnAt(std::int64_t y) const {
        const __int128 twice = 2 * static_cast<__int128>(bottom.y - top.y);
        const __int128 over = (2 * static_cast<__int128>(y - top.y) + 1) * (bottom.x - top.x) - twice / 2;
        const __int128 floor = over / twice - (over % twice < 0);
        return top.x + static_cast<std::int64_t>(floor + (over % twice != 0));
    }
};

std::vector<Edge> EdgesOf(std::span<const Point> points) {
    std::vector<Edge> edges;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point from = points[i], to = points[(i + 1) % points.size()];
        if (from.y != to.y) edges.push_back(from.y < to.y ? Edge{from, to} : Edge{to, from});
    }
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.top.y < b.top.y; });
    return edges;
}

}  // namespace

void DrawLine(PictureStorage& target, Point from, Point to, const Pen& pen, RgbColor color) {
    if (pen.width < 1 || pen.height < 1) return;
    SpanPainter painter(target, color);
    const Course course(from, to);
    const std::int64_t top = std::min(from.y, to.y), bottom = std::max(from.y, to.y) + pen.height;
    const Span rows = Clip(top, bottom - top, target.height);
    for (std::int64_t y = rows.first; y < rows.end; ++y) {
        const Span steps = course.StepsIn({y - pen.height + 1, y + 1});
        if (steps.Count() == 0) continue;
        const std::int64_t first = course.At(steps.first).x, last = course.At(steps.end - 1).x;
        painter.Fill(y, {std::min(first, last), std::max(first, last) + pen.width});
    }
}

void FramePolygon(PictureStorage& target, std::span<const Point> points, const Pen& pen, RgbColor color) {
    for (std::size_t i = 0; i < points.size(); ++i)
        DrawLine(target, points[i], points[(i + 1) % points.size()], pen, color);
}

void FillPolygon(PictureStorage& target, std::span<const Point> points, RgbColor color) {
    SpanPainter painter(target, color);
    const std::vector<Edge> edges = EdgesOf(points);
    std::vector<Edge> active;
    std::vector<std::int64_t> columns;
    std::size_t next = 0;
    std::int64_t y = edges.empty() ? target.height : std::max<std::int64_t>(edges[0].top.y, 0);
    for (; y < target.height && (next < edges.size() || !active.empty()); ++y) {
        for (; next < edges.size() && edges[next].top.y <= y; ++next) active.push_back(edges[next]);
        std::erase_if(active, [y](const Edge& edge) { return edge.bottom.y <= y; });
        columns.clear();
        for (const Edge& edge : active) columns.push_back(edge.ColumnAt(y));
        std::sort(columns.begin(), columns.end());
        for (std::size_t i = 0; i + 1 < columns.size(); i += 2) painter.Fill(y, {columns[i], columns[i + 1]});
    }
}

}  // namespace host
