// Mapping bytes through tables.
#pragma once

#include <cstdint>

#include "rows/PixelLayout.h"

namespace rows {

// 256 entries, indexed by the source byte.
struct Table {
    std::uint8_t entry[256];
};

// One table a channel of the set, in its order; null: the channel is neither read nor written.
struct Tables {
    const Table* channel[4];
};

// For each of `width` pixels from left to right: reads the channels of the set from the source
// pixel, then writes their table entries to the destination's channels in the set's order. The
// rows may overlap with that meaning. A width of 0 or below does nothing.
void LookUpRow(ChannelSet set, const Tables& tables, const PixelLayout& from, const std::uint8_t* source,
               const PixelLayout& to, std::uint8_t* destination, std::int32_t width);

}  // namespace rows
