// Histograms for the oil filter: how many samples fall in each intensity bin, and their sum.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"

namespace rows {

// Counts and sums by bin; both wrap at 32 bits and are read as signed numbers.
struct OilHistogram {
    std::uint32_t count[256];
    std::uint32_t sum[256];
};

// Adds or takes away one sample. Bins are levels × value / 256, truncated; levels is 1 to 256.
inline void AddSample(OilHistogram& histogram, std::int32_t levels, std::uint8_t value) {
    const int bin = levels * value >> 8;
    ++histogram.count[bin];
    histogram.sum[bin] += value;
}

inline void RemoveSample(OilHistogram& histogram, std::int32_t levels, std::uint8_t value) {
    const int bin = levels * value >> 8;
    --histogram.count[bin];
    histogram.sum[bin] -= value;
}

// Adds the first `levels` bins of one histogram to those of another.
void AddHistogram(OilHistogram& to, const OilHistogram& from, std::int32_t levels);

// The bin with the highest count among the first `levels`; of equals the lowest.
using FullestBinFunction = std::int32_t(const OilHistogram& histogram, std::int32_t levels);
extern const Forms<FullestBinFunction> kFullestBin;

// The same search through `histogram`, but each count is compared with `against`'s count of the
// best bin so far.
std::int32_t FullestBinAgainst(const OilHistogram& histogram, const OilHistogram& against, std::int32_t levels);

// The bin's sum divided by its count, truncated, as its low byte; 0 for an empty bin.
std::uint8_t MeanOfBin(const OilHistogram& histogram, std::int32_t bin);

// Histograms that move by whole columns of samples, each with a histogram of its own. Bins are
// padded to a multiple of kBinsAtOnce with empty ones. Counts have 16 bits: at most 65,535 samples.
inline constexpr std::int32_t kBinsAtOnce = 32;

// counts[i] += entering[i] - leaving[i] for all `bins` bins. Gives the fullest bin; of equals the
// lowest.
using SlideCountsFunction = std::int32_t(std::uint16_t* counts, const std::uint16_t* entering,
                                         const std::uint16_t* leaving, std::int32_t bins);
extern const Forms<SlideCountsFunction> kSlideCounts;

// sums[i] += entering[i] - leaving[i].
using SlideSumsFunction = void(std::uint32_t* sums, const std::uint32_t* entering, const std::uint32_t* leaving,
                               std::int32_t bins);
extern const Forms<SlideSumsFunction> kSlideSums;

}  // namespace rows
