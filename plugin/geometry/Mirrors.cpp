// Rows reversed, swapped, or both, whichever storage they lie in.
#include "plugin/geometry/Mirrors.h"

#include <algorithm>
#include <cstring>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Scratch.h"
#include "plugin/rows/Blocks.h"
#include "plugin/rows/Move.h"

namespace tqx {

namespace {

rows::MovePlan PlanInPlace(const PixelBuffer& buffer, rows::ChannelSet set) {
    const rows::PixelLayout layout = LayoutOf(buffer, set);
    return rows::PlanMoves(rows::MovesBetween(set, layout, layout));
}

// Trades rows through copies of RowSize bytes each. Of a mapped picture several pairs go together,
// so that its window doesn't slide to and fro for each: it is put over the upper rows, over the
// lower ones, and over the upper ones again.
class RowTrader {
  public:
    RowTrader(RowCursor& picture, const rows::MovePlan& plan, bool reverses)
        : picture_(picture),
          plan_(plan),
          reverses_(reverses),
          pairs_(picture->IsMapping && picture->YieldTicks <= 0 ? kMappedPairs : 1),
          upper_(pairs_, picture->RowSize),
          lower_(pairs_, picture->RowSize) {
        // A block's rows may be shorter than their pixels; those past the copies' end don't move.
        const std::int64_t last = picture->RowSize - (std::int64_t{plan.from.offset} + plan.from.size);
        if (last < 0) return;
        pixels_ = static_cast<std::int32_t>(std::min<std::int64_t>(last / picture->PixelSize + 1, picture->Width));
        bytes_ = static_cast<std::size_t>(plan.from.offset + plan.from.Extent(pixels_));
    }

    bool HasMemory() const { return upper_ && lower_; }

    // How many pairs are traded at once.
    std::int32_t Pairs() const { return pairs_; }

    // Trades rows y .. y + count - 1 with the rows that lie as far from the bottom.
    void Trade(std::int32_t y, std::int32_t count) {
        const std::int32_t below = picture_->Height - y - count;
        picture_.Hold({y, y + count});
        for (std::int32_t i = 0; i < count; ++i) there_[i] = Copy(y + i, upper_, i);
        picture_.Hold({below, below + count});
        for (std::int32_t i = 0; i < count; ++i) there_[i] = Copy(Opposite(y + i), lower_, i) && there_[i];
        if (picture_->IsMapping) {  // rows of a file never overlap; the window is over the lower ones
            Write(y, count, upper_, true);
            Write(y, count, lower_, false);
        } else {
            Write(y, count, lower_, false);
            Write(y, count, upper_, true);
        }
    }

  private:
    static constexpr std::int32_t kMappedPairs = 8;

    std::int32_t Opposite(std::int32_t y) const { return picture_->Height - 1 - y; }

    std::uint8_t* At(const ScratchBytes& copies, std::int32_t i) const {
        return copies.data() + std::int64_t{i} * picture_->RowSize;
    }

    bool Copy(std::int32_t y, const ScratchBytes& to, std::int32_t i) {
        const std::uint8_t* const row = picture_.Row(y);
        if (row) std::memcpy(At(to, i), row, bytes_);
        return row != nullptr;
    }

    // Copies to the rows y .. y + count - 1 or to those opposite; a pair of which one row was not
    // there is left out.
    void Write(std::int32_t y, std::int32_t count, const ScratchBytes& copies, bool opposite) {
        const std::int32_t first = opposite ? Opposite(y + count - 1) : y;
        picture_.Hold({first, first + count});
        for (std::int32_t i = 0; i < count; ++i)
            if (there_[i]) WriteRow(opposite ? Opposite(y + i) : y + i, At(copies, i));
    }

    void WriteRow(std::int32_t y, const std::uint8_t* copy) {
        std::uint8_t* const row = picture_.Row(y);
        if (row && reverses_)
            rows::MoveRowReversed(plan_, copy, row + (std::int64_t{picture_->Width} - pixels_) * picture_->PixelSize,
                                  pixels_);
        else if (row)
            rows::MoveRow(plan_, copy, row, pixels_);
    }

    RowCursor& picture_;
    const rows::MovePlan& plan_;
    bool reverses_;
    std::int32_t pairs_;
    ScratchBytes upper_;
    ScratchBytes lower_;
    std::int32_t pixels_ = 0;  // that a copy holds
    std::size_t bytes_ = 0;    // of them, from the row's start
    bool there_[kMappedPairs];
};

// The upper rows of the pairs that the storage has.
RowRange PairsOf(const RowCursor& picture) {
    const RowRange present = picture.Rows();
    return CommonRows(present, {picture->Height - present.end, picture->Height / 2});
}

// The middle one of an odd number of rows is in no pair: intended, also where rows are reversed.
void TradeRows(sdk::Object* self, bool reverses) {
    RowCursor picture(*BufferOf(self));
    rows::ChannelSet set;
    if (!ChooseChannels(picture.Picture(), &set) || !BeginInPlace(picture)) return;
    const rows::MovePlan plan = PlanInPlace(picture.Picture(), set);
    RowTrader trader(picture, plan, reverses);
    if (!trader.HasMemory()) return;
    const RowRange pairs = PairsOf(picture);
    for (const rows::Block block : rows::Blocks(pairs.first, pairs.end, trader.Pairs())) {
        trader.Trade(block.first, block.count);
        if (!picture.Yield()) return;
    }
}

}  // namespace

void HMirror(sdk::Object* self) {
    RowCursor picture(*BufferOf(self));
    rows::ChannelSet set;
    if (!ChooseChannels(picture.Picture(), &set) || !BeginInPlace(picture)) return;
    const rows::MovePlan plan = PlanInPlace(picture.Picture(), set);
    ForRowsInPlace(picture, picture.Rows(),
                   [&, width = picture->Width](std::uint8_t* row) { rows::MirrorRow(plan, row, width); });
}

void VMirror(sdk::Object* self) { TradeRows(self, false); }

void Rotate180(sdk::Object* self) { TradeRows(self, true); }

}  // namespace tqx
