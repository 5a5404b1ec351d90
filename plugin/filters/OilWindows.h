// The neighbourhoods of one pixel after the other, for pictures in any storage and painted in place
// too: flat ones by their samples, tall ones by histograms of columns that slide down the picture.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include "plugin/buffer/Scratch.h"
#include "plugin/filters/OilPainter.h"
#include "plugin/filters/PackedRows.h"

namespace tqx {

// First and last of a pixel's neighbours along one axis; none when first is above last.
struct Neighbours {
    std::int64_t first;
    std::int64_t last;
};

inline Neighbours NeighboursOf(std::int64_t centre, std::int64_t range, std::int32_t extent) {
    return {std::max<std::int64_t>(centre - range, 0), std::min<std::int64_t>(centre + range, extent - 1)};
}

// Of rows, those that are there.
inline Neighbours LinesAround(std::int64_t centre, std::int64_t range, const RowRange& present) {
    return {std::max<std::int64_t>(centre - range, present.first),
            std::min<std::int64_t>(centre + range, std::int64_t{present.end} - 1)};
}

// Samples of a few rows come in on the right and go out on the left.
template <rows::ChannelSet Set>
class FlatWindow {
    static constexpr int kChannels = rows::ChannelCount(Set);

  public:
    // Any range; below 0 there are no neighbours.
    FlatWindow(RowRing& ring, const RowRange& painted, std::int64_t range, std::int32_t width)
        : ring_(ring), painted_(painted), range_(range), width_(width), around_(ring.Capacity()) {}

    // False when memory was short.
    explicit operator bool() const { return static_cast<bool>(around_); }

    // To the neighbours of row y; rows follow each other.
    void MoveTo(std::int32_t y) {
        const Neighbours lines = LinesAround(y, range_, painted_);
        present_ = 0;
        for (std::int64_t line = lines.first; line <= lines.last; ++line)
            if (std::uint8_t* const row = ring_.Row(line)) around_[static_cast<std::int64_t>(present_++)] = row;
    }

    // The neighbourhood of the row's first pixel.
    void Begin(Painter<Set>& painter) const {
        painter.Empty();
        for (std::int64_t x = 0; x <= NeighboursOf(0, range_, width_).last; ++x)
            for (const std::uint8_t* row : Rows()) painter.Add(row + x * kChannels);
    }

    // From pixel x to the next.
    void Slide(Painter<Set>& painter, std::int64_t x) const {
        if (range_ < 0) return;
        if (x - range_ >= 0)
            for (const std::uint8_t* row : Rows()) painter.Remove(row + (x - range_) * kChannels);
        if (x + 1 + range_ < width_)
            for (const std::uint8_t* row : Rows()) painter.Add(row + (x + 1 + range_) * kChannels);
    }

    // A sample of column x has become another one.
    void Change(std::int64_t, const std::uint8_t*, const std::uint8_t*) {}

  private:
    std::span<std::uint8_t* const> Rows() const { return {around_.data(), present_}; }

    RowRing& ring_;
    RowRange painted_;
    std::int64_t range_;
    std::int32_t width_;
    Scratch<std::uint8_t*> around_;
    std::size_t present_ = 0;
};

// Whole columns come in and go out, a histogram each, so that the time doesn't grow with the range.
// Where every pixel sees all columns, one histogram serves for all of them.
template <rows::ChannelSet Set>
class TallWindow {
    static constexpr int kChannels = rows::ChannelCount(Set);
    static constexpr std::int64_t kFreeBytes = 64 << 20;

  public:
    // Whether it serves, and quicker than samples: adding a histogram takes as long as some samples.
    static bool Suits(const RowRing& ring, std::int32_t levels, std::int64_t range, std::int32_t width) {
        if (range < 0) return false;
        if (range >= width - 1) return true;
        const std::int64_t bytes = std::int64_t{width} * StrideOf(levels) * std::int64_t{sizeof(std::uint32_t)};
        const std::int64_t rows = ring.Capacity();
        return rows > BinsOf(levels) / 8 && bytes <= std::max(kFreeBytes, 2 * rows * width * kChannels);
    }

    TallWindow(RowRing& ring, const RowRange& painted, std::int32_t levels, std::int64_t range, std::int32_t width)
        : ring_(ring),
          painted_(painted),
          levels_(levels),
          range_(range),
          width_(width),
          whole_(range >= width - 1),
          next_(painted.first),
          histograms_((whole_ ? 1 : width) + std::int64_t{1}, StrideOf(levels)) {}

    explicit operator bool() const { return static_cast<bool>(histograms_); }

    void MoveTo(std::int32_t y) {
        if (y - range_ > painted_.first) AddRow(y - range_ - 1, -1);
        for (const std::int64_t last = LinesAround(y, range_, painted_).last; next_ <= last; ++next_) AddRow(next_, 1);
    }

    void Begin(Painter<Set>& painter) const {
        painter.Empty();
        const std::int64_t last = whole_ ? 0 : range_;
        for (std::int64_t x = 0; x <= last; ++x) painter.Slide(Column(x), None(), BinsOf(levels_));
    }

    void Slide(Painter<Set>& painter, std::int64_t x) const {
        const bool enters = x + 1 + range_ < width_, leaves = x - range_ >= 0;
        if (!enters && !leaves) return;
        painter.Slide(enters ? Column(x + 1 + range_) : None(), leaves ? Column(x - range_) : None(), BinsOf(levels_));
    }

    void Change(std::int64_t x, const std::uint8_t* before, const std::uint8_t* after) {
        AddPixel(x, before, -1);
        AddPixel(x, after, 1);
    }

  private:
    static std::int32_t BinsOf(std::int32_t levels) {
        return (levels + rows::kBinsAtOnce - 1) / rows::kBinsAtOnce * rows::kBinsAtOnce;
    }
    static std::int64_t StrideOf(std::int32_t levels) { return std::int64_t{2} * kChannels * BinsOf(levels); }

    std::uint32_t* Column(std::int64_t x) const { return &histograms_[(whole_ ? 0 : x) * StrideOf(levels_)]; }
    const std::uint32_t* None() const { return &histograms_[(whole_ ? 1 : width_) * StrideOf(levels_)]; }

    void AddPixel(std::int64_t x, const std::uint8_t* pixel, int times) {
        std::uint32_t* histogram = Column(x);
        for (int channel = 0; channel < kChannels; ++channel, histogram += 2 * BinsOf(levels_)) {
            const int bin = levels_ * pixel[channel] >> 8;
            histogram[bin] += static_cast<std::uint32_t>(times);
            histogram[BinsOf(levels_) + bin] += static_cast<std::uint32_t>(times * pixel[channel]);
        }
    }

    void AddRow(std::int64_t y, int times) {
        const std::uint8_t* const row = ring_.Row(y);
        if (!row) return;
        for (std::int64_t x = 0; x < width_; ++x) AddPixel(x, row + x * kChannels, times);
    }

    RowRing& ring_;
    RowRange painted_;
    std::int32_t levels_;
    std::int64_t range_;
    std::int32_t width_;
    bool whole_;
    std::int64_t next_;  // the row that comes in next
    Scratch<std::uint32_t> histograms_;
};

}  // namespace tqx
