// Runs of pixels in the rows of a picture; everything is clipped to it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "host/framework/PictureStorage.h"

namespace host {

struct Rectangle {
    std::int64_t x, y;           // left, top
    std::int64_t width, height;  // below 1: empty
};

inline bool IsEmpty(const Rectangle& area) { return area.width < 1 || area.height < 1; }

// A range of whole numbers from `first` up to but not including `end`.
struct Span {
    std::int64_t first = 0, end = 0;

    std::int64_t Count() const { return std::max<std::int64_t>(end - first, 0); }
};

inline Span Clip(std::int64_t start, std::int64_t length, std::int64_t limit) {
    return {std::max<std::int64_t>(start, 0), std::min(start + length, limit)};
}

// Fills runs with one colour.
class SpanPainter {
  public:
    SpanPainter(PictureStorage& target, RgbColor color) : target_(target), color_(color) {}

    const PictureStorage& Target() const { return target_; }

    void Fill(std::int64_t y, const Span& columns) {
        const Span visible{std::max<std::int64_t>(columns.first, 0),
                           std::min<std::int64_t>(columns.end, target_.width)};
        if (visible.Count() == 0 || y < 0 || y >= target_.height) return;
        const auto count = static_cast<std::size_t>(visible.Count());
        if (row_.size() < count) row_.assign(count, color_);
        StoreColors(target_, static_cast<std::int32_t>(visible.first), static_cast<std::int32_t>(y),
                    static_cast<std::int32_t>(count), row_.data());
    }

  private:
    PictureStorage& target_;
    RgbColor color_;
    std::vector<RgbColor> row_;
};

}  // namespace host
