// Rows of one picture during an operation: copies where several are wanted at once, none once it is
// gone.
#include "plugin/buffer/RowCursor.h"

#include <algorithm>
#include <limits>

#include "plugin/buffer/Sharing.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

// Rows above the one that was asked for that a window holds as well; a window has five rows at least.
constexpr std::int32_t kLookBehind = 2;

// Whether the window holds row y; a row that the storage doesn't have needs none.
bool IsAtHand(const PixelBuffer& buffer, std::int32_t y) {
    const std::int64_t row = StorageRowOf(buffer, y);
    return row < 0 || (buffer.windowMapped && row >= buffer.firstMappedRow && row <= buffer.lastMappedRow);
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

// Slides to the row whose window has as many rows above y, in the picture, as y's would have in an
// upright one.
void RowCursor::PlaceFor(std::int32_t y) {
    PixelBuffer& window = Window();
    if (IsAtHand(window, y)) return;
    const std::int64_t below = std::max<std::int64_t>(std::int64_t{window.windowRows} - 1 - 2 * kLookBehind, 0);
    SlideWindow(window, static_cast<std::int32_t>(std::min<std::int64_t>(y + below, RowsOf(window).end - 1)));
}

std::int32_t RowCursor::RowsAtOnce() const {
    if (!picture_->IsMapping) return std::numeric_limits<std::int32_t>::max();
    return std::max(picture_->windowRows - kLookBehind, 1);
}

void RowCursor::Hold(const RowRange& range) {
    PixelBuffer& window = Window();
    if (!window.IsMapping || !Stands() || (IsAtHand(window, range.first) && IsAtHand(window, range.end - 1))) return;
    SlideWindow(window, IsMirrored(window) ? range.end - 1 : range.first);
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
