#include "plugin/buffer/RowPairs.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/PixelMemory.h"
#include "plugin/buffer/MappedStorage.h"
#include "plugin/buffer/Sharing.h"

namespace tqx {

std::int32_t RowsInWindow(const PixelBuffer& buffer) {
    if (!buffer.IsMapping) return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::max<std::int64_t>(std::int64_t{buffer.windowRows} - 2, 1));
}

void PlaceWindow(PixelBuffer& buffer, std::int32_t first, std::int32_t last) {
    if (buffer.IsMapping) RowAddress(buffer, IsMirrored(buffer) ? last : first);
}

RowPairs::RowPairs(PixelBuffer& source, PixelBuffer& destination)
    : source_(source),
      destination_(destination),
      sameFile_(source.IsMapping && destination.IsMapping && MayShareStorage(source, destination)) {}

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
