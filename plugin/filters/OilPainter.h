// What the oil filter makes of a neighbourhood: a histogram for each channel, and the colour of its
// fullest bins.
#pragma once

#include <algorithm>
#include <cstdint>

#include "plugin/rows/OilHistogram.h"
#include "plugin/rows/PixelLayout.h"

namespace tqx {

// Shared by all calls since the plug-in was loaded. Red and green are emptied for every pixel and
// so live in the painter alone. Blue is left as the last pixel of a colour picture had it, and
// compared with by gray pictures with alpha; alpha is never emptied. Both intended.
struct OilSlots {
    rows::OilHistogram blue;
    rows::OilHistogram alpha;
};
inline constinit OilSlots oilSlots = {};

// The histograms of one neighbourhood, a channel each, and the colour that comes of them.
template <rows::ChannelSet Set>
class Painter {
  public:
    static constexpr int kChannels = rows::ChannelCount(Set);
    static constexpr bool kHasAlpha = rows::SetHasAlpha(Set);
    static constexpr int kColours = kHasAlpha ? kChannels - 1 : kChannels;
    static constexpr bool kIsColour = kColours == 3;

    explicit Painter(std::int32_t levels) : levels_(levels) {}

    void Empty() {
        for (rows::OilHistogram& histogram : histograms_) histogram = {};
    }

    void Add(const std::uint8_t* pixel) {
        for (int c = 0; c < kChannels; ++c) rows::AddSample(histograms_[c], levels_, pixel[c]);
    }

    void Remove(const std::uint8_t* pixel) {
        for (int c = 0; c < kChannels; ++c) rows::RemoveSample(histograms_[c], levels_, pixel[c]);
    }

    // Whole histograms come in and go out: a pair of counts and sums of `bins` bins each for a channel.
    void Slide(const std::uint32_t* entering, const std::uint32_t* leaving, std::int32_t bins) {
        for (rows::OilHistogram& histogram : histograms_)
            for (std::uint32_t* const into : {histogram.count, histogram.sum}) {
                slideSums_(into, entering, leaving, bins);
                entering += bins;
                leaving += bins;
            }
    }

    // Also adds the neighbourhood's alpha to what was gathered before.
    void Paint(std::uint8_t* result) {
        for (int c = 0; c < kColours; ++c)
            result[c] = rows::MeanOfBin(histograms_[c], fullestBin_(histograms_[c], levels_));
        if constexpr (kHasAlpha) {
            rows::AddHistogram(oilSlots.alpha, histograms_[kColours], levels_);
            const rows::OilHistogram& blue = kIsColour ? histograms_[2] : oilSlots.blue;
            result[kColours] = rows::MeanOfBin(oilSlots.alpha, rows::FullestBinAgainst(oilSlots.alpha, blue, levels_));
        }
    }

    // Leaves blue as the last painted pixel had it; bins past `levels` keep what they held.
    void KeepBlue() const {
        if constexpr (kIsColour) {
            std::copy_n(histograms_[2].count, levels_, oilSlots.blue.count);
            std::copy_n(histograms_[2].sum, levels_, oilSlots.blue.sum);
        }
    }

  private:
    std::int32_t levels_;
    rows::FullestBinFunction* fullestBin_ = rows::kFullestBin.Chosen();
    rows::SlideSumsFunction* slideSums_ = rows::kSlideSums.Chosen();
    rows::OilHistogram histograms_[kChannels] = {};  // alpha's last; in the set's order
};

}  // namespace tqx
