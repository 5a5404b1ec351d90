// The vertical pass of a rotation: every column of a picture sheared by its own distance.
#pragma once

#include <cstdint>

#include "plugin/buffer/RowCursor.h"
#include "plugin/rows/PixelLayout.h"

namespace tqx {

// Channels of a set, sheared over a background (by the set's order).
struct ShearedChannels {
    rows::ChannelSet set;
    std::uint8_t background[4];
};

// Fills the destination's columns with the background and shears column x of the source into
// column x of the destination by start - x · slope, the distances added up column by column. In
// place of the background after a column's last pixel its blend stands on that pixel: intended.
// Walks strips of columns, a few rows of which it holds; where the pictures share pixels it goes
// column by column. False when memory is short.
bool ShearColumns(RowCursor& source, RowCursor& destination, const ShearedChannels& channels, double start,
                  double slope);

}  // namespace tqx
