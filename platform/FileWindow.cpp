// Windows of a file, by mmap.
#include "platform/FileWindow.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>

namespace platform {

namespace {

constexpr std::int64_t kLargePage = 2 << 20;

// What is mapped for a window.
struct Extent {
    std::int64_t before;  // bytes before the window
    std::int64_t size;    // bytes altogether
};

// A smaller window than a large page has nothing to gain.
Extent ExtentOf(std::int64_t offset, std::int64_t size) {
    if (size < kLargePage) return {0, size};
    const std::int64_t before = offset % kLargePage;
    return {before, (before + size + kLargePage - 1) / kLargePage * kLargePage};
}

// For the file's cache as well: it then reads and keeps large pages whatever it would do otherwise.
void AskForLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t size) {
#ifdef MADV_HUGEPAGE
    madvise(memory, size, MADV_HUGEPAGE);
#endif
}

// Older systems don't know how, and past the file's end there is nothing: pages then come when they are touched.
void BringIn([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t size) {
#ifdef MADV_POPULATE_WRITE
    madvise(memory, size, MADV_POPULATE_WRITE);
#endif
}

}  // namespace

std::int64_t PageSize() { return sysconf(_SC_PAGESIZE); }

std::uint8_t* MapFileWindow(int descriptor, std::int64_t offset, std::int64_t size, bool bringIn) {
    const Extent extent = ExtentOf(offset, size);
    const auto length = static_cast<std::size_t>(extent.size);
    // The system chooses an address that lies in its large page as the offset does in the file's.
    void* const memory = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, offset - extent.before);
    if (memory == MAP_FAILED) return nullptr;
    if (extent.size >= kLargePage) AskForLargePages(memory, length);
    std::uint8_t* const window = static_cast<std::uint8_t*>(memory) + extent.before;
    if (bringIn) BringIn(window, static_cast<std::size_t>(size));
    return window;
}

std::int64_t PageFaults() {
    struct rusage usage {};
#ifdef RUSAGE_THREAD
    getrusage(RUSAGE_THREAD, &usage);
#else
    getrusage(RUSAGE_SELF, &usage);
#endif
    return usage.ru_minflt + usage.ru_majflt;
}

void UnmapFileWindow(std::uint8_t* window, std::int64_t offset, std::int64_t size) {
    const Extent extent = ExtentOf(offset, size);
    munmap(window - extent.before, static_cast<std::size_t>(extent.size));
}

}  // namespace platform
