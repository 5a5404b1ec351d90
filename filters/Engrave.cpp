#include "filters/Engrave.h"

#include <algorithm>

#include "buffer/Destination.h"
#include "buffer/Sharing.h"
#include "filters/PackedRows.h"
#include "platform/PixelMemory.h"
#include "rows/Engrave.h"

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
        rows::EngraveRow(pixel, left, channels, pixel);
    }
}

// In place the rows above have changed already, and are read so.
void EngraveByRows(const Operation& operation, std::int32_t level, bool inPlace) {
    const PackedRows rows(operation);
    const int channels = rows.Channels();
    const std::int32_t width = rows.Width();
    const std::int64_t bytes = rows.BytesOf(width);
    const platform::PixelBlock row(bytes), other(bytes);
    if (!row || !other) return;
    for (std::int32_t y = 0; y < operation.CommonHeight(); ++y) {
        const std::int32_t otherRow = Neighbour(y, level, rows.Height());
        if (!rows.Read(otherRow, 0, width, other.Bytes())) std::fill_n(other.Bytes(), bytes, std::uint8_t{0});
        if (!rows.Read(y, 0, width, row.Bytes())) continue;
        if (inPlace && otherRow == y && level < 0)
            EngraveRowByItself(row.Bytes(), channels, width, level);
        else
            rows::EngraveShiftedRow(row.Bytes(), other.Bytes(), channels, width, level, row.Bytes());
        rows.Write(y, 0, width, row.Bytes());
    }
}

void EngraveByPixels(const Operation& operation, std::int32_t level) {
    const PackedRows rows(operation);
    for (std::int32_t y = 0; y < operation.CommonHeight(); ++y)
        for (std::int32_t x = 0; x < operation.CommonWidth(); ++x) {
            std::uint8_t pixel[4], other[4] = {};
            rows.Read(Neighbour(y, level, rows.Height()), Neighbour(x, level, rows.Width()), 1, other);
            if (!rows.Read(y, x, 1, pixel)) break;
            rows::EngraveRow(pixel, other, rows.Channels(), pixel);
            rows.Write(y, x, 1, pixel);
        }
}

}  // namespace

sdk::Object* EngraveFilter(sdk::Object* self, sdk::Object* dest, std::int32_t level) {
    const Operation operation = BeginOperation(self, dest);
    if (!operation) return operation.result;
    const Sharing sharing = SharingOf(operation);
    if (sharing == Sharing::Overlapping)
        EngraveByPixels(operation, level);
    else
        EngraveByRows(operation, level, sharing == Sharing::SamePixels);
    return operation.result;
}

}  // namespace tqx
