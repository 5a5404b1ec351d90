#include "plugin/rows/ConvolveForms.h"

#ifdef ROWS_X86

#include <algorithm>

namespace rows {

namespace {

constexpr std::int64_t kStep = 32;  // bytes

// The weights of one column of the kernel, in pairs of rows as they are multiplied.
struct ColumnWeights {
    __m512i upper, middle, lower;
};

TARGET_AVX512 inline __m512i Pair(std::int32_t first, std::int32_t second) {
    return _mm512_set1_epi32(static_cast<std::int32_t>((static_cast<std::uint32_t>(second) << 16) |
                                                       (static_cast<std::uint32_t>(first) & 0xFFFF)));
}

TARGET_AVX512 inline ColumnWeights WeightsOfColumn(const Kernel& kernel, int column) {
    const auto weight = [&](int row) { return kernel.weight[5 * row + column]; };
    return {Pair(weight(0), weight(1)), Pair(weight(2), weight(3)), Pair(weight(4), 0)};
}

TARGET_AVX512 inline __m512i Words(const std::uint8_t* bytes) {
    return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)));
}

// Sums of 32 neighbouring bytes, in the order in which words of two rows interleave.
struct Sums {
    __m512i low, high;
};

TARGET_AVX512 inline void Accumulate(Sums& sums, __m512i upper, __m512i lower, __m512i weights) {
    sums.low = _mm512_add_epi32(sums.low, _mm512_madd_epi16(_mm512_unpacklo_epi16(upper, lower), weights));
    sums.high = _mm512_add_epi32(sums.high, _mm512_madd_epi16(_mm512_unpackhi_epi16(upper, lower), weights));
}

// trunc(scale × sum), clamped to 0..255 before it is truncated; not-a-number is 0.
TARGET_AVX512 inline __m256i ScaledHalf(__m256i sums, __m512d scale) {
    const __m512d value = _mm512_mul_pd(_mm512_cvtepi32_pd(sums), scale);
    const __m512d positive = _mm512_max_pd(value, _mm512_setzero_pd());
    return _mm512_cvttpd_epi32(_mm512_min_pd(positive, _mm512_set1_pd(255)));
}

TARGET_AVX512 inline __m512i ScaledSums(__m512i sums, __m512d scale) {
    const __m256i low = ScaledHalf(_mm512_castsi512_si256(sums), scale);
    const __m256i high = ScaledHalf(_mm512_extracti64x4_epi64(sums, 1), scale);
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}

template <bool Scales>
TARGET_AVX512 void Convolve(const Kernel& kernel, const KernelRows& rows, std::int64_t at, std::int64_t count,
                            std::uint8_t* result) {
    ColumnWeights weights[5];
    for (int column = 0; column < 5; ++column) weights[column] = WeightsOfColumn(kernel, column);
    const __m512d scale = _mm512_set1_pd(kernel.scale);
    const __m512i delta = _mm512_set1_epi32(kernel.delta);
    for (std::int64_t i = 0; i < count; i += kStep) {
        i = std::min(i, count - kStep);  // the last step repeats a part of the one before
        Sums sums{delta, delta};
        for (int column = 0; column < 5; ++column) {
            const std::int64_t from = at + i + (column - 2) * rows.channels;
            Accumulate(sums, Words(rows.row[0] + from), Words(rows.row[1] + from), weights[column].upper);
            Accumulate(sums, Words(rows.row[2] + from), Words(rows.row[3] + from), weights[column].middle);
            Accumulate(sums, Words(rows.row[4] + from), _mm512_setzero_si512(), weights[column].lower);
        }
        if constexpr (Scales) sums = {ScaledSums(sums.low, scale), ScaledSums(sums.high, scale)};
        // Packing undoes the interleaving.
        const __m512i words = _mm512_max_epi16(_mm512_packs_epi32(sums.low, sums.high), _mm512_setzero_si512());
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(result + i), _mm512_cvtusepi16_epi8(words));
    }
}

}  // namespace

TARGET_AVX512 void ConvolveAvx512(const Kernel& kernel, const KernelRows& rows, std::int64_t at, std::int64_t count,
                                  std::uint8_t* result) {
    if (kernel.scale == 1)
        Convolve<false>(kernel, rows, at, count, result);
    else
        Convolve<true>(kernel, rows, at, count, result);
}

}  // namespace rows

#endif
