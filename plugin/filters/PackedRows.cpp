// Packing rows of a picture and unpacking them into another.
#include "plugin/filters/PackedRows.h"

#include <algorithm>

namespace tqx {

namespace {

// Whether the channels fill the pixels: some order of 0 .. count - 1, and nothing between.
bool IsPacked(const rows::PixelLayout& layout, int count) {
    unsigned found = 0;
    for (int i = 0; i < count; ++i)
        if (layout.offset[i] >= 0 && layout.offset[i] < count) found |= 1U << layout.offset[i];
    return layout.pixelSize == count && found + 1 == 1U << count;
}

// The source's channels but for a clip's shift to the right.
rows::PixelLayout WithoutShift(rows::PixelLayout layout, int count) {
    const std::int32_t shift = *std::min_element(layout.offset, layout.offset + count);
    for (int i = 0; i < count; ++i) layout.offset[i] -= shift;
    return layout;
}

rows::PixelLayout PackedLayout(const rows::PixelLayout& from, int count, PackedOrder order) {
    const rows::PixelLayout own = WithoutShift(from, count);
    if (order == PackedOrder::AsItSuits && IsPacked(own, count)) return own;
    return {count, {0, 1, 2, 3}};
}

constexpr std::int64_t RoundUp(std::int64_t bytes) { return (bytes + 63) / 64 * 64; }

}  // namespace

PackedRows::PackedRows(RowCursor& source, RowCursor& destination, rows::ChannelSet set, PackedOrder order)
    : source_(source), destination_(destination), channels_(rows::ChannelCount(set)) {
    const rows::PixelLayout from = LayoutOf(source.Picture(), set);
    const rows::PixelLayout packed = PackedLayout(from, channels_, order);
    read_ = rows::PlanMoves(rows::MovesBetween(set, from, packed));
    write_ = rows::PlanMoves(rows::MovesBetween(set, packed, LayoutOf(destination.Picture(), set)));
}

bool PackedRows::Read(std::int32_t y, std::int32_t first, std::int32_t count, std::uint8_t* packed) const {
    const std::uint8_t* const row = source_.Row(y);
    if (!row) return false;
    rows::MoveRow(read_, row + std::int64_t{first} * source_->PixelSize, packed, count);
    return true;
}

const std::uint8_t* PackedRows::Packed(std::int32_t y, std::int32_t first, std::int32_t count,
                                       std::uint8_t* scratch) const {
    if (const std::uint8_t* const own = Own(y, first)) return own;
    return Read(y, first, count, scratch) ? scratch : nullptr;
}

const std::uint8_t* PackedRows::Own(std::int32_t y, std::int32_t first) const {
    if (!read_.copies || source_->IsMapping) return nullptr;
    const std::uint8_t* const row = source_.Row(y);
    return row ? row + std::int64_t{first} * source_->PixelSize + read_.from.offset : nullptr;
}

std::uint8_t* PackedRows::PackedInPlace(std::int32_t y, std::int32_t first, std::int32_t count) const {
    if (!write_.copies || y >= destination_->Height || first + std::int64_t{count} > destination_->Width)
        return nullptr;
    std::uint8_t* const row = destination_.Row(y);
    return row ? row + std::int64_t{first} * destination_->PixelSize + write_.to.offset : nullptr;
}

void PackedRows::Pack(const std::uint8_t* row, std::int64_t count, std::uint8_t* packed) const {
    rows::MoveRow(read_, row, packed, static_cast<std::int32_t>(count));
}

std::int64_t PackedRows::EndOf(std::int64_t count) const {
    return read_.from.offset + (count - 1) * read_.from.pixelSize + read_.from.size;
}

void PackedRows::Write(std::int32_t y, std::int32_t first, std::int32_t count, const std::uint8_t* packed) const {
    if (y >= destination_->Height || first >= destination_->Width) return;
    std::uint8_t* const row = destination_.Row(y);
    if (!row) return;
    rows::MoveRow(write_, packed, row + std::int64_t{first} * destination_->PixelSize,
                  std::min(count, destination_->Width - first));
}

bool PackedRows::HasSource(std::int32_t y) const { return y < source_->Height && source_.Row(y); }

bool PackedRows::Have(std::int32_t y) const { return HasSource(y) && y < destination_->Height && destination_.Row(y); }

RowRing::RowRing(const PackedRows& rows, std::int64_t capacity, std::int32_t width)
    : rows_(rows),
      count_(width),
      range_(rows.SourceRows()),
      capacity_(std::clamp<std::int64_t>(capacity, 1, std::max(range_.end - range_.first, 1))),
      stride_(RoundUp(rows.BytesOf(width)) + kMargin),
      bytes_(capacity_, stride_, kMargin),
      slots_(capacity_) {}

void RowRing::Restart(std::int32_t first, std::int32_t count) {
    first_ = first;
    count_ = count;
    std::fill_n(slots_.data(), capacity_, Slot{});
}

std::uint8_t* RowRing::Row(std::int64_t y) {
    if (!Has(y)) return nullptr;
    Slot& slot = slots_[y % capacity_];
    std::uint8_t* const row = bytes_.data() + kMargin + y % capacity_ * stride_;
    if (slot.rowPlusOne != y + 1) slot = {y + 1, rows_.Read(static_cast<std::int32_t>(y), first_, count_, row)};
    return slot.present ? row : nullptr;
}

const std::uint8_t* RowRing::Unchanged(std::int64_t y) {
    const std::uint8_t* const own = Has(y) ? rows_.Own(static_cast<std::int32_t>(y), first_) : nullptr;
    return own ? own : Row(y);
}

}  // namespace tqx
