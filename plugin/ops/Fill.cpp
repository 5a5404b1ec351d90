// The members ClearRect, FillRect and FillRectRGB, each as a pattern of a pixel's bytes.
#include "plugin/ops/Fill.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Rectangle.h"
#include "plugin/ops/PatternRows.h"
#include "plugin/rows/Blocks.h"
#include "plugin/rows/Fill.h"
#include "plugin/rows/Streaming.h"

namespace tqx {

namespace {

using rows::ChannelSet;

// What FillRect does to a layout.
enum class ByteFill { Nothing, WholeRows, Gray, Colors };

ByteFill ByteFillOf(const PixelBuffer& buffer) {
    if (!buffer.IsGray && !buffer.IsRGB) return ByteFill::Nothing;
    if (buffer.HasAlpha) return ByteFill::WholeRows;
    if (buffer.IsGray) return buffer.PixelSize == 1 ? ByteFill::WholeRows : ByteFill::Gray;
    return buffer.PixelSize == 3 ? ByteFill::WholeRows : ByteFill::Colors;
}

// Fills bytes first .. end - 1 of a storage row, given by its distance from row y.
void FillStorageRow(RowCursor& picture, std::int32_t y, std::int64_t distance, std::int64_t first, std::int64_t end,
                    std::uint8_t value) {
    const std::int64_t target = IsMirrored(picture.Picture()) ? y - distance : y + distance;
    if (first >= end || target != static_cast<std::int32_t>(target)) return;
    std::uint8_t* const row = picture.Row(static_cast<std::int32_t>(target));
    if (row) std::memset(row + first, value, static_cast<std::size_t>(end - first));
}

// RowSize bytes from column x of row y on, wherever the row ends: intended. The rest falls into
// the storage's next row, which there may not be.
void FillPastRow(RowCursor& picture, std::int32_t x, std::int32_t y, std::uint8_t value) {
    const std::int64_t size = picture->RowSize;
    if (size <= 0) return;
    const std::int64_t start = std::int64_t{x} * picture->PixelSize;
    const std::int64_t skipped = start / size;  // a block's rows may be shorter than their pixels
    FillStorageRow(picture, y, skipped, start % size, size, value);
    FillStorageRow(picture, y, skipped + 1, 0, start % size, value);
}

void FillWholeRows(PixelBuffer& buffer, const Rectangle& area, std::uint8_t value) {
    RowCursor picture(buffer);
    if (area.IsEmpty() || !BeginInPlace(picture)) return;
    const RowRange range = CommonRows(picture.Rows(), area.Rows());
    for (std::int32_t y = range.first; y < range.end; ++y) {
        FillPastRow(picture, area.x, y, value);
        if (!picture.Yield()) return;
    }
}

void FillChannels(PixelBuffer& buffer, const Rectangle& area, ChannelSet set, const std::uint8_t (&values)[4]) {
    const std::int64_t bytes = rows::BytesToWrite(area.width, area.height, buffer.PixelSize);
    ApplyInPlace(buffer, area, rows::FillPattern(LayoutOf(buffer, set), rows::ChannelCount(set), values, bytes));
}

constexpr std::uint8_t LowByte(std::int32_t value) { return static_cast<std::uint8_t>(value); }

// Of a host colour, 0x00RRGGBB.
constexpr std::int32_t Red(sdk::Color color) { return static_cast<std::uint32_t>(color) >> 16 & 255; }
constexpr std::int32_t Green(sdk::Color color) { return static_cast<std::uint32_t>(color) >> 8 & 255; }
constexpr std::int32_t Blue(sdk::Color color) { return static_cast<std::uint32_t>(color) & 255; }

Rectangle Whole(const PixelBuffer& buffer) { return ClipTo(buffer, 0, 0, buffer.Width, buffer.Height); }

void FillColors(PixelBuffer& buffer, const Rectangle& area, std::int32_t red, std::int32_t green, std::int32_t blue) {
    if (HasColors(buffer))
        FillChannels(buffer, area, ChannelSet::Rgb, {LowByte(red), LowByte(green), LowByte(blue), 0});
}

void FillColorsAndAlpha(PixelBuffer& buffer, const Rectangle& area, std::int32_t red, std::int32_t green,
                        std::int32_t blue, std::int32_t alpha) {
    if (!buffer.HasAlpha) return FillColors(buffer, area, red, green, blue);
    if (HasColors(buffer))
        FillChannels(buffer, area, ChannelSet::RgbAlpha, {LowByte(red), LowByte(green), LowByte(blue), LowByte(alpha)});
}

void FillBytes(PixelBuffer& buffer, const Rectangle& area, std::uint8_t value) {
    switch (ByteFillOf(buffer)) {
        case ByteFill::Nothing:
            return;
        case ByteFill::WholeRows:
            return FillWholeRows(buffer, area, value);
        case ByteFill::Gray:
            return FillChannels(buffer, area, ChannelSet::Gray, {value});
        case ByteFill::Colors:
            return FillChannels(buffer, area, ChannelSet::Rgb, {value, value, value});
    }
}

// For as many bytes in all.
rows::PixelPattern ZerosFor(std::int64_t bytes) {
    const std::uint8_t zero = 0;
    return rows::FillPattern({1, {0}}, 1, &zero, bytes);
}

// How many rows, padding and all, may be taken for one: of a file a window holds a few, and a yield
// comes after each.
std::int32_t RowsSideBySide(const PixelBuffer& buffer) {
    constexpr std::int32_t kMostBytes = 1 << 30;
    return buffer.IsMapping || buffer.YieldTicks > 0 ? 1 : std::max(kMostBytes / buffer.RowSize, 1);
}

}  // namespace

void ClearRect(sdk::Object* self) {
    PixelBuffer& buffer = *BufferOf(self);
    RowCursor picture(buffer);
    if (!BeginInPlace(picture) || buffer.RowSize <= 0) return;
    const RowRange range = picture.Rows();
    const rows::PixelPattern zeros = ZerosFor(std::int64_t{buffer.RowSize} * (range.end - range.first));
    const rows::StreamsEnd end;
    for (const rows::Block block : rows::Blocks(range.first, range.end, RowsSideBySide(buffer))) {
        std::uint8_t* const first = picture.Row(block.first);
        std::uint8_t* const last = picture.Row(block.End() - 1);  // the lower address in a mirrored view
        if (first && last) rows::ApplyPattern(zeros, std::min(first, last), block.count * buffer.RowSize);
        if (!picture.Yield()) return;
    }
}

void ClearRect(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    PixelBuffer& buffer = *BufferOf(self);
    const Rectangle area = ClipTo(buffer, x, y, width, height);
    RowCursor picture(buffer);
    if (area.IsEmpty() || !BeginInPlace(picture)) return;
    const std::int64_t first = std::int64_t{area.x} * buffer.PixelSize;
    const auto size = static_cast<std::size_t>(area.width) * static_cast<std::size_t>(buffer.PixelSize);
    ForRowsInPlace(picture, area.Rows(), [=](std::uint8_t* row) { std::memset(row + first, 0, size); });
}

void FillRect(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
              std::int32_t value) {
    PixelBuffer& buffer = *BufferOf(self);
    FillBytes(buffer, ClipTo(buffer, x, y, width, height), LowByte(value));
}

void FillRect(sdk::Object* self, std::int32_t value) {
    PixelBuffer& buffer = *BufferOf(self);
    FillBytes(buffer, Whole(buffer), LowByte(value));
}

void FillRectRGB(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                 std::int32_t red, std::int32_t green, std::int32_t blue) {
    PixelBuffer& buffer = *BufferOf(self);
    FillColors(buffer, ClipTo(buffer, x, y, width, height), red, green, blue);
}

void FillRectRGB(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                 sdk::Color color) {
    FillRectRGB(self, x, y, width, height, Red(color), Green(color), Blue(color));
}

void FillRectRGB(sdk::Object* self, std::int32_t red, std::int32_t green, std::int32_t blue) {
    PixelBuffer& buffer = *BufferOf(self);
    FillColors(buffer, Whole(buffer), red, green, blue);
}

void FillRectRGB(sdk::Object* self, sdk::Color color) { FillRectRGB(self, Red(color), Green(color), Blue(color)); }

void FillRectRGB(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                 std::int32_t red, std::int32_t green, std::int32_t blue, std::int32_t alpha) {
    PixelBuffer& buffer = *BufferOf(self);
    FillColorsAndAlpha(buffer, ClipTo(buffer, x, y, width, height), red, green, blue, alpha);
}

void FillRectRGB(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                 sdk::Color color, std::int32_t alpha) {
    FillRectRGB(self, x, y, width, height, Red(color), Green(color), Blue(color), alpha);
}

void FillRectRGB(sdk::Object* self, std::int32_t red, std::int32_t green, std::int32_t blue, std::int32_t alpha) {
    PixelBuffer& buffer = *BufferOf(self);
    FillColorsAndAlpha(buffer, Whole(buffer), red, green, blue, alpha);
}

void FillRectRGB(sdk::Object* self, sdk::Color color, std::int32_t alpha) {
    FillRectRGB(self, Red(color), Green(color), Blue(color), alpha);
}

}  // namespace tqx
