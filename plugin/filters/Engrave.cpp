// Rows against rows a level away, apart, by copies or in pixel order, as source and destination
// lie.
#include "plugin/filters/Engrave.h"

#include <algorithm>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Scratch.h"
#include "plugin/filters/PackedRows.h"
#include "plugin/rows/Engrave.h"

namespace tqx {

namespace {

// The row or column `level` away, within the picture.
std::int32_t Neighbour(std::int32_t at, std::int32_t level, std::int32_t extent) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{at} + level, 0, extent - 1));
}

// The row as its own neighbour above, in place: pixels see changed ones to their left.
void EngraveRowByItself(std::uint8_t* row, int channels, std::int32_t width, std::int32_t level) {
    for (std::int32_t x = 0; x < width; ++x) {
        std::uint8_t* const pixel = row + std::int64_t{x} * channels;
        const std::uint8_t* const left = row + std::int64_t{Neighbour(x, level, width)} * channels;
        rows::kEngraveRow.plain(pixel, left, channels, pixel);
    }
}

// Two packed rows: a pixel's own and its neighbour's.
struct RowCopies {
    ScratchBytes own, other;

    explicit RowCopies(std::int64_t bytes) : own(bytes), other(bytes) {}
    explicit operator bool() const { return own && other; }
};

// From one picture into another, by way of copies only where rows aren't packed.
void EngraveApart(Operation& operation, std::int32_t level) {
    const PackedRows rows(operation);
    const std::int32_t width = rows.Width();
    const std::int64_t bytes = rows.BytesOf(width);
    const RowCopies copies(bytes);
    if (!copies) return;
    rows::EngraveFunction* const engrave = rows::kEngraveRow.Chosen();
    const RowRange range = operation.Rows();
    for (std::int32_t y = range.first; y < range.end; ++y) {
        const std::uint8_t* other = rows.Packed(Neighbour(y, level, rows.Height()), 0, width, copies.other.data());
        if (!other) {
            std::fill_n(copies.other.data(), bytes, std::uint8_t{0});
            other = copies.other.data();
        }
        const std::uint8_t* const own = rows.Packed(y, 0, width, copies.own.data());
        if (!own) continue;
        std::uint8_t* const direct = rows.PackedInPlace(y, 0, width);
        std::uint8_t* const result = direct ? direct : copies.own.data();
        rows::EngraveShiftedRow(engrave, own, other, rows.Channels(), width, level, result);
        if (!direct) rows.Write(y, 0, width, result);
    }
}

// The rows above have changed already, and are read so.
void EngraveInPlace(Operation& operation, std::int32_t level) {
    const PackedRows rows(operation);
    const std::int32_t width = rows.Width();
    const std::int64_t bytes = rows.BytesOf(width);
    const RowCopies copies(bytes);
    if (!copies) return;
    rows::EngraveFunction* const engrave = rows::kEngraveRow.Chosen();
    std::uint8_t* const own = copies.own.data();
    const RowRange range = operation.Rows();
    for (std::int32_t y = range.first; y < range.end; ++y) {
        const std::int32_t otherRow = Neighbour(y, level, rows.Height());
        if (!rows.Read(otherRow, 0, width, copies.other.data()))
            std::fill_n(copies.other.data(), bytes, std::uint8_t{0});
        if (!rows.Read(y, 0, width, own)) continue;
        if (otherRow == y && level < 0)
            EngraveRowByItself(own, rows.Channels(), width, level);
        else
            rows::EngraveShiftedRow(engrave, own, copies.other.data(), rows.Channels(), width, level, own);
        rows.Write(y, 0, width, own);
    }
}

void EngraveByPixels(Operation& operation, std::int32_t level) {
    const PackedRows rows(operation);
    const RowRange range = operation.Rows();
    for (std::int32_t y = range.first; y < range.end; ++y)
        for (std::int32_t x = 0; x < operation.CommonWidth(); ++x) {
            std::uint8_t pixel[4], other[4] = {};
            rows.Read(Neighbour(y, level, rows.Height()), Neighbour(x, level, rows.Width()), 1, other);
            if (!rows.Read(y, x, 1, pixel)) break;
            rows::kEngraveRow.plain(pixel, other, rows.Channels(), pixel);
            rows.Write(y, x, 1, pixel);
        }
}

}  // namespace

sdk::Object* EngraveFilter(sdk::Object* self, sdk::Object* dest, std::int32_t level) {
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    switch (operation.Sharing()) {
        case Sharing::Apart:
            EngraveApart(operation, level);
            break;
        case Sharing::SamePixels:
            EngraveInPlace(operation, level);
            break;
        case Sharing::Overlapping:
            EngraveByPixels(operation, level);
            break;
    }
    return operation.Give();
}

}  // namespace tqx
