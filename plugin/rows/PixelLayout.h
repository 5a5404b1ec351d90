// How the row functions see a pixel: a set of channels and where each lies.
#pragma once

#include <cstdint>

namespace rows {

// The channels that an operation works on, in the order in which they are read and written.
enum class ChannelSet {
    Gray,       // gray
    GrayAlpha,  // gray, alpha
    Rgb,        // red, green, blue
    RgbAlpha,   // red, green, blue, alpha
};

constexpr int ChannelCount(ChannelSet set) {
    switch (set) {
        case ChannelSet::Gray:
            return 1;
        case ChannelSet::GrayAlpha:
            return 2;
        case ChannelSet::Rgb:
            return 3;
        case ChannelSet::RgbAlpha:
            return 4;
    }
    return 0;
}

constexpr bool SetHasAlpha(ChannelSet set) { return set == ChannelSet::GrayAlpha || set == ChannelSet::RgbAlpha; }

// Where the channels of a set lie: channel i of pixel x of a row is the byte at
// x × pixelSize + offset[i]. Offsets may reach past pixelSize (a clip folds its left edge into
// them) and may coincide (a channel that a layout lacks lies at byte 0).
struct PixelLayout {
    std::int32_t pixelSize;  // bytes from one pixel to the next
    std::int32_t offset[4];  // bytes, by the set's order; unused ones are 0

    constexpr bool operator==(const PixelLayout&) const = default;
};

// Calls work.template operator()<Set>() for the set known at run time; one instantiation a set.
template <class Work>
decltype(auto) ForChannelSet(ChannelSet set, Work&& work) {
    switch (set) {
        case ChannelSet::Gray:
            return work.template operator()<ChannelSet::Gray>();
        case ChannelSet::GrayAlpha:
            return work.template operator()<ChannelSet::GrayAlpha>();
        case ChannelSet::Rgb:
            return work.template operator()<ChannelSet::Rgb>();
        case ChannelSet::RgbAlpha:
            break;
    }
    return work.template operator()<ChannelSet::RgbAlpha>();
}

}  // namespace rows
