#include "geometry/Mirrors.h"

#include <algorithm>
#include <cstring>

#include "buffer/Destination.h"
#include "buffer/InPlaceRows.h"
#include "buffer/PixelBuffer.h"
#include "platform/PixelMemory.h"
#include "rows/Move.h"

namespace tqx {

namespace {

rows::MovePlan PlanInPlace(const PixelBuffer& buffer, rows::ChannelSet set) {
    const rows::PixelLayout layout = LayoutOf(buffer, set);
    return rows::PlanMoves(rows::MovesBetween(set, layout, layout));
}

using MoveRowFunction = void (*)(const rows::MovePlan&, const std::uint8_t*, std::uint8_t*, std::int32_t);

// Trades rows through copies of RowSize bytes each.
class RowTrader {
  public:
    RowTrader(PixelBuffer& buffer, const rows::MovePlan& plan, bool reverses)
        : buffer_(buffer), plan_(plan), reverses_(reverses), top_(buffer.RowSize), bottom_(buffer.RowSize) {
        // A block's rows may be shorter than their pixels; those past the copies' end don't move.
        const std::int64_t last = buffer.RowSize - (std::int64_t{plan.from.offset} + plan.from.size);
        pixels_ = last < 0
                      ? 0
                      : static_cast<std::int32_t>(std::min<std::int64_t>(last / plan.from.pixelSize + 1, buffer.Width));
        bytes_ = pixels_ > 0 ? static_cast<std::size_t>(plan.from.offset + plan.from.Extent(pixels_)) : 0;
    }

    bool HasMemory() const { return top_ && bottom_; }

    void Trade(std::int32_t upper, std::int32_t lower) {
        if (!Copy(upper, top_) || !Copy(lower, bottom_)) return;
        if (buffer_.IsMapping) {  // rows of a file never overlap; the window is at the lower one
            Write(lower, top_);
            Write(upper, bottom_);
        } else {
            Write(upper, bottom_);
            Write(lower, top_);
        }
    }

  private:
    bool Copy(std::int32_t y, const platform::PixelBlock& to) {
        const std::uint8_t* const row = RowAddress(buffer_, y);
        if (row) std::memcpy(to.Bytes(), row, bytes_);
        return row != nullptr;
    }

    void Write(std::int32_t y, const platform::PixelBlock& from) {
        std::uint8_t* const row = RowAddress(buffer_, y);
        if (!row) return;
        if (reverses_)
            rows::MoveRowReversed(plan_, from.Bytes(),
                                  row + (std::int64_t{buffer_.Width} - pixels_) * buffer_.PixelSize, pixels_);
        else
            rows::MoveRow(plan_, from.Bytes(), row, pixels_);
    }

    PixelBuffer& buffer_;
    const rows::MovePlan& plan_;
    bool reverses_;
    platform::PixelBlock top_;
    platform::PixelBlock bottom_;
    std::int32_t pixels_;  // that a copy holds
    std::size_t bytes_;    // of them, from the row's start
};

// The middle one of an odd number of rows is in no pair: intended, also where rows are reversed.
void TradeRows(PixelBuffer& buffer, bool reverses) {
    rows::ChannelSet set;
    if (!ChooseChannels(buffer, &set) || !BeginInPlace(buffer)) return;
    const rows::MovePlan plan = PlanInPlace(buffer, set);
    RowTrader trader(buffer, plan, reverses);
    if (!trader.HasMemory()) return;
    const StorageWatch watch(buffer);
    for (std::int32_t y = 0; y < buffer.Height / 2; ++y) {
        trader.Trade(y, buffer.Height - 1 - y);
        if (!YieldAndKeep(buffer, watch)) return;
    }
}

}  // namespace

void HMirror(sdk::Object* self) {
    PixelBuffer& buffer = *BufferOf(self);
    rows::ChannelSet set;
    if (!ChooseChannels(buffer, &set) || !BeginInPlace(buffer)) return;
    const rows::MovePlan plan = PlanInPlace(buffer, set);
    const std::int32_t width = buffer.Width;
    ForRowsInPlace(buffer, 0, buffer.Height, [&](std::uint8_t* row) { rows::MirrorRow(plan, row, width); });
}

void VMirror(sdk::Object* self) { TradeRows(*BufferOf(self), false); }

void Rotate180(sdk::Object* self) { TradeRows(*BufferOf(self), true); }

}  // namespace tqx
