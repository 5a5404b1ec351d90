#include "rows/OilHistogram.h"

#include <algorithm>

#include "rows/CpuLevel.h"
#include "rows/X86.h"

namespace rows {

namespace {

std::int32_t FullestBinPlain(const OilHistogram& histogram, std::int32_t levels) {
    std::int32_t best = 0;
    for (std::int32_t bin = 1; bin < levels; ++bin)
        if (static_cast<std::int32_t>(histogram.count[best]) < static_cast<std::int32_t>(histogram.count[bin]))
            best = bin;
    return best;
}

#ifdef ROWS_X86
// The highest count first, then the first bin that has it. Lanes past `levels` don't count.
TARGET_AVX512 std::int32_t FullestBinAvx512(const OilHistogram& histogram, std::int32_t levels) {
    __m512i highest = _mm512_set1_epi32(INT32_MIN);
    for (std::int32_t bin = 0; bin < levels; bin += 16) {
        const auto lanes = static_cast<__mmask16>(LowBits(levels - bin));
        highest = _mm512_mask_max_epi32(highest, lanes, highest, _mm512_loadu_si512(histogram.count + bin));
    }
    alignas(64) std::int32_t lane[16];
    _mm512_store_si512(lane, highest);
    const __m512i wanted = _mm512_set1_epi32(*std::max_element(lane, lane + 16));
    for (std::int32_t bin = 0; bin < levels; bin += 16) {
        const auto lanes = static_cast<__mmask16>(LowBits(levels - bin));
        const __mmask16 found = _mm512_mask_cmpeq_epi32_mask(lanes, _mm512_loadu_si512(histogram.count + bin), wanted);
        if (found) return bin + __builtin_ctz(found);
    }
    return 0;
}
#endif

}  // namespace

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
