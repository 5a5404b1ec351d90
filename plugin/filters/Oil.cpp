// The call behind OilFilter, and the filter pixel by pixel where columns don't serve.
#include "plugin/filters/Oil.h"

#include <algorithm>

#include "plugin/buffer/Operation.h"
#include "plugin/filters/OilColumns.h"
#include "plugin/filters/OilPainter.h"
#include "plugin/filters/OilWindows.h"
#include "plugin/filters/PackedRows.h"

namespace tqx {

namespace {

// In place each painted pixel takes its old one's place in the row's copy and in the histograms.
template <rows::ChannelSet Set, class Window>
void PaintRow(Painter<Set>& painter, Window& window, std::uint8_t* centre, std::int64_t range, std::int32_t width,
              std::uint8_t* result, bool inPlace) {
    constexpr int kChannels = Painter<Set>::kChannels;
    window.Begin(painter);
    for (std::int64_t x = 0; x < width; ++x) {
        std::uint8_t* const painted = result + x * kChannels;
        std::uint8_t* const before = centre + x * kChannels;
        const bool last = x + 1 == width;  // whose histograms stay as they are
        painter.Paint(painted);
        if (inPlace) {
            window.Change(x, before, painted);
            if (range >= 0 && !last) {
                painter.Remove(before);
                painter.Add(painted);
            }
            std::copy_n(painted, kChannels, before);
        }
        if (!last) window.Slide(painter, x);
    }
}

template <rows::ChannelSet Set, class Window>
void PaintRows(const PackedRows& rows, RowRing& ring, Window& window, Painter<Set>& painter, std::int64_t range,
               std::uint8_t* result, bool inPlace) {
    const RowRange painted = rows.SourceRows();
    for (std::int32_t y = painted.first; y < painted.end; ++y) {
        window.MoveTo(y);
        std::uint8_t* const centre = ring.Row(y);
        if (!centre) continue;
        PaintRow(painter, window, centre, range, rows.Width(), result, inPlace);
        rows.Write(y, 0, rows.Width(), result);
        painter.KeepBlue();
    }
}

// False when memory was short and nothing was done.
template <rows::ChannelSet Set>
bool PaintByRows(Operation& operation, std::int32_t levels, std::int64_t range, bool inPlace) {
    const PackedRows rows(operation, PackedOrder::OfTheSet);
    const std::int32_t width = rows.Width();
    RowRing ring(rows, range < 0 ? 1 : 2 * range + 1, width);
    const ScratchBytes result(rows.BytesOf(width));
    if (!ring || !result) return false;
    Painter<Set> painter(levels);
    const auto paint = [&](auto&& window) {
        if (!window) return false;
        PaintRows(rows, ring, window, painter, range, result.data(), inPlace);
        return true;
    };
    const RowRange painted = rows.SourceRows();
    if (TallWindow<Set>::Suits(ring, levels, range, width) &&
        paint(TallWindow<Set>(ring, painted, levels, range, width)))
        return true;
    return paint(FlatWindow<Set>(ring, painted, range, width));
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
    if (sharing == Sharing::Apart && PaintByColumns(operation, bins, range, &oilSlots.blue)) return operation.Give();
    rows::ForChannelSet(operation.channels, [&]<rows::ChannelSet Set>() {
        if (sharing != Sharing::Overlapping && PaintByRows<Set>(operation, bins, range, sharing == Sharing::SamePixels))
            return;
        PaintByPixels<Set>(operation, bins, range);
    });
    return operation.Give();
}

}  // namespace tqx
