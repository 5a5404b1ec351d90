#include <algorithm>

#include "plugin/rows/OilHistogramForms.h"

#ifdef ROWS_X86

namespace rows {

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

namespace {

TARGET_AVX512 inline __m512i MaxOfHalves(__m512i words) {
    return _mm512_max_epu16(words, _mm512_shuffle_i64x2(words, words, 0x4E));
}

// The highest of 32 words in all of them.
TARGET_AVX512 inline __m512i HighestWord(__m512i words) {
    words = MaxOfHalves(words);
    words = _mm512_max_epu16(words, _mm512_shuffle_i64x2(words, words, 0xB1));
    words = _mm512_max_epu16(words, _mm512_shuffle_epi32(words, _MM_PERM_BADC));
    // The lowest of eight words that are upside down.
    const __m128i turned = _mm_xor_si128(_mm512_castsi512_si128(words), _mm_set1_epi16(-1));
    return _mm512_xor_si512(_mm512_broadcastw_epi16(_mm_minpos_epu16(turned)), _mm512_set1_epi16(-1));
}

}  // namespace

TARGET_AVX512 std::int32_t SlideCountsAvx512(std::uint16_t* counts, const std::uint16_t* entering,
                                             const std::uint16_t* leaving, std::int32_t bins) {
    __m512i highest = _mm512_setzero_si512();
    for (std::int32_t bin = 0; bin < bins; bin += kBinsAtOnce) {
        const __m512i change = _mm512_sub_epi16(_mm512_loadu_si512(entering + bin), _mm512_loadu_si512(leaving + bin));
        const __m512i count = _mm512_add_epi16(_mm512_loadu_si512(counts + bin), change);
        _mm512_storeu_si512(counts + bin, count);
        highest = _mm512_max_epu16(highest, count);
    }
    highest = HighestWord(highest);
    for (std::int32_t bin = 0; bin < bins; bin += kBinsAtOnce) {
        const __mmask32 found = _mm512_cmpeq_epi16_mask(_mm512_loadu_si512(counts + bin), highest);
        if (found) return bin + __builtin_ctz(found);
    }
    return 0;
}

}  // namespace rows

#endif
