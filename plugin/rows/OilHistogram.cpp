// Searches for the fullest bin, and histograms that move by columns.
#include "plugin/rows/OilHistogram.h"

#include <algorithm>

#include "plugin/rows/LoopForms.h"

namespace rows {

namespace {

// The highest count, then the first bin that has it: loops that go by many bins at once.
struct FullestOf {
    ROWS_INLINE static std::int32_t Run(const OilHistogram& histogram, std::int32_t levels) {
        std::int32_t most = INT32_MIN;
        for (std::int32_t bin = 0; bin < levels; ++bin)
            most = std::max(most, static_cast<std::int32_t>(histogram.count[bin]));
        std::int32_t bin = 0;
        while (static_cast<std::int32_t>(histogram.count[bin]) != most) ++bin;
        return bin;
    }
};

struct SlidingCounts {
    ROWS_INLINE static std::int32_t Run(std::uint16_t* __restrict counts, const std::uint16_t* entering,
                                        const std::uint16_t* leaving, std::int32_t bins) {
        bins = bins / kBinsAtOnce * kBinsAtOnce;
        std::uint16_t most = 0;
        for (std::int32_t i = 0; i < bins; ++i) {
            const auto count = static_cast<std::uint16_t>(counts[i] + entering[i] - leaving[i]);
            counts[i] = count;
            most = most < count ? count : most;
        }
        return LowestBinOf(counts, most);
    }

    // By bins at once, which is quicker than by one where the compiler has wide registers.
    ROWS_INLINE static std::int32_t LowestBinOf(const std::uint16_t* counts, std::uint16_t count) {
        std::int32_t bin = 0;
        for (;; bin += kBinsAtOnce) {
            unsigned found = 0;
            for (std::int32_t i = 0; i < kBinsAtOnce; ++i) found |= counts[bin + i] == count;
            if (found) break;
        }
        while (counts[bin] != count) ++bin;
        return bin;
    }
};

struct SlidingSums {
    ROWS_INLINE static void Run(std::uint32_t* __restrict sums, const std::uint32_t* entering,
                                const std::uint32_t* leaving, std::int32_t bins) {
        bins = bins / kBinsAtOnce * kBinsAtOnce;
        for (std::int32_t i = 0; i < bins; ++i) sums[i] += entering[i] - leaving[i];
    }
};

}  // namespace

const Forms<SlideCountsFunction> kSlideCounts = LoopForms<SlidingCounts>::kTable;
const Forms<SlideSumsFunction> kSlideSums = LoopForms<SlidingSums>::kTable;
const Forms<FullestBinFunction> kFullestBin = LoopForms<FullestOf>::kTable;

void AddHistogram(OilHistogram& to, const OilHistogram& from, std::int32_t levels) {
    for (std::int32_t bin = 0; bin < levels; ++bin) to.count[bin] += from.count[bin];
    for (std::int32_t bin = 0; bin < levels; ++bin) to.sum[bin] += from.sum[bin];
}

std::int32_t FullestBinAgainst(const OilHistogram& histogram, const OilHistogram& against, std::int32_t levels) {
    std::int32_t best = 0;
    for (std::int32_t bin = 1; bin < levels; ++bin)
        if (static_cast<std::int32_t>(against.count[best]) < static_cast<std::int32_t>(histogram.count[bin]))
            best = bin;
    return best;
}

std::uint8_t MeanOfBin(const OilHistogram& histogram, std::int32_t bin) {
    const std::int64_t sum = static_cast<std::int32_t>(histogram.sum[bin]);
    const std::int64_t count = static_cast<std::int32_t>(histogram.count[bin]);
    return count == 0 ? 0 : static_cast<std::uint8_t>(sum / count);
}

}  // namespace rows
