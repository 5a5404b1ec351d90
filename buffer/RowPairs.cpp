#include "buffer/RowPairs.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "buffer/MappedStorage.h"
#include "platform/PixelMemory.h"

namespace tqx {

namespace {

// The first byte of a picture's storage and the one past its last, as the picture describes them.
struct StorageRange {
    std::uintptr_t begin;
    std::uintptr_t end;
};

// Bytes of a row from its start to its last channel byte.
std::int64_t RowExtent(const PixelBuffer& buffer) {
    const std::int64_t furthest = std::max({buffer.RedOffset, buffer.GreenOffset, buffer.BlueOffset, buffer.GrayOffset,
                                            buffer.AlphaOffset, std::int32_t{0}});
    return (std::int64_t{buffer.Width} - 1) * buffer.PixelSize + furthest + 1;
}

// Rows may run backwards through the memory: a block's row size may be negative.
StorageRange RangeOf(const PixelBuffer& buffer) {
    const std::int64_t last = (std::int64_t{buffer.storageRows} - 1) * buffer.RowSize;
    const auto base = reinterpret_cast<std::uintptr_t>(buffer.data);
    return {base + static_cast<std::uintptr_t>(std::min<std::int64_t>(last, 0)),
            base + static_cast<std::uintptr_t>(std::max<std::int64_t>(last, 0) +
                                               std::max<std::int64_t>(RowExtent(buffer), buffer.RowSize))};
}

bool SameFile(int a, int b) {
    struct stat first, second;
    return a == b || (fstat(a, &first) == 0 && fstat(b, &second) == 0 && first.st_dev == second.st_dev &&
                      first.st_ino == second.st_ino);
}

}  // namespace

bool IsMirrored(const PixelBuffer& buffer) {
    return buffer.rowAddress == &MirroredMemoryRowAddress || buffer.rowAddress == &MirroredMappedRowAddress;
}

std::int64_t StorageRowOf(const PixelBuffer& buffer, std::int32_t y) {
    return IsMirrored(buffer) ? MirroredStorageRow(buffer, y) : StorageRow(buffer, y);
}

std::int32_t RowsInWindow(const PixelBuffer& buffer) {
    if (!buffer.IsMapping) return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::max<std::int64_t>(std::int64_t{buffer.windowRows} - 2, 1));
}

void PlaceWindow(PixelBuffer& buffer, std::int32_t first, std::int32_t last) {
    if (buffer.IsMapping) RowAddress(buffer, IsMirrored(buffer) ? last : first);
}

bool SharesStorage(const PixelBuffer& a, const PixelBuffer& b) {
    if (a.IsMapping || b.IsMapping) return a.IsMapping && b.IsMapping && SameFile(a.fileDescriptor, b.fileDescriptor);
    const StorageRange first = RangeOf(a), second = RangeOf(b);
    return first.begin < second.end && second.begin < first.end;
}

bool RowsMeet(const PixelBuffer& source, const PixelBuffer& destination) {
    const bool apart = std::abs(std::int64_t{destination.RowSize}) >= RowExtent(destination);
    return !apart || SharesStorage(source, destination);
}

RowPairs::RowPairs(PixelBuffer& source, PixelBuffer& destination)
    : source_(source),
      destination_(destination),
      sameFile_(source.IsMapping && destination.IsMapping && SharesStorage(source, destination)) {}

RowPairs::~RowPairs() { platform::FreePixels(copy_); }

RowPair RowPairs::At(std::int32_t sourceY, std::int32_t destinationY) {
    if (!sameFile_) return {RowAddress(source_, sourceY), RowAddress(destination_, destinationY)};
    const std::int64_t sourceRow = StorageRowOf(source_, sourceY);
    if (sourceRow >= 0 && sourceRow == StorageRowOf(destination_, destinationY)) {
        std::uint8_t* const row = RowAddress(destination_, destinationY);
        return {row, row};
    }
    const std::uint8_t* const source =
        &source_ == &destination_ ? CopyOfSourceRow(sourceY) : RowAddress(source_, sourceY);
    return {source, RowAddress(destination_, destinationY)};
}

const std::uint8_t* RowPairs::CopyOfSourceRow(std::int32_t y) {
    const std::uint8_t* const row = RowAddress(source_, y);
    if (!row) return nullptr;
    if (!copy_) copy_ = platform::AllocatePixels(source_.RowSize);
    if (copy_) std::memcpy(copy_, row, static_cast<std::size_t>(source_.RowSize));
    return copy_;
}

}  // namespace tqx
