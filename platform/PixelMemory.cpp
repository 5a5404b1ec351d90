// Blocks of pixel memory from the allocator, large ones on large pages, the last one kept for the
// next.
#include "platform/PixelMemory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <cstring>
#include <utility>

namespace platform {

namespace {

// Rows are multiples of 64 bytes long, so all start on a cache line if the block does.
constexpr std::size_t kCacheLine = 64;

// From about this size on the allocator hands out untouched memory, and the first touch of its
// 4 KiB pages costs more than a copy of the block: 7.0 ms for 36 MB where the copy takes 1.6 ms,
// against 2.5 ms with large pages. They serve whole multiples of their size only.
constexpr std::size_t kLargeBlock = 8 << 20;
constexpr std::size_t kLargePage = 2 << 20;

// From about this size on pages of a smaller block are brought in together where all are wanted: the
// faults of 0.9 MB, one for each of its pages, cost as much as two filters over it.
[[maybe_unused]] constexpr std::size_t kManyPages = 128 << 10;
[[maybe_unused]] constexpr std::size_t kPage = 4 << 10;

// Larger blocks are not kept: that much memory is not to lie idle.
constexpr std::size_t kLargestSpare = 512 << 20;

// Stands right before a block's first pixel.
struct Head {
    std::uint8_t* block;   // the allocator's own address
    std::size_t capacity;  // bytes from the first pixel on; of a large block a multiple of kLargePage
    bool isSpare;          // once it is freed, if it is large
};
static_assert(sizeof(Head) <= kCacheLine);

std::uint8_t* spare = nullptr;  // a freed large block, or null

constexpr std::size_t RoundUp(std::size_t value, std::size_t step) { return (value + step - 1) / step * step; }

Head HeadOf(const std::uint8_t* pixels) {
    Head head;
    std::memcpy(&head, pixels - sizeof(head), sizeof(head));
    return head;
}

// Must come before the block is touched; memory that the allocator recycled stays as it is.
void AskForLargePages([[maybe_unused]] std::uint8_t* pixels, [[maybe_unused]] std::size_t size) {
#ifdef MADV_HUGEPAGE
    madvise(pixels, size, MADV_HUGEPAGE);
#endif
}

// A system that can't, or has no memory for it, brings each page in when it is touched.
void BringPagesIn([[maybe_unused]] std::uint8_t* pixels, [[maybe_unused]] std::size_t size) {
#ifdef MADV_POPULATE_WRITE
    const std::size_t before =
        RoundUp(reinterpret_cast<std::uintptr_t>(pixels), kPage) - reinterpret_cast<std::uintptr_t>(pixels);
    if (size >= kManyPages) madvise(pixels + before, (size - before) / kPage * kPage, MADV_POPULATE_WRITE);
#endif
}

// Lets the system have the pages back. Those it doesn't take keep their bytes and cost nothing
// when they are written again.
void OfferPages([[maybe_unused]] std::uint8_t* pixels, [[maybe_unused]] std::size_t size) {
#ifdef MADV_FREE
    madvise(pixels, size, MADV_FREE);
#endif
}

std::uint8_t* AllocateFresh(std::size_t size, std::size_t alignment, bool isSpare = true) {
    const std::size_t capacity = RoundUp(size, alignment);
    const std::size_t room = RoundUp(sizeof(Head), kCacheLine) + alignment;
    auto* const block = static_cast<std::uint8_t*>(std::calloc(capacity + room, 1));
    if (!block) return nullptr;
    const auto first = RoundUp(reinterpret_cast<std::uintptr_t>(block) + sizeof(Head), alignment);
    auto* const pixels = reinterpret_cast<std::uint8_t*>(first);
    const Head head{block, capacity, isSpare};
    std::memcpy(pixels - sizeof(head), &head, sizeof(head));
    if (alignment == kLargePage) AskForLargePages(pixels, capacity);
    return pixels;
}

// The spare, if it is of about this size.
std::uint8_t* TakeSpare(std::size_t size) {
    if (!spare) return nullptr;
    const std::size_t capacity = HeadOf(spare).capacity;
    return capacity >= size && capacity / 2 <= size ? std::exchange(spare, nullptr) : nullptr;
}

bool IsLarge(std::int64_t size) { return size >= static_cast<std::int64_t>(kLargeBlock); }

}  // namespace

std::uint8_t* AllocatePixels(std::int64_t size) {
    if (size < 0) return nullptr;
    const auto bytes = static_cast<std::size_t>(size);
    if (!IsLarge(size)) return AllocateFresh(bytes, kCacheLine);
    std::uint8_t* const recycled = TakeSpare(bytes);
    if (!recycled) return AllocateFresh(bytes, kLargePage);
    std::memset(recycled, 0, bytes);
    return recycled;
}

std::uint8_t* AllocatePixelsToFill(std::int64_t size, bool* isZero) {
    std::uint8_t* const recycled = IsLarge(size) ? TakeSpare(static_cast<std::size_t>(size)) : nullptr;
    if (isZero) *isZero = !recycled;
    if (recycled) return recycled;
    std::uint8_t* const pixels = AllocatePixels(size);
    if (pixels && !IsLarge(size)) BringPagesIn(pixels, static_cast<std::size_t>(size));
    return pixels;
}

std::uint8_t* AllocatePixelsUntouched(std::int64_t size) {
    if (size < 0) return nullptr;
    return AllocateFresh(static_cast<std::size_t>(size), IsLarge(size) ? kLargePage : kCacheLine, false);
}

void FreePixels(std::uint8_t* pixels) {
    if (!pixels) return;
    const Head head = HeadOf(pixels);
    if (!head.isSpare || head.capacity < kLargeBlock || head.capacity > kLargestSpare) return std::free(head.block);
    OfferPages(pixels, head.capacity);
    if (std::uint8_t* const before = std::exchange(spare, pixels)) std::free(HeadOf(before).block);
}

}  // namespace platform
