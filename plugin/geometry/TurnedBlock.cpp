// Blocks taken row by row, turned in pieces as they come, and written as rows.
#include "plugin/geometry/TurnedBlock.h"

#include <algorithm>

#include "plugin/rows/AskFor.h"
#include "plugin/rows/Blocks.h"

namespace tqx {

namespace {

// Rows that are read before they are turned: columns of so many pixels are whole cache lines, and
// 2048 columns of them stay in the second cache.
constexpr std::int32_t kRowsATime = 64;

// Columns that are turned at a time, while the rows that the next ones become are brought in: they lie
// too far apart for the processor to foresee them.
constexpr std::int32_t kColumnsATime = 16;

// Rows further apart than whole pages don't crowd into the same places of the cache.
constexpr std::int64_t kLine = 64;

constexpr std::int64_t StrideOf(std::int64_t bytes) { return (bytes + kLine - 1) / kLine * kLine + kLine; }

}  // namespace

TurnedBlock::TurnedBlock(rows::ChannelSet set, const rows::PixelLayout& from, const rows::PixelLayout& to,
                         Quarter quarter, std::int32_t columns, std::int32_t rows, std::int64_t bytes)
    : quarter_(quarter),
      pixelSize_(PackedForTurn(set).pixelSize),
      pack_(rows::PlanMoves(rows::MovesBetween(set, from, PackedForTurn(set)))),
      unpack_(rows::PlanMoves(rows::MovesBetween(set, PackedForTurn(set), to), bytes)),
      transpose_(rows::TransposeFormsFor(pixelSize_).Chosen()),
      readStride_(StrideOf(std::int64_t{columns} * pixelSize_)),
      turnedStride_(StrideOf(std::int64_t{rows} * pixelSize_)),
      read_(kRowsATime, readStride_),
      turned_(columns, turnedStride_) {}

bool TurnedBlock::Take(RowCursor& source, std::int32_t left, std::int32_t right, std::int32_t top,
                       std::int32_t bottom) {
    columns_ = right - left;
    rows_ = bottom - top;
    const std::int32_t step = std::min(kRowsATime, source.RowsAtOnce());
    for (const rows::Block taken : rows::Blocks(top, bottom, step))
        if (!TakeRows(source, left, taken.first, taken.count, taken.first - top)) return false;
    return true;
}

// Takes `count` rows from row y on; `done` of the block's rows were taken before.
bool TurnedBlock::TakeRows(RowCursor& source, std::int32_t left, std::int32_t y, std::int32_t count,
                           std::int32_t done) {
    const bool upright = quarter_ == Quarter::Left;
    source.Hold({y, y + count});
    for (std::int32_t i = 0; i < count; ++i) {
        const std::uint8_t* const row = source.Row(y + i);
        if (!row) return false;
        // The row that comes first becomes the first column of a left turn, the last of a right one.
        const std::int64_t line = upright ? i : count - 1 - i;
        rows::MoveRow(pack_, row + std::int64_t{left} * source->PixelSize, read_.data() + line * readStride_, columns_);
    }
    Turn(upright ? done : rows_ - done - count, count);
    return true;
}

// Turns the rows that were read into `count` columns from `column` on.
void TurnedBlock::Turn(std::int64_t column, std::int32_t count) {
    std::uint8_t* const turned = turned_.data() + column * pixelSize_;
    for (const rows::Block part : rows::Blocks(columns_, kColumnsATime)) {
        const std::int32_t next = std::min(part.count, columns_ - part.End());
        for (std::int32_t i = 0; i < next; ++i)
            rows::AskFor(turned + (part.End() + i) * turnedStride_, std::int64_t{count} * pixelSize_);
        transpose_(read_.data() + std::int64_t{part.first} * pixelSize_, readStride_,
                   turned + part.first * turnedStride_, turnedStride_, part.count, count);
    }
}

void TurnedBlock::Write(RowCursor& destination, std::int32_t column, std::int32_t row) const {
    const rows::StreamsEnd end;
    const std::int32_t step = destination.RowsAtOnce();
    for (const rows::Block band : rows::Blocks(columns_, step)) {
        destination.Hold({row + band.first, row + band.End()});
        for (std::int32_t i = band.first; i < band.End(); ++i) {
            std::uint8_t* const to = destination.Row(row + i);
            const std::int64_t line = quarter_ == Quarter::Left ? columns_ - 1 - i : i;
            if (to)
                rows::MoveRow(unpack_, turned_.data() + line * turnedStride_,
                              to + std::int64_t{column} * destination->PixelSize, rows_);
        }
    }
}

}  // namespace tqx
