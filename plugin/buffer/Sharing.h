// Whether two pictures share pixels, and how.
//
// The pixel order of an operation shows where its source and destination share memory. An
// operation asks once and takes whichever of its forms gives what the plain order gives.
#pragma once

#include "plugin/buffer/PixelBuffer.h"
#include "plugin/rows/PixelLayout.h"

namespace tqx {

enum class Sharing {
    Apart,        // no byte of the one is a byte of the other
    SamePixels,   // channel c of pixel x, y is the same byte in both, and shared with no other channel or pixel
    Overlapping,  // anything else: what is written may be read again anywhere
};

// Whether some byte of any channel may be reached through both pictures: their memory overlaps, they
// map the same file, or one of them is mapped and the other wraps a memory block, which may lie in
// a window of that file. A picture shares with itself.
bool MayShareStorage(const PixelBuffer& a, const PixelBuffer& b);

// Whether the order in which rows are written shows: the pictures may share storage, or rows of the
// destination lie over each other, as a block's rows may.
bool RowsMeet(const PixelBuffer& source, const PixelBuffer& destination);

// How the channels of a set of two pictures relate. Where it can't tell it says Overlapping.
Sharing SharingOf(const PixelBuffer& from, const PixelBuffer& to, rows::ChannelSet set);

// Whether every channel of every pixel has a byte of its own, so that what is written to a channel
// is what is read from it later.
bool HasBytesOfItsOwn(const PixelBuffer& buffer, rows::ChannelSet set);

}  // namespace tqx
