// Where the rows of unmapped storage are, and what views take over from their parents.
#include "plugin/buffer/PixelBuffer.h"

#include <cstring>
#include <type_traits>

#include "plugin/buffer/MappedStorage.h"

namespace tqx {

static_assert(std::is_standard_layout_v<PixelBuffer> && std::is_trivially_copyable_v<PixelBuffer>,
              "the host zeroes the record and reaches its fields by offset");

namespace {

std::int64_t WithinStorage(const PixelBuffer& buffer, std::int64_t row) {
    return row >= 0 && row < buffer.storageRows ? row : -1;
}

std::uint8_t* AddressOfStorageRow(const PixelBuffer& buffer, std::int64_t row) {
    if (row < 0 || !buffer.data || !StorageStands(buffer)) return nullptr;
    return buffer.data + row * buffer.RowSize;
}

}  // namespace

bool StorageStands(const PixelBuffer& buffer) {
    const PixelBuffer* view = &buffer;
    while (view->Parent) {
        const PixelBuffer* const parent = BufferOf(view->Parent);
        if (parent->generation != view->parentGeneration) return false;
        view = parent;
    }
    return true;
}

std::int64_t StorageRow(const PixelBuffer& buffer, std::int32_t y) {
    return WithinStorage(buffer, std::int64_t{y} + buffer.RowOffset);
}

std::int64_t MirroredStorageRow(const PixelBuffer& buffer, std::int32_t y) {
    return WithinStorage(buffer, std::int64_t{buffer.Height} - y - 1 + buffer.RowOffset);
}

std::uint8_t* MemoryRowAddress(PixelBuffer& buffer, std::int32_t y) {
    return AddressOfStorageRow(buffer, StorageRow(buffer, y));
}

std::uint8_t* MirroredMemoryRowAddress(PixelBuffer& buffer, std::int32_t y) {
    return AddressOfStorageRow(buffer, MirroredStorageRow(buffer, y));
}

namespace {

void ClearUpTo(PixelBuffer& buffer, std::int64_t end) {
    const auto size = static_cast<std::size_t>(buffer.RowSize - buffer.clearedFrom);
    for (; buffer.rowsAtHand < end; ++buffer.rowsAtHand)
        std::memset(buffer.data + std::int64_t{buffer.rowsAtHand} * buffer.RowSize + buffer.clearedFrom, 0, size);
}

}  // namespace

std::uint8_t* ClearingRowAddress(PixelBuffer& buffer, std::int32_t y) {
    std::uint8_t* const row = MemoryRowAddress(buffer, y);
    if (row) ClearUpTo(buffer, StorageRow(buffer, y) + 1);
    return row;
}

void FinishPicture(PixelBuffer& buffer) {
    if (buffer.rowAddress != &ClearingRowAddress) return;
    buffer.clearedFrom = 0;
    ClearUpTo(buffer, buffer.storageRows);
    buffer.rowAddress = &MemoryRowAddress;
}

bool IsMirrored(const PixelBuffer& buffer) {
    return buffer.rowAddress == &MirroredMemoryRowAddress || buffer.rowAddress == &MirroredMappedRowAddress;
}

std::int64_t StorageRowOf(const PixelBuffer& buffer, std::int32_t y) {
    return IsMirrored(buffer) ? MirroredStorageRow(buffer, y) : StorageRow(buffer, y);
}

RowRange RowsOf(const PixelBuffer& buffer) {
    // Storage rows, then rows from the end that lies at storage row RowOffset.
    const std::int64_t first = std::max<std::int64_t>(0, -std::int64_t{buffer.RowOffset});
    const std::int64_t end = std::min<std::int64_t>(buffer.Height, std::int64_t{buffer.storageRows} - buffer.RowOffset);
    const bool hasBytes = buffer.Width != 0 || buffer.RowSize != 0;
    if (end <= first || !hasBytes) return {0, 0};
    if (!IsMirrored(buffer)) return {static_cast<std::int32_t>(first), static_cast<std::int32_t>(end)};
    return {static_cast<std::int32_t>(buffer.Height - end), static_cast<std::int32_t>(buffer.Height - first)};
}

void CopyGeometry(const PixelBuffer& from, PixelBuffer& to) {
    to.Valid = from.Valid;
    to.PixelSize = from.PixelSize;
    to.RowSize = from.RowSize;
    to.Width = from.Width;
    to.Height = from.Height;
    to.RowOffset = from.RowOffset;
    to.TotalSize = from.TotalSize;
}

}  // namespace tqx
