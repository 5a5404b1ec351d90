#include "plugin/rows/OilHistogram.h"

#include <algorithm>

#include "plugin/rows/CpuLevel.h"
#include "plugin/rows/LoopForms.h"
#include "plugin/rows/OilHistogramForms.h"

namespace rows {

namespace {

std::int32_t FullestBinPlain(const OilHistogram& histogram, std::int32_t levels) {
    std::int32_t best = 0;
    for (std::int32_t bin = 1; bin < levels; ++bin)
        if (static_cast<std::int32_t>(histogram.count[best]) < static_cast<std::int32_t>(histogram.count[bin]))
            best = bin;
    return best;
}

// The counts, and the highest of them.
struct SlidingCounts {
    ROWS_INLINE static void Run(std::uint16_t* __restrict counts, const std::uint16_t* entering,
                                const std::uint16_t* leaving, std::int32_t bins, std::uint16_t* __restrict highest) {
        bins = bins / kBinsAtOnce * kBinsAtOnce;
        std::uint16_t most = 0;
        for (std::int32_t i = 0; i < bins; ++i) {
            const auto count = static_cast<std::uint16_t>(counts[i] + entering[i] - leaving[i]);
            counts[i] = count;
            most = most < count ? count : most;
        }
        *highest = most;
    }
};

// By bins at once, which is quicker than by one where the compiler has wide registers.
std::int32_t LowestBinOf(const std::uint16_t* counts, std::uint16_t count) {
    std::int32_t bin = 0;
    for (;; bin += kBinsAtOnce) {
        unsigned found = 0;
        for (std::int32_t i = 0; i < kBinsAtOnce; ++i) found |= counts[bin + i] == count;
        if (found) break;
    }
    while (counts[bin] != count) ++bin;
    return bin;
}

struct SlidingSums {
    ROWS_INLINE static void Run(std::uint32_t* __restrict sums, const std::uint32_t* entering,
                                const std::uint32_t* leaving, std::int32_t bins) {
        bins = bins / kBinsAtOnce * kBinsAtOnce;
        for (std::int32_t i = 0; i < bins; ++i) sums[i] += entering[i] - leaving[i];
    }
};

}  // namespace

std::int32_t SlideCounts(std::uint16_t* counts, const std::uint16_t* entering, const std::uint16_t* leaving,
                         std::int32_t bins) {
#ifdef ROWS_X86
    if (ActiveCpuLevel() == CpuLevel::Avx512) return SlideCountsAvx512(counts, entering, leaving, bins);
#endif
    std::uint16_t highest;
    LoopOf<SlidingCounts>()(counts, entering, leaving, bins, &highest);
    return LowestBinOf(counts, highest);
}

void SlideSums(std::uint32_t* sums, const std::uint32_t* entering, const std::uint32_t* leaving, std::int32_t bins) {
    LoopOf<SlidingSums>()(sums, entering, leaving, bins);
}

void AddHistogram(OilHistogram& to, const OilHistogram& from, std::int32_t levels) {
    for (std::int32_t bin = 0; bin < levels; ++bin) to.count[bin] += from.count[bin];
    for (std::int32_t bin = 0; bin < levels; ++bin) to.sum[bin] += from.sum[bin];
}

std::int32_t FullestBin(const OilHistogram& histogram, std::int32_t levels) {
#ifdef ROWS_X86
    if (ActiveCpuLevel() == CpuLevel::Avx512) return FullestBinAvx512(histogram, levels);
#endif
    return FullestBinPlain(histogram, levels);
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
