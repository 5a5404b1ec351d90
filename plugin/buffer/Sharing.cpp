// Overlaps found from the bytes that two pictures' storage spans, and of mapped ones from their
// files.
#include "plugin/buffer/Sharing.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "plugin/buffer/Channels.h"
#include "plugin/rows/PixelSpan.h"

namespace tqx {

namespace {

rows::PixelSpan SpanOfChannels(const PixelBuffer& buffer, rows::ChannelSet set) {
    const rows::PixelLayout layout = LayoutOf(buffer, set);
    return rows::SpanOf(layout.pixelSize, layout.offset, rows::ChannelCount(set));
}

struct ByteRange {
    std::uintptr_t first;
    std::uintptr_t end;

    bool Meets(const ByteRange& other) const { return first < other.end && other.first < end; }
};

// Bytes of a row from its start to its last channel byte.
std::int64_t RowExtent(const PixelBuffer& buffer) {
    const std::int64_t furthest = std::max({buffer.RedOffset, buffer.GreenOffset, buffer.BlueOffset, buffer.GrayOffset,
                                            buffer.AlphaOffset, std::int32_t{0}});
    return (std::int64_t{buffer.Width} - 1) * buffer.PixelSize + furthest + 1;
}

// The storage of a picture in memory, as the picture describes it. Rows may be longer than from one
// to the next, and run backwards: a block's row size may be negative.
ByteRange StorageOf(const PixelBuffer& buffer) {
    const std::int64_t last = (std::max<std::int64_t>(buffer.storageRows, 1) - 1) * buffer.RowSize;
    const std::int64_t row = std::max(RowExtent(buffer), std::abs(std::int64_t{buffer.RowSize}));
    const auto base = reinterpret_cast<std::uintptr_t>(buffer.data);
    return {base + static_cast<std::uintptr_t>(std::min<std::int64_t>(last, 0)),
            base + static_cast<std::uintptr_t>(std::max<std::int64_t>(last, 0) + row)};
}

// The bytes from the first to the last that a picture in memory has in a set.

ByteRange BytesOf(const PixelBuffer& buffer, rows::ChannelSet set) {
    const rows::PixelSpan span = SpanOfChannels(buffer, set);
    const std::int64_t firstRow = std::max(buffer.RowOffset, 0);
    const std::int64_t lastRow =
        std::min(std::int64_t{buffer.RowOffset} + buffer.Height, std::int64_t{buffer.storageRows}) - 1;
    if (firstRow > lastRow || buffer.Width < 1) return {0, 0};
    const auto [least, most] = std::minmax({firstRow * buffer.RowSize, lastRow * buffer.RowSize});
    const std::uintptr_t base =
        reinterpret_cast<std::uintptr_t>(buffer.data) + static_cast<std::uintptr_t>(span.offset);
    return {base + static_cast<std::uintptr_t>(least),
            base + static_cast<std::uintptr_t>(most + span.Extent(buffer.Width))};
}

// The picture at the root of a view, whose storage it is.
const PixelBuffer& OwnerOfStorage(const PixelBuffer& buffer) {
    const PixelBuffer* owner = &buffer;
    while (owner->Parent) owner = BufferOf(owner->Parent);
    return *owner;
}

bool MapSameFile(const PixelBuffer& a, const PixelBuffer& b) {
    struct stat first, second;
    if (a.fileDescriptor == b.fileDescriptor) return true;
    if (fstat(a.fileDescriptor, &first) != 0 || fstat(b.fileDescriptor, &second) != 0) return true;
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool MayMeet(const PixelBuffer& from, const PixelBuffer& to, rows::ChannelSet set) {
    if (from.IsMapping || to.IsMapping) return MayShareStorage(from, to);
    return BytesOf(from, set).Meets(BytesOf(to, set));
}

bool HasSameRows(const PixelBuffer& from, const PixelBuffer& to) {
    const bool sameStorage = from.IsMapping ? from.fileDescriptor == to.fileDescriptor : from.data == to.data;
    return sameStorage && from.IsMapping == to.IsMapping && from.rowAddress == to.rowAddress &&
           from.RowSize == to.RowSize && from.RowOffset == to.RowOffset && from.Width == to.Width &&
           from.Height == to.Height && from.storageRows == to.storageRows;
}

bool AreDistinct(const rows::PixelLayout& layout, int count) {
    for (int i = 0; i < count; ++i)
        if (std::find(layout.offset, layout.offset + i, layout.offset[i]) != layout.offset + i) return false;
    return true;
}

}  // namespace

bool MayShareStorage(const PixelBuffer& a, const PixelBuffer& b) {
    if (a.IsMapping && b.IsMapping) return MapSameFile(a, b);
    if (a.IsMapping || b.IsMapping) return OwnerOfStorage(a.IsMapping ? b : a).MemoryTarget != nullptr;
    return StorageOf(a).Meets(StorageOf(b));
}

bool RowsMeet(const PixelBuffer& source, const PixelBuffer& destination) {
    const bool apart = std::abs(std::int64_t{destination.RowSize}) >= RowExtent(destination);
    return !apart || MayShareStorage(source, destination);
}

bool HasBytesOfItsOwn(const PixelBuffer& buffer, rows::ChannelSet set) {
    const rows::PixelSpan span = SpanOfChannels(buffer, set);
    const std::int64_t rowSize = std::abs(std::int64_t{buffer.RowSize});
    return span.IsCompact() && AreDistinct(LayoutOf(buffer, set), rows::ChannelCount(set)) &&
           (buffer.Height <= 1 || span.Extent(buffer.Width) <= rowSize);
}

Sharing SharingOf(const PixelBuffer& from, const PixelBuffer& to, rows::ChannelSet set) {
    if (!MayMeet(from, to, set)) return Sharing::Apart;
    const bool same = HasSameRows(from, to) && LayoutOf(from, set) == LayoutOf(to, set);
    return same && HasBytesOfItsOwn(from, set) ? Sharing::SamePixels : Sharing::Overlapping;
}

}  // namespace tqx
