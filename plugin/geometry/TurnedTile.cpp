// Tiles packed, turned and unpacked, in memory of their own.
#include "plugin/geometry/TurnedTile.h"

#include <algorithm>

namespace tqx {

namespace {

constexpr std::int64_t kCacheLine = 64;

// Pixels of the tile that follows: their rows lie too far apart for the processor to foresee them.
// Taking them ahead makes a turn of a large picture a third quicker. Only in memory, where another
// row's address spoils none.
template <int ForWriting>
void TakeAhead(RowCursor& picture, std::int64_t x, std::int64_t y, std::int32_t width) {
    if (picture->IsMapping || x < 0 || y >= picture->Height) return;
    const std::uint8_t* const row = picture.Row(static_cast<std::int32_t>(y));
    if (!row) return;
    const std::uint8_t* const pixels = row + x * picture->PixelSize;
    const std::int64_t bytes = std::min<std::int64_t>(width, picture->Width - x) * picture->PixelSize;
    for (std::int64_t at = 0; at < bytes; at += kCacheLine) __builtin_prefetch(pixels + at, ForWriting);
}

}  // namespace

rows::PixelLayout PackedForTurn(rows::ChannelSet set) { return {rows::ChannelCount(set), {0, 1, 2, 3}}; }

TurnedTile::TurnedTile(rows::ChannelSet set, const rows::PixelLayout& from, const rows::PixelLayout& to,
                       Quarter quarter)
    : quarter_(quarter),
      pixelSize_(PackedForTurn(set).pixelSize),
      pack_(rows::PlanMoves(rows::MovesBetween(set, from, PackedForTurn(set)))),
      unpack_(rows::PlanMoves(rows::MovesBetween(set, PackedForTurn(set), to))),
      transpose_(rows::TransposeFormsFor(pixelSize_).Chosen()),
      read_{},
      turned_{} {}

void TurnedTile::Read(RowCursor& source, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    width_ = width;
    height_ = height;
    whole_ = true;
    for (std::int32_t i = 0; i < height; ++i) {
        // The row that comes first becomes the first column of a left turn, the last of a right one.
        const std::int32_t column = quarter_ == Quarter::Left ? i : height - 1 - i;
        TakeAhead<0>(source, x, std::int64_t{y} + i + kSide, width);
        const std::uint8_t* const row = source.Row(y + i);
        there_[column] = row != nullptr;
        whole_ = whole_ && row;
        if (row)
            rows::MoveRow(pack_, row + std::int64_t{x} * source->PixelSize,
                          read_ + std::int64_t{column} * kSide * pixelSize_, width);
    }
    const std::int64_t stride = std::int64_t{kSide} * pixelSize_;
    transpose_(read_, stride, turned_, stride, width, height);
}

void TurnedTile::Write(RowCursor& destination, std::int32_t column, std::int32_t row) {
    const std::int64_t following = std::int64_t{column} + (quarter_ == Quarter::Left ? kSide : -kSide);
    for (std::int32_t i = 0; i < width_; ++i) {
        TakeAhead<1>(destination, following, row + i, kSide);
        std::uint8_t* const to = destination.Row(row + i);
        const std::int32_t line = quarter_ == Quarter::Left ? width_ - 1 - i : i;
        if (to)
            WriteRow(to + std::int64_t{column} * destination->PixelSize,
                     turned_ + std::int64_t{line} * kSide * pixelSize_);
    }
}

void TurnedTile::WriteRow(std::uint8_t* row, const std::uint8_t* pixels) const {
    if (whole_) return rows::MoveRow(unpack_, pixels, row, height_);
    for (std::int32_t i = 0; i < height_; ++i)
        if (there_[i])
            rows::MoveRow(unpack_, pixels + std::int64_t{i} * pixelSize_, row + std::int64_t{i} * unpack_.to.pixelSize,
                          1);
}

}  // namespace tqx
