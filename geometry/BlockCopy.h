// A block of a picture's pixels in memory.
#pragma once

#include <cstdint>

#include "buffer/PixelBuffer.h"
#include "platform/PixelMemory.h"
#include "rows/PixelLayout.h"

namespace tqx {

class BlockCopy {
  public:
    // For blocks of at most columns × rows pixels of the picture, of which the channels of a set
    // count. The picture outlives the copy.
    BlockCopy(PixelBuffer& picture, rows::ChannelSet set, std::int32_t columns, std::int32_t rows);

    // False when memory was short.
    explicit operator bool() const { return static_cast<bool>(bytes_); }

    // Takes columns left .. right - 1 of rows top .. bottom - 1. False when a row can't be had.
    bool Take(std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom);

    // The block as a picture: row y is the picture's row y, and column 0 its column `left`.
    PixelBuffer& Block() { return block_; }

    // Where the channels lie in the block's pixels.
    const rows::PixelLayout& Layout() const { return layout_; }

  private:
    PixelBuffer& picture_;
    rows::PixelLayout layout_;
    std::int32_t shift_;  // bytes from a pixel of the picture to its first channel
    std::int32_t size_;   // bytes from there to the end of its last channel
    std::int64_t stride_;
    platform::PixelBlock bytes_;
    PixelBuffer block_{};
};

}  // namespace tqx
