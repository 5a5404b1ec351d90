// The prologue: what every operation does before its first pixel.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>

#include "plugin/buffer/Channels.h"
#include "plugin/buffer/PixelBuffer.h"
#include "plugin/buffer/RowCursor.h"
#include "plugin/buffer/Sharing.h"
#include "plugin/rows/PixelLayout.h"
#include "plugin/services/HostServices.h"

namespace tqx {

// Each picture in turn must be usable, and then has its yield. False where one is not, or when
// script code took the storage of any in a yield.
bool Begin(std::initializer_list<RowCursor*> pictures);

// The same for one that is changed in place; false as well when it has no pixels.
bool BeginInPlace(RowCursor& picture);

// What an operation from a picture to a destination works on. It owns its result until that is given
// to the caller.
class Operation {
  public:
    // The source must be usable, else the result is nil; yields for it; takes `dest`, retained, or for
    // nil makes one of width × height in the source's format; the destination must be usable, else the
    // result is nil; yields for it; chooses the channels from the source's flags.
    Operation(sdk::Object* self, sdk::Object* dest, std::int32_t width, std::int32_t height);

    // The same for a destination of the source's size.
    Operation(sdk::Object* self, sdk::Object* dest);

    RowCursor source;
    RowCursor destination;
    rows::ChannelSet channels = rows::ChannelSet::Gray;  // of the source

    // Whether there are pixels to work on. False, with the destination untouched as the result, when the
    // source is neither gray nor RGB, has no pixels or no row, or when script code closed a picture in
    // a yield.
    explicit operator bool() const { return ready_; }

    // What the operation returns: the destination, from here on the caller's, or nil.
    sdk::Object* Give();

    // The channels' places in source and destination.
    rows::PixelLayout From() const { return LayoutOf(source.Picture(), channels); }
    rows::PixelLayout To() const { return LayoutOf(destination.Picture(), channels); }

    // The columns and rows that both pictures have; what lies outside the destination is skipped.
    std::int32_t CommonWidth() const { return std::min(source->Width, destination->Width); }
    std::int32_t CommonHeight() const { return std::min(source->Height, destination->Height); }

    // Says that a loop over Rows() and the common columns comes next, which writes `count` channels of every pixel:
    // where these are all the bytes of a picture in the making, they need not be cleared first.
    void WillWrite(int count);

    // The rows that both storages have.
    RowRange Rows() const { return CommonRows(source.Rows(), destination.Rows()); }

    // How the pictures share pixels.
    tqx::Sharing Sharing() const { return SharingOf(source.Picture(), destination.Picture(), channels); }

  private:
    OwnedObject result_;
    bool ready_ = false;
};

}  // namespace tqx
