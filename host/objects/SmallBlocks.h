// Memory from the C library, of which small blocks are kept when they are given back, a few of each size, for
// whoever asks next: texts come and go by the million, and the C library has seven of a size at hand.
//
// Under the address sanitizer nothing is kept, so that whoever uses what was given back is caught. One thread at a
// time may be in here.
#pragma once

#include <cstddef>

namespace host {

// As malloc and calloc: aligned to 16, null when memory is short.
void* TakeBlock(std::size_t size);
void* TakeZeroBlock(std::size_t size);

// Takes back a block, with the size that it was asked for.
void GiveBlock(void* block, std::size_t size) noexcept;

}  // namespace host
