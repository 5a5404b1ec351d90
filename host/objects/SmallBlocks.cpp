// Shelves of blocks by their size in steps of the alignment.
#include "host/objects/SmallBlocks.h"

#include <cstdlib>
#include <new>

#include "platform/Sanitizer.h"

namespace host {

namespace {

constexpr std::size_t kStep = 16;

#if defined(TQX_ADDRESS_SANITIZER)
constexpr std::size_t kLargestKept = 0;
#else
constexpr std::size_t kLargestKept = 256;
#endif
constexpr int kMostOnShelf = 64;  // together they keep 136 KiB at most

struct Block {
    Block* next;
};

struct Shelf {
    Block* first;
    int count;
};

Shelf shelves[kLargestKept / kStep + 1];

// Of a size as it was asked for; null where such blocks are not kept. One of no bytes has no room for the link.
Shelf* ShelfOf(std::size_t size) { return size > 0 && size <= kLargestKept ? &shelves[(size - 1) / kStep] : nullptr; }

// All blocks of a shelf have room for its largest size.
std::size_t WholeSteps(std::size_t size) { return (size + kStep - 1) / kStep * kStep; }

}  // namespace

void* TakeBlock(std::size_t size) {
    Shelf* const shelf = ShelfOf(size);
    if (!shelf) return std::malloc(size);
    Block* const block = shelf->first;
    if (!block) return std::malloc(WholeSteps(size));
    shelf->first = block->next;
    --shelf->count;
    return block;
}

void* TakeZeroBlock(std::size_t size) { return std::calloc(1, ShelfOf(size) ? WholeSteps(size) : size); }

void GiveBlock(void* block, std::size_t size) noexcept {
    Shelf* const shelf = ShelfOf(size);
    if (!shelf || shelf->count == kMostOnShelf) return std::free(block);
    shelf->first = new (block) Block{shelf->first};
    ++shelf->count;
}

}  // namespace host
