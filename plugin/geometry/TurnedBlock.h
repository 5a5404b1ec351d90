// A large block of pixels on its way through a quarter turn, turned in memory.
//
// Between pictures of many windows a tile at a time would write a few pixels of each of a window's
// rows, and have every window of the destination mapped and written back to the file for each
// column of tiles. A block takes its rows window by window, turns them as they come, and gives
// long pieces of rows.
#pragma once

#include <cstdint>

#include "plugin/buffer/RowCursor.h"
#include "plugin/buffer/Scratch.h"
#include "plugin/geometry/TurnedTile.h"
#include "plugin/rows/Move.h"
#include "plugin/rows/Transpose.h"

namespace tqx {

class TurnedBlock {
  public:
    // For blocks of at most columns × rows pixels; `bytes`: that all of them write.
    TurnedBlock(rows::ChannelSet set, const rows::PixelLayout& from, const rows::PixelLayout& to, Quarter quarter,
                std::int32_t columns, std::int32_t rows, std::int64_t bytes);

    // False when memory was short.
    explicit operator bool() const { return read_ && turned_; }

    // Takes columns left .. right - 1 of rows top .. bottom - 1. False when a row can't be had.
    bool Take(RowCursor& source, std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom);

    // Writes the turned block with its top left pixel at (column, row).
    void Write(RowCursor& destination, std::int32_t column, std::int32_t row) const;

  private:
    bool TakeRows(RowCursor& source, std::int32_t left, std::int32_t y, std::int32_t count, std::int32_t done);
    void Turn(std::int64_t column, std::int32_t count);

    Quarter quarter_;
    std::int32_t pixelSize_;  // bytes of a packed pixel
    rows::MovePlan pack_;
    rows::MovePlan unpack_;
    rows::TransposeFunction* transpose_;
    std::int64_t readStride_;
    std::int64_t turnedStride_;
    ScratchBytes read_;                    // some rows of the source, packed
    ScratchBytes turned_;                  // column by column
    std::int32_t columns_ = 0, rows_ = 0;  // that were taken
};

}  // namespace tqx
