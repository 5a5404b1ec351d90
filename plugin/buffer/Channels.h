// Which channels a picture or a format has, and where they lie. Record: PixelBuffer or
// ImageFormatInfo.
#pragma once

#include "plugin/rows/PixelLayout.h"

namespace tqx {

// Where the channels of a set lie in the record's pixels.
template <class Record>
rows::PixelLayout LayoutOf(const Record& record, rows::ChannelSet set) {
    switch (set) {
        case rows::ChannelSet::Gray:
            return {record.PixelSize, {record.GrayOffset}};
        case rows::ChannelSet::GrayAlpha:
            return {record.PixelSize, {record.GrayOffset, record.AlphaOffset}};
        case rows::ChannelSet::Rgb:
            return {record.PixelSize, {record.RedOffset, record.GreenOffset, record.BlueOffset}};
        case rows::ChannelSet::RgbAlpha:
            break;
    }
    return {record.PixelSize, {record.RedOffset, record.GreenOffset, record.BlueOffset, record.AlphaOffset}};
}

// Chooses the channels by the flags HasAlpha, IsGray and IsRGB, of which a record has one of the last
// two at most. False when it is neither.
template <class Record>
bool ChooseChannels(const Record& record, rows::ChannelSet* channels) {
    using rows::ChannelSet;
    if (!record.IsGray && !record.IsRGB) return false;
    if (record.HasAlpha)
        *channels = record.IsGray ? ChannelSet::GrayAlpha : ChannelSet::RgbAlpha;
    else
        *channels = record.IsGray ? ChannelSet::Gray : ChannelSet::Rgb;
    return true;
}

// Whether colours can be written into the record's pixels.
template <class Record>
bool HasColors(const Record& record) {
    return record.HasRed && record.HasGreen && record.HasBlue;
}

}  // namespace tqx
