// Pixels picked at random distances, two numbers of the C library's generator for each.
#include "plugin/filters/Diffuse.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "plugin/buffer/Operation.h"
#include "plugin/filters/PackedRows.h"

namespace tqx {

namespace {

// Copies of the rows around a pixel are kept up to this many bytes, all of which a window of a
// mapped picture seldom holds; beyond, pixels are fetched one at a time.
constexpr std::int64_t kMostBytesKept = 64 << 20;

// Around a pixel of a narrow picture no more than so many: all are looked at for each row.
constexpr std::int64_t kRowsAlwaysKept = 65;

// Draws places around pixels. Every pixel of the rows that the source's storage has draws twice,
// written or not, so that the generator's sequence does not depend on the destination.
class Scatter {
  public:
    Scatter(const PixelBuffer& source, std::int32_t level)
        : level_(level), range_(2 * std::int64_t{level} + 1), lastX_(source.Width - 1), lastY_(source.Height - 1) {}

    struct Place {
        std::int32_t x, y;
    };

    Place Near(std::int32_t x, std::int32_t y) const {
        const std::int64_t column = x + std::rand() % range_ - level_;
        const std::int64_t row = y + std::rand() % range_ - level_;
        return {static_cast<std::int32_t>(std::clamp<std::int64_t>(column, 0, lastX_)),
                static_cast<std::int32_t>(std::clamp<std::int64_t>(row, 0, lastY_))};
    }

    std::int64_t Range() const { return range_; }
    std::int64_t FirstRow(std::int32_t y) const { return std::clamp<std::int64_t>(y - level_, 0, lastY_); }
    std::int64_t LastRow(std::int32_t y) const { return std::clamp<std::int64_t>(y + level_, 0, lastY_); }

  private:
    std::int64_t level_;
    std::int64_t range_;  // never 0; the remainder by -1 is 0
    std::int64_t lastX_, lastY_;
};

// The definition: each pixel fetched when its turn comes and written before the next.
void DiffuseRowByPixels(Operation& operation, const PackedRows& rows, const Scatter& scatter, std::int32_t y) {
    const bool writes = y < operation.CommonHeight() && rows.Have(y);
    for (std::int32_t x = 0; x < rows.Width(); ++x) {
        const Scatter::Place place = scatter.Near(x, y);
        std::uint8_t pixel[4];
        if (writes && x < operation.CommonWidth() && rows.Read(place.y, place.x, 1, pixel)) rows.Write(y, x, 1, pixel);
    }
}

// The packed rows that pixels of row y may come from, by number; false when one is missing.
bool CollectRows(RowRing& ring, const Scatter& scatter, std::int32_t y, const std::uint8_t** byOffset) {
    const std::int64_t first = scatter.FirstRow(y);
    for (std::int64_t row = first; row <= scatter.LastRow(y); ++row) {
        const std::uint8_t* const packed = ring.Row(row);
        if (!packed) return false;
        byOffset[row - first] = packed;
    }
    return true;
}

// `packed` may be one of the rows: what is written is then what later pixels find.
template <int Channels>
void DiffuseRow(const Scatter& scatter, const std::uint8_t* const* byOffset, std::int32_t y, std::int32_t width,
                std::uint8_t* packed) {
    const auto first = static_cast<std::int32_t>(scatter.FirstRow(y));
    for (std::int32_t x = 0; x < width; ++x) {
        const Scatter::Place place = scatter.Near(x, y);
        std::memmove(packed + std::int64_t{x} * Channels, byOffset[place.y - first] + std::int64_t{place.x} * Channels,
                     Channels);
    }
}

// In place the copy of the row becomes the result, so that later pixels and rows see it.
void DiffuseByRows(Operation& operation, const Scatter& scatter, bool inPlace) {
    const PackedRows rows(operation);
    RowRing ring(rows, scatter.Range(), rows.Width());
    const ScratchBytes result(rows.BytesOf(rows.Width()));
    const Scratch<const std::uint8_t*> byOffset(ring.Capacity());
    const RowRange range = rows.SourceRows();
    for (std::int32_t y = range.first; y < range.end; ++y) {
        if (!ring || !result || !byOffset || !rows.Have(y) || !CollectRows(ring, scatter, y, byOffset.data())) {
            DiffuseRowByPixels(operation, rows, scatter, y);
            if (inPlace) ring.Restart(0, rows.Width());
            continue;
        }
        std::uint8_t* const packed = inPlace ? ring.Row(y) : result.data();
        rows::ForChannelSet(operation.channels, [&]<rows::ChannelSet Set>() {
            DiffuseRow<rows::ChannelCount(Set)>(scatter, byOffset.data(), y, rows.Width(), packed);
        });
        rows.Write(y, 0, rows.Width(), packed);
    }
}

// Whether copies of the rows around a pixel are few enough to be kept.
bool KeepsRows(Operation& operation, const Scatter& scatter) {
    const std::int64_t rows = std::min<std::int64_t>(scatter.Range(), operation.source->Height);
    const std::int64_t rowBytes = std::int64_t{operation.source->Width} * rows::ChannelCount(operation.channels);
    return rows <= std::max<std::int64_t>(kRowsAlwaysKept, operation.source->Width) &&
           rows * (rowBytes + 2 * RowRing::kMargin) <= kMostBytesKept;
}

void DiffuseByPixels(Operation& operation, const Scatter& scatter) {
    const PackedRows rows(operation);
    const RowRange range = rows.SourceRows();
    for (std::int32_t y = range.first; y < range.end; ++y) DiffuseRowByPixels(operation, rows, scatter, y);
}

}  // namespace

sdk::Object* DiffuseFilter(sdk::Object* self, sdk::Object* dest, std::int32_t level) {
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    const Scatter scatter(operation.source.Picture(), level);
    const Sharing sharing = operation.Sharing();
    if (level >= 0 && sharing != Sharing::Overlapping && KeepsRows(operation, scatter))
        DiffuseByRows(operation, scatter, sharing == Sharing::SamePixels);
    else
        DiffuseByPixels(operation, scatter);
    return operation.Give();
}

}  // namespace tqx
