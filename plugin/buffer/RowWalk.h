// A walk over a picture's rows from the top.
//
// A window opens a little above the row that was asked for. From the top of a mirrored view the
// file is walked upwards, so of each window only the lowest rows would serve. A walk asks for the
// furthest row first that a window holds together with the next one; then all between are there,
// and the order in which rows are worked on stays. Other pictures are served as they are.
#pragma once

#include <algorithm>
#include <cstdint>

#include "plugin/buffer/RowPairs.h"

namespace tqx {

class RowWalk {
  public:
    // Over a range of rows. The picture outlives the walk.
    RowWalk(PixelBuffer& buffer, const RowRange& range)
        : buffer_(buffer), placed_(buffer.IsMapping && IsMirrored(buffer) ? range.first : range.end), end_(range.end) {}

    // Makes ready for row y, which is not above those before. Ends addresses of the picture, as any
    // row address does.
    void To(std::int32_t y) {
        if (y >= placed_ && y < end_) Place(y);
    }

  private:
    void Place(std::int32_t y) {
        placed_ = y + std::min(RowsInWindow(buffer_), end_ - y);
        PlaceWindow(buffer_, y, placed_ - 1);
    }

    PixelBuffer& buffer_;
    std::int32_t placed_;  // the first row that may lie outside the window
    std::int32_t end_;
};

}  // namespace tqx
