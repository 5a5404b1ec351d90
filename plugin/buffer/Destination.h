// Destination pictures: who makes them, and what every operation does before its first pixel.
#pragma once

#include <cstdint>

#include "plugin/buffer/PixelBuffer.h"
#include "plugin/rows/PixelLayout.h"

namespace tqx {

// The class PictureFactoryTQX; the second word of its event's record is the number by which the
// host finds a factory's handler. The tables of the class fill it.
extern sdk::ClassDefinition factoryClass;

// A picture of the wanted size and format, owned by the caller: from the factory of `owner` (may
// be nil), else from the global factory, else a new picture in memory. A factory without a
// handler, or whose answer is nil or not Valid, is passed over; what it gives is not compared
// with what was asked. Nil when there is none to be had. Script code may run.
sdk::Object* MakeDestination(sdk::Object* owner, std::int32_t width, std::int32_t height, std::int32_t format);

// Whether MakeDestination would ask a factory. Without one, nobody but its caller knows the picture.
bool HasFactory(sdk::Object* owner);

// What MakeDestination gives without a factory; its pixels take no memory until they are touched.
sdk::Object* MakeUntouchedPicture(std::int32_t width, std::int32_t height, std::int32_t format);

// The shared method SetFactory: keeps the global factory until the next call; nil removes it.
void SetFactory(sdk::Object* factory);

// The two forms of CreatePictureTQX: with no owner, and with the picture as owner.
sdk::Object* CreatePictureTQXShared(std::int32_t width, std::int32_t height, std::int32_t format);
sdk::Object* CreatePictureTQX(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format);

// What an operation from a picture to a destination works on.
struct Operation {
    PixelBuffer* source = nullptr;
    PixelBuffer* destination = nullptr;
    sdk::Object* result = nullptr;  // what the operation returns: the destination, owned by the caller, or nil
    rows::ChannelSet channels = rows::ChannelSet::Gray;  // of the source
    bool ready = false;

    // Whether there are pixels to work on. If not, return `result` at once: nil for a refused
    // call, the untouched destination where there is nothing to do.
    explicit operator bool() const { return ready; }

    // The channels' places in source and destination.
    rows::PixelLayout From() const { return LayoutOf(*source, channels); }
    rows::PixelLayout To() const { return LayoutOf(*destination, channels); }

    // The columns and rows that both pictures have; what lies outside the destination is skipped.
    std::int32_t CommonWidth() const;
    std::int32_t CommonHeight() const;

    // The rows that both storages have.
    RowRange Rows() const { return CommonRows(RowsOf(*source), RowsOf(*destination)); }
};

// The common beginning of the operations that take a `dest`: the source must be usable, else the
// result is nil; yields for it; takes `dest`, retained, or for nil makes one of width × height in
// the source's format; the destination must be usable, else it is released and the result is nil;
// yields for it; chooses the channel set from the source's flags. Not ready, with the destination
// as the result, when the source is neither gray nor RGB, has no pixels or no row, or when script
// code closed a picture in a yield.
Operation BeginOperation(sdk::Object* self, sdk::Object* dest, std::int32_t width, std::int32_t height);

// The same for a destination of the source's size.
Operation BeginOperation(sdk::Object* self, sdk::Object* dest);

// The common beginning of the operations in place: usable, yielded, still standing, with pixels.
bool BeginInPlace(PixelBuffer& buffer);

// Chooses the channels by the flags HasAlpha, IsGray and IsRGB, gray before RGB. False when the
// picture is neither.
bool ChooseChannels(const PixelBuffer& buffer, rows::ChannelSet* channels);

}  // namespace tqx
