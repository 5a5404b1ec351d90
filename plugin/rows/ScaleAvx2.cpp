#include "plugin/rows/ScaleForms.h"

#ifdef ROWS_X86

#include "plugin/rows/ScaleTurns.h"

namespace rows {

namespace {

constexpr int kParts = 2;  // registers to the lanes of a band

TARGET_AVX2 inline __m256d Doubles(__m128i bytes) { return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(bytes)); }

// The quotient, clamped to 0..255; not-a-number gives 0, minus zero stays.
TARGET_AVX2 inline __m256d Clamped(__m256d sum, __m256d total) {
    const __m256d quotient = _mm256_div_pd(sum, total);
    const __m256d least = _mm256_and_pd(quotient, _mm256_cmp_pd(quotient, _mm256_setzero_pd(), _CMP_GE_OQ));
    return _mm256_min_pd(least, _mm256_set1_pd(255));
}

template <int Values>
TARGET_AVX2 void SumAcross(const Taps* columns, std::int64_t count, const double* lanes, std::int64_t firstColumn,
                           float* sums) {
    constexpr int kRegisters = Values * kParts;
    for (std::int64_t x = 0; x < count; ++x) {
        const Taps& taps = columns[x];
        const double* column = lanes + (taps.first - firstColumn) * Values * kLanes;
        __m256d sum[kRegisters];
#pragma GCC unroll 8
        for (int i = 0; i < kRegisters; ++i) sum[i] = _mm256_setzero_pd();
        for (std::int32_t k = 0; k < taps.count; ++k, column += Values * kLanes) {
            const __m256d weight = _mm256_set1_pd(taps.weights[k]);
#pragma GCC unroll 8
            for (int i = 0; i < kRegisters; ++i)
                sum[i] = _mm256_add_pd(sum[i], _mm256_mul_pd(weight, _mm256_loadu_pd(column + i * 4)));
        }
        const __m256d total = _mm256_set1_pd(taps.total);
#pragma GCC unroll 8
        for (int i = 0; i < kRegisters; ++i)
            _mm_storeu_ps(sums + (x * kRegisters + i) * 4, _mm256_cvtpd_ps(Clamped(sum[i], total)));
    }
}

// 16 values of one output.
TARGET_AVX2 inline void SumDownPart(const DownRow& output, std::int64_t at) {
    __m256d sum[4];
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i)
        sum[i] = output.begins ? _mm256_setzero_pd() : _mm256_loadu_pd(output.carried + at + i * 4);
    for (int k = 0; k < output.count; ++k) {
        const __m256d weight = _mm256_set1_pd(output.weights[k]);
        const double* const values = output.rows[k] + at;
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i)
            sum[i] = _mm256_add_pd(sum[i], _mm256_mul_pd(weight, _mm256_loadu_pd(values + i * 4)));
    }
    if (!output.ends) {
        for (int i = 0; i < 4; ++i) _mm256_storeu_pd(output.carried + at + i * 4, sum[i]);
        return;
    }
    const __m256d total = _mm256_set1_pd(output.total);
    __m128i whole[4];
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) whole[i] = _mm256_cvttpd_epi32(Clamped(sum[i], total));
    const __m128i low = _mm_packs_epi32(whole[0], whole[1]), high = _mm_packs_epi32(whole[2], whole[3]);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(output.bytes + at), _mm_packus_epi16(low, high));
}

}  // namespace

TARGET_AVX2 void BytesToLanesAvx2(const std::uint8_t* band, std::int64_t stride, std::int64_t count, double* lanes) {
    for (std::int64_t v = 0; v < count; v += 16) {
        __m128i turned[8];
        TurnBytes(band + v, stride, turned);
        const std::int64_t left = count - v;
        for (int i = 0; i < 16 && i < left; ++i) {
            const __m128i bytes = i % 2 == 0 ? turned[i / 2] : _mm_unpackhi_epi64(turned[i / 2], turned[i / 2]);
            _mm256_storeu_pd(lanes + (v + i) * kLanes, Doubles(bytes));
            _mm256_storeu_pd(lanes + (v + i) * kLanes + 4, Doubles(_mm_srli_si128(bytes, 4)));
        }
    }
}

TARGET_AVX2 void SumAcrossAvx2(int values, const Taps* columns, std::int64_t count, const double* lanes,
                               std::int64_t firstColumn, float* sums) {
    switch (values) {
        case 1:
            return SumAcross<1>(columns, count, lanes, firstColumn, sums);
        case 2:
            return SumAcross<2>(columns, count, lanes, firstColumn, sums);
        case 3:
            return SumAcross<3>(columns, count, lanes, firstColumn, sums);
        default:
            return SumAcross<4>(columns, count, lanes, firstColumn, sums);
    }
}

TARGET_AVX2 void LanesToRowsAvx2(const float* sums, std::int64_t count, double* rows, std::int64_t stride) {
    for (std::int64_t v = 0; v < count; v += 8) {
        __m256 row[8];
        TurnFloats(sums + v * kLanes, row);
#pragma GCC unroll 8
        for (int r = 0; r < kLanes; ++r) {
            double* const to = rows + r * stride + v;
            _mm256_storeu_pd(to, _mm256_cvtps_pd(_mm256_castps256_ps128(row[r])));
            _mm256_storeu_pd(to + 4, _mm256_cvtps_pd(_mm256_extractf128_ps(row[r], 1)));
        }
    }
}

TARGET_AVX2 void SumDownAvx2(const DownRow* outputs, int count, std::int64_t values) {
    for (std::int64_t at = 0; at < values; at += kPiece)
        for (int i = 0; i < count; ++i)
            for (int part = 0; part < kPiece; part += 16) SumDownPart(outputs[i], at + part);
}

}  // namespace rows

#endif
