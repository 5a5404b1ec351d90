// A tile of pixels on its way through a quarter turn.
//
// Rows of one picture are never live together, so a tile is read row by row into packed pixels,
// turned there, and written row by row. It is small enough to stay in the first cache.
#pragma once

#include <cstdint>

#include "plugin/buffer/RowCursor.h"
#include "plugin/rows/Move.h"
#include "plugin/rows/Transpose.h"

namespace tqx {

enum class Quarter { Left, Right };  // which way the picture turns

// The channels of a set side by side.
rows::PixelLayout PackedForTurn(rows::ChannelSet set);

class TurnedTile {
  public:
    static constexpr std::int32_t kSide = 64;  // pixels

    TurnedTile(rows::ChannelSet set, const rows::PixelLayout& from, const rows::PixelLayout& to, Quarter quarter);

    // Takes columns x .. x + width - 1 of rows y .. y + height - 1, at most kSide of each.
    void Read(RowCursor& source, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

    // Writes the turned tile with its top left pixel at (column, row). Pixels of rows that could
    // not be had are left out.
    void Write(RowCursor& destination, std::int32_t column, std::int32_t row);

  private:
    void WriteRow(std::uint8_t* row, const std::uint8_t* pixels) const;

    Quarter quarter_;
    std::int32_t pixelSize_;  // bytes of a packed pixel
    rows::MovePlan pack_;
    rows::MovePlan unpack_;
    rows::TransposeFunction* transpose_;
    std::int32_t width_ = 0, height_ = 0;  // of what was read
    bool whole_ = true;                    // every row was there
    bool there_[kSide];                    // by the turned tile's columns
    alignas(64) std::uint8_t read_[kSide * kSide * 4];
    alignas(64) std::uint8_t turned_[kSide * kSide * 4];
};

}  // namespace tqx
