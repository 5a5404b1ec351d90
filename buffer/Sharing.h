// Whether two pictures share pixels, and how.
//
// The pixel order of an operation shows where its source and destination share memory. An
// operation asks once and takes whichever of its forms gives what the plain order gives.
#pragma once

#include "buffer/Destination.h"
#include "buffer/PixelBuffer.h"
#include "rows/PixelLayout.h"

namespace tqx {

enum class Sharing {
    Apart,        // no byte of the one is a byte of the other
    SamePixels,   // channel c of pixel x, y is the same byte in both, and shared with no other channel or pixel
    Overlapping,  // anything else: what is written may be read again anywhere
};

// How the channels of a set of two pictures relate. Where it can't tell, as between a mapped file
// and a memory block that may lie in one of its windows, it says Overlapping.
Sharing SharingOf(const PixelBuffer& from, const PixelBuffer& to, rows::ChannelSet set);

inline Sharing SharingOf(const Operation& operation) {
    return SharingOf(*operation.source, *operation.destination, operation.channels);
}

// Whether every channel of every pixel has a byte of its own, so that what is written to a channel
// is what is read from it later.
bool HasBytesOfItsOwn(const PixelBuffer& buffer, rows::ChannelSet set);

}  // namespace tqx
