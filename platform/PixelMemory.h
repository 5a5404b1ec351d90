// Blocks of pixel memory, for pictures and off-screen worlds alike.
//
// Fresh memory is dear: for a block of 48 MB the system takes longer to hand out zeroed pages
// than a copy of the block takes, even with large pages. So the large block that was freed last
// is kept as a spare for the next one of about its size. The system may take the spare's pages
// back whenever it wants memory.
#pragma once

#include <cstdint>

namespace platform {

// A block of `size` zero bytes (0 is allowed), at a multiple of 64; null when memory is short or
// size is below 0. Large blocks ask for large pages.
std::uint8_t* AllocatePixels(std::int64_t size);

// The same with any bytes in it, for a caller who writes them all: its pages are there at once, where the
// system can bring them in together. `isZero` is told whether the bytes are 0.
std::uint8_t* AllocatePixelsToFill(std::int64_t size, bool* isZero = nullptr);

// Zero bytes of which only what is touched takes memory or time, for a caller who may need none of
// them. The block is never kept as the spare, nor taken from it.
std::uint8_t* AllocatePixelsUntouched(std::int64_t size);

// Frees a block from any of these; null is ignored. What one module (the host, a plug-in) allocated, the
// same module frees.
void FreePixels(std::uint8_t* pixels);

}  // namespace platform
