// Choosing the conversion between two pictures, or a picture and a format, by their flags.
#pragma once

#include <optional>

#include "plugin/buffer/ImageFormat.h"
#include "plugin/buffer/PixelBuffer.h"
#include "plugin/rows/Convert.h"

namespace tqx {

// The channel set of a layout and where its channels lie; nothing for one that is neither RGB
// nor gray. RGB comes before gray. Record: PixelBuffer or ImageFormatInfo.
struct DescribedPixels {
    rows::ChannelSet set;
    rows::PixelLayout layout;
};

template <class Record>
std::optional<DescribedPixels> DescribePixels(const Record& record) {
    using rows::ChannelSet;
    if (record.IsRGB)
        return DescribedPixels{
            record.HasAlpha ? ChannelSet::RgbAlpha : ChannelSet::Rgb,
            {record.PixelSize, {record.RedOffset, record.GreenOffset, record.BlueOffset, record.AlphaOffset}}};
    if (record.IsGray)
        return DescribedPixels{record.HasAlpha ? ChannelSet::GrayAlpha : ChannelSet::Gray,
                               {record.PixelSize, {record.GrayOffset, record.AlphaOffset}}};
    return std::nullopt;
}

// The conversion that copies every channel both sides have; alpha only when both have it.
// Nothing when either side is neither RGB nor gray.
template <class From, class To>
std::optional<rows::Conversion> ChooseConversion(const From& from, const To& to) {
    const auto source = DescribePixels(from);
    const auto destination = DescribePixels(to);
    if (!source || !destination) return std::nullopt;
    const bool alpha = from.HasAlpha && to.HasAlpha;
    return rows::Conversion{source->set, destination->set, source->layout, destination->layout,
                            alpha ? rows::AlphaRule::Copy : rows::AlphaRule::Leave};
}

}  // namespace tqx
