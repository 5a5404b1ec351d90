// The call behind OilFilter, and the filter pixel by pixel where columns don't serve.
#include "plugin/filters/Oil.h"

#include <algorithm>
#include <span>

#include "plugin/buffer/Operation.h"
#include "plugin/filters/OilColumns.h"
#include "plugin/filters/PackedRows.h"
#include "plugin/rows/OilHistogram.h"

namespace tqx {

namespace {

using rows::OilHistogram;

// Shared by all calls since the plug-in was loaded. Red and green are emptied for every pixel and
// so live in the painter alone. Blue is left as the last pixel of a colour picture had it, and
// compared with by gray pictures with alpha; alpha is never emptied. Both intended.
OilHistogram blueSlot;
OilHistogram alphaSlot;

// First and last of a pixel's neighbours along one axis; none when first is above last.
struct Neighbours {
    std::int64_t first;
    std::int64_t last;
};

Neighbours NeighboursOf(std::int64_t centre, std::int64_t range, std::int32_t extent) {
    return {std::max<std::int64_t>(centre - range, 0), std::min<std::int64_t>(centre + range, extent - 1)};
}

// Of rows, those that are there.
Neighbours LinesAround(std::int64_t centre, std::int64_t range, const RowRange& present) {
    return {std::max<std::int64_t>(centre - range, present.first),
            std::min<std::int64_t>(centre + range, std::int64_t{present.end} - 1)};
}

// The histograms of one neighbourhood, a channel each, and the colour that comes of them.
template <rows::ChannelSet Set>
class Painter {
  public:
    static constexpr int kChannels = rows::ChannelCount(Set);
    static constexpr bool kHasAlpha = rows::SetHasAlpha(Set);
    static constexpr int kColours = kHasAlpha ? kChannels - 1 : kChannels;
    static constexpr bool kIsColour = kColours == 3;

    explicit Painter(std::int32_t levels) : levels_(levels) {}

    void Empty() {
        for (OilHistogram& histogram : histograms_) histogram = {};
    }

    void Add(const std::uint8_t* pixel) {
        for (int c = 0; c < kChannels; ++c) rows::AddSample(histograms_[c], levels_, pixel[c]);
    }

    void Remove(const std::uint8_t* pixel) {
        for (int c = 0; c < kChannels; ++c) rows::RemoveSample(histograms_[c], levels_, pixel[c]);
    }

    // Also adds the neighbourhood's alpha to what was gathered before.
    void Paint(std::uint8_t* result) {
        for (int c = 0; c < kColours; ++c)
            result[c] = rows::MeanOfBin(histograms_[c], fullestBin_(histograms_[c], levels_));
        if constexpr (kHasAlpha) {
            rows::AddHistogram(alphaSlot, histograms_[kColours], levels_);
            const OilHistogram& blue = kIsColour ? histograms_[2] : blueSlot;
            result[kColours] = rows::MeanOfBin(alphaSlot, rows::FullestBinAgainst(alphaSlot, blue, levels_));
        }
    }

    // Leaves blue as the last painted pixel had it; bins past `levels` keep what they held.
    void KeepBlue() const {
        if constexpr (kIsColour) {
            std::copy_n(histograms_[2].count, levels_, blueSlot.count);
            std::copy_n(histograms_[2].sum, levels_, blueSlot.sum);
        }
    }

  private:
    std::int32_t levels_;
    rows::FullestBinFunction* fullestBin_ = rows::kFullestBin.Chosen();
    OilHistogram histograms_[kChannels] = {};  // alpha's last; in the set's order
};

// Slides the neighbourhood along row y: samples come in on the right and go out on the left. In
// place each painted pixel takes its old one's place in the row's copy and in the histograms.
template <rows::ChannelSet Set>
void PaintRow(Painter<Set>& painter, std::span<std::uint8_t* const> around, std::uint8_t* centre, std::int64_t range,
              std::int32_t width, std::uint8_t* result, bool inPlace) {
    constexpr int kChannels = Painter<Set>::kChannels;
    const auto addColumn = [&](std::int64_t x) {
        for (const std::uint8_t* row : around) painter.Add(row + x * kChannels);
    };
    painter.Empty();
    for (std::int64_t x = 0; x <= NeighboursOf(0, range, width).last; ++x) addColumn(x);
    for (std::int64_t x = 0; x < width; ++x) {
        std::uint8_t* const painted = result + x * kChannels;
        painter.Paint(painted);
        if (x + 1 == width) break;  // the histograms stay the last pixel's
        if (inPlace) {
            if (range >= 0) {
                painter.Remove(centre + x * kChannels);
                painter.Add(painted);
            }
            std::copy_n(painted, kChannels, centre + x * kChannels);
        }
        if (range < 0) continue;
        if (x - range >= 0)
            for (const std::uint8_t* row : around) painter.Remove(row + (x - range) * kChannels);
        if (x + 1 + range < width) addColumn(x + 1 + range);
    }
    if (inPlace)
        std::copy_n(result + std::int64_t{width - 1} * kChannels, kChannels,
                    centre + std::int64_t{width - 1} * kChannels);
}

// False when memory was short and nothing was done.
template <rows::ChannelSet Set>
bool PaintByRows(Operation& operation, std::int32_t levels, std::int64_t range, bool inPlace) {
    const PackedRows rows(operation, PackedOrder::OfTheSet);
    RowRing ring(rows, range < 0 ? 1 : 2 * range + 1, rows.Width());
    const ScratchBytes result(rows.BytesOf(rows.Width()));
    const Scratch<std::uint8_t*> around(ring.Capacity());
    if (!ring || !result || !around) return false;
    Painter<Set> painter(levels);
    const RowRange painted = rows.SourceRows();
    for (std::int32_t y = painted.first; y < painted.end; ++y) {
        const Neighbours lines = LinesAround(y, range, painted);
        std::size_t present = 0;
        for (std::int64_t line = lines.first; line <= lines.last; ++line)
            if (std::uint8_t* const row = ring.Row(line)) around[static_cast<std::int64_t>(present++)] = row;
        std::uint8_t* const centre = ring.Row(y);
        if (!centre) continue;
        PaintRow(painter, {around.data(), present}, centre, range, rows.Width(), result.data(), inPlace);
        rows.Write(y, 0, rows.Width(), result.data());
        painter.KeepBlue();
    }
    return true;
}

// The definition: every neighbourhood gathered anew from the pixels as they stand.
template <rows::ChannelSet Set>
void PaintByPixels(Operation& operation, std::int32_t levels, std::int64_t range) {
    const PackedRows rows(operation, PackedOrder::OfTheSet);
    Painter<Set> painter(levels);
    std::uint8_t pixel[4];
    const RowRange painted = rows.SourceRows();
    for (std::int32_t y = painted.first; y < painted.end; ++y) {
        const Neighbours lines = LinesAround(y, range, painted);
        for (std::int32_t x = 0; x < rows.Width() && rows.Read(y, x, 1, pixel); ++x) {
            const Neighbours columns = NeighboursOf(x, range, rows.Width());
            painter.Empty();
            for (std::int64_t line = lines.first; line <= lines.last; ++line)
                for (std::int64_t column = columns.first; column <= columns.last; ++column)
                    if (rows.Read(static_cast<std::int32_t>(line), static_cast<std::int32_t>(column), 1, pixel))
                        painter.Add(pixel);
            painter.Paint(pixel);
            rows.Write(y, x, 1, pixel);
            painter.KeepBlue();
        }
    }
}

}  // namespace

sdk::Object* OilFilter(sdk::Object* self, sdk::Object* dest, std::int32_t levels, std::int32_t range) {
    if (levels < 1) return nullptr;
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    const std::int32_t bins = std::min(levels, 256);
    const Sharing sharing = operation.Sharing();
    if (sharing == Sharing::Apart && PaintByColumns(operation, bins, range, &blueSlot)) return operation.Give();
    rows::ForChannelSet(operation.channels, [&]<rows::ChannelSet Set>() {
        if (sharing != Sharing::Overlapping && PaintByRows<Set>(operation, bins, range, sharing == Sharing::SamePixels))
            return;
        PaintByPixels<Set>(operation, bins, range);
    });
    return operation.Give();
}

}  // namespace tqx
