// Windows of a file in memory: readable, writable and shared with the file.
//
// Large pages decide what a window costs. The first write to each small page of a file is a fault
// that the file system has to hear of, and while its cache holds the file in large pages each of
// these faults pays for a large one. Where file and memory are cut at the same large pages, one
// fault brings in and marks a whole one. So a window of some size is mapped with what lies around
// it up to the next large pages: writing 1.2 GB in windows of 16 MB takes 0.08 s of the processor
// instead of 0.5 s. Where a file system has no large pages each small one is a fault of its own. All
// pages of a window in one step take half the time, but are all marked as written: that is for
// windows that are going to be.
#pragma once

#include <cstdint>

namespace platform {

// Bytes at whose multiples a window may begin.
std::int64_t PageSize();

// Maps `size` bytes of a file from `offset` on, a multiple of PageSize. They may
// reach past the file's end, but must not be touched there. Null when they can't be mapped. With
// `bringIn` all pages come in at once, as written ones, if the system can do that.
std::uint8_t* MapFileWindow(int descriptor, std::int64_t offset, std::int64_t size, bool bringIn = false);

// How many pages this thread has waited for so far.
std::int64_t PageFaults();

// Unmaps what MapFileWindow gave for this offset and size.
void UnmapFileWindow(std::uint8_t* window, std::int64_t offset, std::int64_t size);

}  // namespace platform
