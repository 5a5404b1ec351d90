// Choosing the conversion between two pictures, or a picture and a format, by their flags.
#pragma once

#include <optional>

#include "plugin/buffer/Channels.h"
#include "plugin/rows/Convert.h"

namespace tqx {

// The conversion that copies every channel both sides have; alpha only when both have it.
// Nothing when either side is neither RGB nor gray. From, To: PixelBuffer or ImageFormatInfo.
template <class From, class To>
std::optional<rows::Conversion> ChooseConversion(const From& from, const To& to) {
    rows::ChannelSet source, destination;
    if (!ChooseChannels(from, &source) || !ChooseChannels(to, &destination)) return std::nullopt;
    const bool alpha = from.HasAlpha && to.HasAlpha;
    return rows::Conversion{source, destination, LayoutOf(from, source), LayoutOf(to, destination),
                            alpha ? rows::AlphaRule::Copy : rows::AlphaRule::Leave};
}

}  // namespace tqx
