#include "plugin/buffer/RowCursor.h"

#include <algorithm>
#include <limits>

#include "plugin/buffer/Sharing.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

// Rows above the one that was asked for that a window holds as well; a window has five rows at least.
constexpr std::int32_t kLookBehind = 2;

bool IsInWindow(const PixelBuffer& buffer, std::int64_t storageRow) {
    return buffer.windowMapped && storageRow >= buffer.firstMappedRow && storageRow <= buffer.lastMappedRow;
}

}  // namespace

void RowCursor::Open(PixelBuffer& picture) {
    picture_ = &picture;
    generation_ = picture.generation;
}

std::uint8_t* RowCursor::Row(std::int32_t y) {
    if (!Stands()) return nullptr;
    PixelBuffer& window = Window();
    if (window.IsMapping && IsMirrored(window)) PlaceFor(y);
    return RowAddress(window, y);
}

// Asks for the row whose window has as many rows above y, in the picture, as y's would have in an
// upright one.
void RowCursor::PlaceFor(std::int32_t y) {
    PixelBuffer& window = Window();
    const std::int64_t row = StorageRowOf(window, y);
    if (row < 0 || IsInWindow(window, row)) return;
    const std::int64_t below = std::max<std::int64_t>(std::int64_t{window.windowRows} - 1 - 2 * kLookBehind, 0);
    RowAddress(window, static_cast<std::int32_t>(std::min<std::int64_t>(y + below, RowsOf(window).end - 1)));
}

std::int32_t RowCursor::RowsAtOnce() const {
    if (!picture_->IsMapping) return std::numeric_limits<std::int32_t>::max();
    return std::max(picture_->windowRows - kLookBehind, 1);
}

void RowCursor::Hold(const RowRange& range) {
    PixelBuffer& window = Window();
    if (window.IsMapping && Stands()) RowAddress(window, IsMirrored(window) ? range.end - 1 : range.first);
}

bool RowCursor::Yield() {
    if (Stands() && picture_->YieldTicks > 0) PeriodicYield(picture_->YieldTicks, &picture_->lastYieldTick);
    return Stands();
}

void RowCursor::UseOwnWindow() {
    if (picture_->IsMapping && !own_) own_.emplace(*picture_);
}

RowPairs::RowPairs(RowCursor& source, RowCursor& destination)
    : source_(source),
      destination_(destination),
      sameFile_(source->IsMapping && destination->IsMapping &&
                MayShareStorage(source.Picture(), destination.Picture())) {
    if (&source.Picture() == &destination.Picture()) source.UseOwnWindow();
}

RowPair RowPairs::At(std::int32_t sourceY, std::int32_t destinationY) {
    const std::int64_t sourceRow = sameFile_ ? StorageRowOf(source_.Picture(), sourceY) : -1;
    if (sourceRow >= 0 && sourceRow == StorageRowOf(destination_.Picture(), destinationY)) {
        std::uint8_t* const row = destination_.Row(destinationY);
        return {row, row};
    }
    return {source_.Row(sourceY), destination_.Row(destinationY)};
}

}  // namespace tqx
