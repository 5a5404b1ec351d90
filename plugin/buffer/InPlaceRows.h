// The loop of the operations that change a picture's rows where they are.
#pragma once

#include <cstdint>

#include "plugin/buffer/PixelBuffer.h"
#include "plugin/buffer/RowWalk.h"

namespace tqx {

// Calls work(row) for `count` rows from row `first` on, from the top, and yields for the picture
// after each. Rows that can't be had are passed over. Ends early when script code took the
// picture's storage away in a yield.
template <class Work>
void ForRowsInPlace(PixelBuffer& buffer, std::int32_t first, std::int32_t count, const Work& work) {
    const StorageWatch watch(buffer);
    const RowRange range = CommonRows(RowsOf(buffer), {first, first + count});
    RowWalk walk(buffer, range);
    for (std::int32_t y = range.first; y < range.end; ++y) {
        walk.To(y);
        if (std::uint8_t* const row = RowAddress(buffer, y)) work(row);
        if (!YieldAndKeep(buffer, watch)) return;
    }
}

}  // namespace tqx
