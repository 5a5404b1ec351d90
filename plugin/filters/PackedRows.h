// Rows as a neighbourhood filter works on them: the channels of its set and nothing else, pixel by
// pixel without gaps, copied out of the pictures.
//
// Copies stay where they are while the window of a mapped picture slides, and make every layout
// and view look alike. Packed channels stand in the order of the set, or in the order of the
// source's bytes where the source is packed already: then a copy is a plain copy. Filters that
// treat all channels alike needn't know.
#pragma once

#include <cstdint>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Scratch.h"
#include "plugin/rows/Blocks.h"
#include "plugin/rows/Move.h"
#include "plugin/rows/PixelLayout.h"

namespace tqx {

// Which packed order.
enum class PackedOrder {
    OfTheSet,   // red, green, blue, alpha; or gray, alpha
    AsItSuits,  // any, the same for all rows of the operation
};

// Reads packed rows from one picture and writes them to another.
class PackedRows {
  public:
    PackedRows(RowCursor& source, RowCursor& destination, rows::ChannelSet set,
               PackedOrder order = PackedOrder::AsItSuits);
    explicit PackedRows(Operation& operation, PackedOrder order = PackedOrder::AsItSuits)
        : PackedRows(operation.source, operation.destination, operation.channels, order) {}

    int Channels() const { return channels_; }
    std::int32_t Height() const { return source_->Height; }
    std::int32_t Width() const { return source_->Width; }

    // The rows that the source's storage has.
    RowRange SourceRows() const { return source_.Rows(); }

    // Bytes of a packed row of so many pixels.
    std::int64_t BytesOf(std::int64_t pixels) const { return pixels * channels_; }

    // Copies `count` pixels of row y from column `first` on. False, and nothing copied, when the
    // source has no such row.
    bool Read(std::int32_t y, std::int32_t first, std::int32_t count, std::uint8_t* packed) const;

    // Pixels of row y from column `first` on, packed, and good beside other rows of the source: the
    // row's own bytes where they are packed already and stay where they are, else a copy in
    // `scratch`. Null when the source has no such row.
    const std::uint8_t* Packed(std::int32_t y, std::int32_t first, std::int32_t count, std::uint8_t* scratch) const;

    // The same only where they are the row's own bytes, else null.
    const std::uint8_t* Own(std::int32_t y, std::int32_t first) const;

    // Where pixels of row y may be changed in place of a packed copy: the destination's own bytes;
    // null where those aren't packed or there is no such row or column.
    std::uint8_t* PackedInPlace(std::int32_t y, std::int32_t first, std::int32_t count) const;

    // Packs pixels of a row of the source's layout that lies elsewhere; and how many bytes of it
    // that takes.
    void Pack(const std::uint8_t* row, std::int64_t count, std::uint8_t* packed) const;
    std::int64_t EndOf(std::int64_t count) const;

    // Writes `count` pixels into row y from column `first` on, from left to right, each in the
    // order of its channels. What falls outside the destination is skipped.
    void Write(std::int32_t y, std::int32_t first, std::int32_t count, const std::uint8_t* packed) const;

    // Whether the source, or both pictures, have row y.
    bool HasSource(std::int32_t y) const;
    bool Have(std::int32_t y) const;

  private:
    RowCursor& source_;
    RowCursor& destination_;
    int channels_;
    rows::MovePlan read_;
    rows::MovePlan write_;
};

// Runs change(y, first, count, pixels, result) over packed pixels of the source, where `result` may be
// the pixels themselves, and stores the results in the destination: row by row where that gives
// what the plain pixel order gives, else pixel by pixel, each read whole before it is written.
// Rows that are packed already aren't copied. Does nothing when memory is short.
template <class Change>
void ChangeEachPixel(Operation& operation, const PackedRows& rows, const Change& change) {
    const std::int32_t width = operation.CommonWidth();
    const bool byRows = operation.Sharing() != Sharing::Overlapping;
    const std::int32_t step = byRows ? width : 1;
    const ScratchBytes copies(rows.BytesOf(step));
    if (!copies) return;
    const auto pixelsAt = [&](std::int32_t y, std::int32_t first) -> const std::uint8_t* {
        if (byRows) return rows.Packed(y, first, step, copies.data());
        return rows.Read(y, first, step, copies.data()) ? copies.data() : nullptr;
    };
    const RowRange range = operation.Rows();
    for (std::int32_t y = range.first; y < range.end; ++y)
        for (const rows::Block part : rows::Blocks(width, step)) {
            const std::uint8_t* const pixels = pixelsAt(y, part.first);
            if (!pixels) break;
            std::uint8_t* const direct = byRows ? rows.PackedInPlace(y, part.first, step) : nullptr;
            std::uint8_t* const result = direct ? direct : copies.data();
            change(y, part.first, step, pixels, result);
            if (!direct) rows.Write(y, part.first, step, result);
        }
}

// The last few packed rows of the source, copied when first asked for. The ring holds row y in
// slot y mod capacity: asking for a row gives up the copy of the row `capacity` above or below.
class RowRing {
  public:
    // Row functions may look this many bytes past either end of a row.
    static constexpr std::int64_t kMargin = 64;

    // For `width` columns at most, all of them until told otherwise. No more rows are kept than the
    // source's storage has.
    RowRing(const PackedRows& rows, std::int64_t capacity, std::int32_t width);

    // False when memory was short.
    explicit operator bool() const { return bytes_ && slots_; }

    // Forgets all rows and goes on with columns `first` to `first + count - 1`.
    void Restart(std::int32_t first, std::int32_t count);

    // How many rows are kept.
    std::int64_t Capacity() const { return capacity_; }

    // The copy of row y, 64 bytes aligned; null when the source has no such row. The copy may be
    // written to: the ring, not the source, then has the change.
    std::uint8_t* Row(std::int64_t y);

    // Row y to be read alone, of a source that nobody writes to meanwhile: its own bytes where they are packed
    // and stay where they are, without a margin; else the copy.
    const std::uint8_t* Unchanged(std::int64_t y);

  private:
    bool Has(std::int64_t y) const { return y >= range_.first && y < range_.end; }

    struct Slot {
        std::int64_t rowPlusOne;  // 0: empty
        bool present;             // the source has it
    };

    const PackedRows& rows_;
    std::int32_t first_ = 0;
    std::int32_t count_;
    RowRange range_;
    std::int64_t capacity_;
    std::int64_t stride_;
    ScratchBytes bytes_;
    Scratch<Slot> slots_;
};

}  // namespace tqx
