// Blocks of pixel memory, for pictures and off-screen worlds alike.
#pragma once

#include <cstdint>

namespace platform {

// A block of `size` zero bytes (0 is allowed), at a multiple of 64; null when memory is short or
// size is below 0. Large blocks ask for large pages.
std::uint8_t* AllocatePixels(std::int64_t size);

// Frees a block from AllocatePixels; null is ignored.
void FreePixels(std::uint8_t* pixels);

// A block of zero bytes for the time of a call.
class PixelBlock {
  public:
    explicit PixelBlock(std::int64_t size) : bytes_(AllocatePixels(size)) {}
    PixelBlock(const PixelBlock&) = delete;
    PixelBlock& operator=(const PixelBlock&) = delete;
    ~PixelBlock() { FreePixels(bytes_); }

    std::uint8_t* Bytes() const { return bytes_; }  // null when memory was short
    explicit operator bool() const { return bytes_ != nullptr; }

  private:
    std::uint8_t* bytes_;
};

}  // namespace platform
