// Scaling along rows in registers, for ScaleAcross.cpp.
//
// The quotients of a sum by its weights' total cost nine cycles a register, more than all the rest
// of a short sum. Multiplying by the total's reciprocal misses the rounded quotient by less than
// three units in the last place. What the quotient is rounded to next, a single or a whole number,
// is then the same unless a boundary of that rounding is nearer than this. Those few are divided.

namespace rows::ROWS_LEVEL {

namespace {

#if ROWS_LEVEL_IS_AVX512

inline __m512d Doubles(__m128i bytes) { return _mm512_cvtepi32_pd(_mm256_cvtepu8_epi32(bytes)); }

// The quotient, clamped to 0..255; not-a-number gives 0, minus zero stays.
inline __m512d Clamped(__m512d sum, __m512d total) {
    const __m512d quotient = _mm512_div_pd(sum, total);
    const __mmask8 known = _mm512_cmp_pd_mask(quotient, _mm512_setzero_pd(), _CMP_GE_OQ);
    return _mm512_min_pd(_mm512_maskz_mov_pd(known, quotient), _mm512_set1_pd(255));
}

// Lanes within four units of a tie between two singles: the 29 bits that a single lacks are
// then within four of one half.
inline __mmask8 NearTie(__m512d quotient) {
    const __m512i moved = _mm512_add_epi64(_mm512_castpd_si512(quotient), _mm512_set1_epi64(4 - (1 << 28)));
    return _mm512_testn_epi64_mask(moved, _mm512_set1_epi64((1 << 29) - 8));
}

// The values of one column from its sums.
template <int Values>
inline void FinishColumn(const Taps& taps, const __m512d* sum, float* values) {
    const __m512d reciprocal = _mm512_set1_pd(taps.reciprocal);
    __m512d quotient[Values];
    unsigned doubt = taps.reciprocal == 0;
#pragma GCC unroll 4
    for (int c = 0; c < Values; ++c) {
        quotient[c] = _mm512_mul_pd(sum[c], reciprocal);
        doubt |= NearTie(quotient[c]);
    }
    if (doubt) [[unlikely]] {
#pragma GCC unroll 4
        for (int c = 0; c < Values; ++c) quotient[c] = Clamped(sum[c], _mm512_set1_pd(taps.total));
    }
#pragma GCC unroll 4
    for (int c = 0; c < Values; ++c) {
        const __m256 single = _mm256_min_ps(_mm512_cvtpd_ps(quotient[c]), _mm256_set1_ps(255));
        _mm256_storeu_ps(values + c * kLanes, _mm256_max_ps(_mm256_setzero_ps(), single));
    }
}

template <int Values>
void SumAcross(const Taps* columns, std::int64_t count, const double* lanes, std::int64_t firstColumn, float* sums) {
    constexpr int kColumn = Values * kLanes;
    for (std::int64_t x = 0; x < count; ++x) {
        const Taps& taps = columns[x];
        const double* column = lanes + (taps.first - firstColumn) * kColumn;
        __m512d sum[Values];
#pragma GCC unroll 4
        for (int c = 0; c < Values; ++c) sum[c] = _mm512_setzero_pd();
        for (std::int32_t k = 0; k < taps.count; ++k, column += kColumn) {
            const __m512d weight = _mm512_set1_pd(taps.weights[k]);
#pragma GCC unroll 4
            for (int c = 0; c < Values; ++c)
                sum[c] = _mm512_add_pd(sum[c], _mm512_mul_pd(weight, _mm512_loadu_pd(column + c * kLanes)));
        }
        FinishColumn<Values>(taps, sum, sums + x * kColumn);
    }
}

void BytesToLanes(const std::uint8_t* band, std::int64_t stride, std::int64_t count, double* lanes) {
    for (std::int64_t v = 0; v < count; v += 16) {
        __m128i turned[8];
        TurnBytes(band + v, stride, turned);
        double* const to = lanes + v * kLanes;
#pragma GCC unroll 8
        for (int i = 0; i < 8; ++i) {
            _mm512_storeu_pd(to + 2 * i * kLanes, Doubles(turned[i]));
            _mm512_storeu_pd(to + (2 * i + 1) * kLanes, Doubles(_mm_unpackhi_epi64(turned[i], turned[i])));
        }
    }
}

void LanesToRows(const float* sums, std::int64_t count, double* rows, std::int64_t stride) {
    for (std::int64_t v = 0; v < count; v += 8) {
        __m256 row[8];
        TurnFloats(sums + v * kLanes, kLanes, row);
#pragma GCC unroll 8
        for (int r = 0; r < kLanes; ++r) _mm512_storeu_pd(rows + r * stride + v, _mm512_cvtps_pd(row[r]));
    }
}

#else

constexpr int kParts = 2;  // registers to the lanes of a band

inline __m256d Doubles(__m128i bytes) { return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(bytes)); }

// The quotient, clamped to 0..255; not-a-number gives 0, minus zero stays.
inline __m256d Clamped(__m256d sum, __m256d total) {
    const __m256d quotient = _mm256_div_pd(sum, total);
    const __m256d least = _mm256_and_pd(quotient, _mm256_cmp_pd(quotient, _mm256_setzero_pd(), _CMP_GE_OQ));
    return _mm256_min_pd(least, _mm256_set1_pd(255));
}

template <int Values>
void SumAcross(const Taps* columns, std::int64_t count, const double* lanes, std::int64_t firstColumn, float* sums) {
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

void BytesToLanes(const std::uint8_t* band, std::int64_t stride, std::int64_t count, double* lanes) {
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

void LanesToRows(const float* sums, std::int64_t count, double* rows, std::int64_t stride) {
    for (std::int64_t v = 0; v < count; v += 8) {
        __m256 row[8];
        TurnFloats(sums + v * kLanes, kLanes, row);
#pragma GCC unroll 8
        for (int r = 0; r < kLanes; ++r) {
            double* const to = rows + r * stride + v;
            _mm256_storeu_pd(to, _mm256_cvtps_pd(_mm256_castps256_ps128(row[r])));
            _mm256_storeu_pd(to + 4, _mm256_cvtps_pd(_mm256_extractf128_ps(row[r], 1)));
        }
    }
}

#endif

void SumAcross(int values, const Taps* columns, std::int64_t count, const double* lanes, std::int64_t firstColumn,
               float* sums) {
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

}  // namespace

}  // namespace rows::ROWS_LEVEL
