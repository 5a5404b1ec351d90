#include "geometry/BlockCopy.h"

#include <algorithm>
#include <cstring>

#include "buffer/RowPairs.h"
#include "rows/PixelSpan.h"

namespace tqx {

namespace {

rows::PixelLayout WithoutShift(rows::PixelLayout layout, int count, std::int32_t shift) {
    for (int i = 0; i < count; ++i) layout.offset[i] -= shift;
    return layout;
}

rows::PixelSpan SpanOfChannels(const PixelBuffer& picture, rows::ChannelSet set) {
    const rows::PixelLayout layout = LayoutOf(picture, set);
    return rows::SpanOf(layout.pixelSize, layout.offset, rows::ChannelCount(set));
}

}  // namespace

BlockCopy::BlockCopy(PixelBuffer& picture, rows::ChannelSet set, std::int32_t columns, std::int32_t rows)
    : picture_(picture),
      shift_(SpanOfChannels(picture, set).offset),
      size_(SpanOfChannels(picture, set).size),
      stride_(std::int64_t{columns} * picture.PixelSize + size_),
      bytes_(stride_ * rows) {
    layout_ = WithoutShift(LayoutOf(picture, set), rows::ChannelCount(set), shift_);
    block_.data = bytes_.Bytes();
    block_.PixelSize = picture.PixelSize;
    block_.RowSize = static_cast<std::int32_t>(stride_);
    block_.rowAddress = &MemoryRowAddress;
}

bool BlockCopy::Take(std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom) {
    const std::int64_t first = std::int64_t{left} * picture_.PixelSize + shift_;
    const auto count = static_cast<std::size_t>((std::int64_t{right} - left - 1) * picture_.PixelSize + size_);
    const std::int32_t step = RowsInWindow(picture_);
    for (std::int32_t y = top; y < bottom;) {
        const std::int32_t end = y + std::min(step, bottom - y);
        PlaceWindow(picture_, y, end - 1);
        for (; y < end; ++y) {
            const std::uint8_t* const row = RowAddress(picture_, y);
            if (!row) return false;
            std::memcpy(bytes_.Bytes() + (y - top) * stride_, row + first, count);
        }
    }
    block_.RowOffset = -top;
    block_.storageRows = block_.Height = bottom - top;
    block_.Width = right - left;
    return true;
}

}  // namespace tqx
