#include "geometry/SharedMemory.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

namespace tqx {

namespace {

struct Bytes {
    std::intptr_t begin;
    std::intptr_t end;
};

const PixelBuffer& RootOf(const PixelBuffer& buffer) {
    const PixelBuffer* root = &buffer;
    while (root->Parent) root = BufferOf(root->Parent);
    return *root;
}

// Where the picture's rows lie, or its mapped window. Rows may be longer than from one to the next,
// and a row size below 0 goes up in memory.
Bytes BytesOf(const PixelBuffer& buffer) {
    const auto base = reinterpret_cast<std::intptr_t>(buffer.data);
    if (buffer.IsMapping) return {base, base + buffer.MappingBlockSize};
    const std::int64_t pixels = std::int64_t{std::max(buffer.Width, 0)} * buffer.PixelSize;
    const std::int64_t farthest =
        std::max({buffer.RedOffset, buffer.GreenOffset, buffer.BlueOffset, buffer.GrayOffset, buffer.AlphaOffset});
    const std::int64_t row = std::max(std::abs(std::int64_t{buffer.RowSize}), pixels + farthest);
    const std::int64_t lastRow = (std::max<std::int64_t>(buffer.storageRows, 1) - 1) * buffer.RowSize;
    return {base + static_cast<std::intptr_t>(std::min<std::int64_t>(lastRow, 0)),
            base + static_cast<std::intptr_t>(std::max<std::int64_t>(lastRow, 0) + row)};
}

bool MapSameFile(const PixelBuffer& a, const PixelBuffer& b) {
    struct stat first, second;
    if (fstat(a.fileDescriptor, &first) != 0 || fstat(b.fileDescriptor, &second) != 0) return true;
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace

bool MayShareMemory(const PixelBuffer& a, const PixelBuffer& b) {
    if (&RootOf(a) == &RootOf(b)) return true;
    if (a.IsMapping && b.IsMapping) return MapSameFile(a, b);
    const Bytes first = BytesOf(a), second = BytesOf(b);
    return first.begin < second.end && second.begin < first.end;
}

}  // namespace tqx
