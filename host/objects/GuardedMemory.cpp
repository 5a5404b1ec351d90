// Guard bytes around a block, written, tested and poisoned.
#include "host/objects/GuardedMemory.h"

#include <cstdlib>
#include <cstring>
#include <vector>

#include "host/objects/SmallBlocks.h"
#include "platform/Sanitizer.h"

#if defined(TQX_ADDRESS_SANITIZER)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(address, size) ((void)(address), (void)(size))
#endif

namespace host {

namespace {

// In front of the bytes: their count, then guard bytes up to the alignment.
constexpr std::size_t kFrontSize = 32;
constexpr std::size_t kGuardSize = 16;
constexpr std::uint8_t kGuardByte = 0xC9;

std::int64_t brokenGuards = 0;

std::uint8_t* Front(const void* memory) { return static_cast<std::uint8_t*>(const_cast<void*>(memory)) - kFrontSize; }

std::size_t SizeOf(const void* memory) {
    std::size_t size = 0;
    std::memcpy(&size, Front(memory), sizeof(size));
    return size;
}

bool IsGuard(const std::uint8_t* bytes) {
    std::uint64_t halves[2];
    static_assert(sizeof(halves) == kGuardSize);
    std::memcpy(halves, bytes, sizeof(halves));
    constexpr std::uint64_t kWhole = 0x0101010101010101u * kGuardByte;
    return halves[0] == kWhole && halves[1] == kWhole;
}

void Poison(void* memory, std::size_t size) {
    ASAN_POISON_MEMORY_REGION(static_cast<std::uint8_t*>(memory) - kGuardSize, kGuardSize);
    ASAN_POISON_MEMORY_REGION(static_cast<std::uint8_t*>(memory) + size, kGuardSize);
}

void Unpoison(const void* memory, std::size_t size) {
    ASAN_UNPOISON_MEMORY_REGION(static_cast<const std::uint8_t*>(memory) - kGuardSize, kGuardSize);
    ASAN_UNPOISON_MEMORY_REGION(static_cast<const std::uint8_t*>(memory) + size, kGuardSize);
}

// Null, when memory was short, stays null.
void* Guard(void* allocated, std::size_t size) {
    if (!allocated) return nullptr;
    std::uint8_t* memory = static_cast<std::uint8_t*>(allocated) + kFrontSize;
    std::memcpy(allocated, &size, sizeof(size));
    std::memset(memory - kGuardSize, kGuardByte, kGuardSize);
    std::memset(memory + size, kGuardByte, kGuardSize);
    Poison(memory, size);
    return memory;
}

constexpr std::size_t kMostSize = SIZE_MAX / 2;

std::size_t WholeSize(std::size_t size) { return kFrontSize + size + kGuardSize; }

std::vector<const void*>& Watched() {
    static auto& watched = *new std::vector<const void*>;
    return watched;
}

}  // namespace

void* AllocateGuarded(std::size_t size) {
    return size > kMostSize ? nullptr : Guard(TakeZeroBlock(WholeSize(size)), size);
}

void* AllocateGuardedAsIs(std::size_t size) {
    return size > kMostSize ? nullptr : Guard(TakeBlock(WholeSize(size)), size);
}

std::size_t GuardedSize(const void* memory) { return SizeOf(memory); }

bool GuardsAreWhole(const void* memory) {
    const std::size_t size = SizeOf(memory);
    Unpoison(memory, size);
    const auto* bytes = static_cast<const std::uint8_t*>(memory);
    const bool whole = IsGuard(bytes - kGuardSize) && IsGuard(bytes + size);
    Poison(const_cast<void*>(memory), size);
    return whole;
}

void FreeGuarded(void* memory) {
    if (!memory) return;
    const bool whole = GuardsAreWhole(memory);
    Unpoison(memory, SizeOf(memory));
    if (whole) return GiveBlock(Front(memory), WholeSize(SizeOf(memory)));
    ++brokenGuards;
    std::free(Front(memory));  // the size may be broken as well
}

void WatchGuarded(const void* memory) { Watched().push_back(memory); }

// One that was found broken is counted once.
std::int64_t BrokenGuardCount() {
    brokenGuards +=
        static_cast<std::int64_t>(std::erase_if(Watched(), [](const void* memory) { return !GuardsAreWhole(memory); }));
    return brokenGuards;
}

}  // namespace host
