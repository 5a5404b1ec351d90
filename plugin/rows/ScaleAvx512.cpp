// The quotients of a sum by its weights' total cost nine cycles a register, more than all the rest
// of a short sum. Multiplying by the total's reciprocal misses the rounded quotient by less than
// three units in the last place. What the quotient is rounded to next, a single or a whole number,
// is then the same unless a boundary of that rounding is nearer than this. Those few are divided.
#include "plugin/rows/ScaleForms.h"

#ifdef ROWS_X86

#include <bit>

#include "plugin/rows/ScaleTurns.h"

namespace rows {

namespace {

// The quotient, clamped to 0..255; not-a-number gives 0, minus zero stays.
TARGET_AVX512 inline __m512d Clamped(__m512d sum, __m512d total) {
    const __m512d quotient = _mm512_div_pd(sum, total);
    const __mmask8 known = _mm512_cmp_pd_mask(quotient, _mm512_setzero_pd(), _CMP_GE_OQ);
    return _mm512_min_pd(_mm512_maskz_mov_pd(known, quotient), _mm512_set1_pd(255));
}

// Lanes within four units of a tie between two singles: the 29 bits that a single lacks are
// then within four of one half.
TARGET_AVX512 inline __mmask8 NearTie(__m512d quotient) {
    const __m512i moved = _mm512_add_epi64(_mm512_castpd_si512(quotient), _mm512_set1_epi64(4 - (1 << 28)));
    return _mm512_testn_epi64_mask(moved, _mm512_set1_epi64((1 << 29) - 8));
}

// The values of one column from its sums.
template <int Values>
TARGET_AVX512 inline void FinishColumn(const Taps& taps, const __m512d* sum, float* values) {
    const __m512d reciprocal = _mm512_set1_pd(taps.reciprocal);
    __m512d quotient[Values];
    unsigned doubt = taps.reciprocal == 0;
#pragma GCC unroll 4
    for (int c = 0; c < Values; ++c) {
        quotient[c] = _mm512_mul_pd(sum[c], reciprocal);
        doubt |= NearTie(quotient[c]);
    }
    if (doubt) [[unlikely]]
#pragma GCC unroll 4
        for (int c = 0; c < Values; ++c) quotient[c] = Clamped(sum[c], _mm512_set1_pd(taps.total));
#pragma GCC unroll 4
    for (int c = 0; c < Values; ++c) {
        const __m256 single = _mm256_min_ps(_mm512_cvtpd_ps(quotient[c]), _mm256_set1_ps(255));
        _mm256_storeu_ps(values + c * kLanes, _mm256_max_ps(_mm256_setzero_ps(), single));
    }
}

template <int Values>
TARGET_AVX512 void SumAcross(const Taps* columns, std::int64_t count, const double* lanes, std::int64_t firstColumn,
                             float* sums) {
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

constexpr int kFractionBits = 21;

// Adding this puts q × 2^21 into the low half of a double, as a signed number. Quotients within
// ±1023 fit.
constexpr double kToFixedPoint = 1.5 * (std::int64_t{1} << (52 - kFractionBits));
constexpr double kFixedPointUnit = 0x1p-21;

// How quotients by a total become bytes.
struct Division {
    double total;
    double reciprocal;
    double shift;        // to fixed point
    __mmask16 mayDoubt;  // lanes whose quotients are estimates: all, or none
};

// Powers of two have exact reciprocals.
inline bool IsPowerOfTwo(double positive) {
    return (std::bit_cast<std::uint64_t>(positive) & ((std::uint64_t{1} << 52) - 1)) == 0;
}

// By a power of two, whose reciprocal is exact, the quotients in fixed point are rounded down and
// right. Others are estimates that get one unit more, so that a fraction of all ones and one of all
// zeros, between which the quotient may lie on either side, name the same whole number.
inline Division DivisionBy(const DownRow& output) {
    if (IsPowerOfTwo(output.total)) return {output.total, output.reciprocal, kToFixedPoint, 0};
    return {output.total, output.reciprocal, kToFixedPoint + kFixedPointUnit, 0xFFFF};
}

// 16 quotients in fixed point. Fused: the product is not a step of the sum.
TARGET_AVX512 inline __m512i FixedPoint(const Division& division, __m512d low, __m512d high) {
    constexpr int kDown = _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC;
    const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512d factor = _mm512_set1_pd(division.reciprocal), shift = _mm512_set1_pd(division.shift);
    const __m512d first = _mm512_fmadd_round_pd(low, factor, shift, kDown);
    const __m512d second = _mm512_fmadd_round_pd(high, factor, shift, kDown);
    return _mm512_permutex2var_epi32(_mm512_castpd_si512(first), even, _mm512_castpd_si512(second));
}

// Lanes whose quotient, nearly the whole number k above 0, rounds to less than k: it does if it lies
// more than half a unit below k, counted in units of the doubles there. The remainder that tells is
// exact, and so is half a unit times the total.
TARGET_AVX512 inline __mmask8 RoundsBelow(__m512d sum, __m256i whole, double total) {
    const __m512d k = _mm512_cvtepi32_pd(whole);
    const __m512i justBelow = _mm512_add_epi64(_mm512_castpd_si512(k), _mm512_set1_epi64(-1));
    const __m512i power = _mm512_and_si512(justBelow, _mm512_set1_epi64(std::int64_t{0x7FF} << 52));
    const __m512d halfUnit = _mm512_mul_pd(_mm512_castsi512_pd(power), _mm512_set1_pd(-0x1p-53 * total));
    const __m512d remainder = _mm512_fnmadd_pd(k, _mm512_set1_pd(total), sum);
    return _mm512_cmp_pd_mask(remainder, halfUnit, _CMP_LT_OQ);
}

// The bytes of 16 quotients given as whole numbers, those in `doubt` rounded up.
TARGET_AVX512 inline __m512i Resolved(__m512i whole, __mmask16 doubt, __m512d low, __m512d high, double total) {
    const unsigned below = RoundsBelow(low, _mm512_castsi512_si256(whole), total) |
                           RoundsBelow(high, _mm512_extracti64x4_epi64(whole, 1), total) << 8;
    return _mm512_mask_sub_epi32(whole, static_cast<__mmask16>(doubt & below), whole, _mm512_set1_epi32(1));
}

// 16 bytes from 16 sums.
TARGET_AVX512 inline __m128i FinishBytes(const Division& division, __m512d low, __m512d high) {
    const __m512i fixed = FixedPoint(division, low, high);
    __m512i whole = _mm512_srli_epi32(_mm512_max_epi32(fixed, _mm512_setzero_si512()), kFractionBits);
    // Around 0 the byte is 0 on either side.
    const __mmask16 notZero = _mm512_mask_test_epi32_mask(division.mayDoubt, whole, whole);
    const __mmask16 doubt = _mm512_mask_testn_epi32_mask(notZero, fixed, _mm512_set1_epi32((1 << kFractionBits) - 2));
    if (doubt) [[unlikely]]
        whole = Resolved(whole, doubt, low, high, division.total);
    return _mm512_cvtusepi32_epi8(whole);
}

// 16 bytes from 16 sums by division.
TARGET_AVX512 __m128i DivideBytes(const DownRow& output, __m512d low, __m512d high) {
    const __m256i first = _mm512_cvttpd_epi32(Clamped(low, _mm512_set1_pd(output.total)));
    const __m256i second = _mm512_cvttpd_epi32(Clamped(high, _mm512_set1_pd(output.total)));
    return _mm512_cvtepi32_epi8(_mm512_inserti64x4(_mm512_castsi256_si512(first), second, 1));
}

// One piece of one output.
TARGET_AVX512 inline void SumDownPiece(const DownRow& output, std::int64_t at) {
    constexpr int kRegisters = kPiece / 8;
    __m512d sum[kRegisters];
#pragma GCC unroll 8
    for (int i = 0; i < kRegisters; ++i)
        sum[i] = output.begins ? _mm512_setzero_pd() : _mm512_loadu_pd(output.carried + at + i * 8);
    for (int k = 0; k < output.count; ++k) {
        const __m512d weight = _mm512_set1_pd(output.weights[k]);
        const double* const values = output.rows[k] + at;
#pragma GCC unroll 8
        for (int i = 0; i < kRegisters; ++i)
            sum[i] = _mm512_add_pd(sum[i], _mm512_mul_pd(weight, _mm512_loadu_pd(values + i * 8)));
    }
    if (!output.ends) {
#pragma GCC unroll 8
        for (int i = 0; i < kRegisters; ++i) _mm512_storeu_pd(output.carried + at + i * 8, sum[i]);
        return;
    }
    auto* const bytes = reinterpret_cast<__m128i*>(output.bytes + at);
    const bool divide = output.reciprocal == 0;
    const Division division = DivisionBy(output);
#pragma GCC unroll 4
    for (int i = 0; i < kRegisters; i += 2)
        _mm_storeu_si128(bytes + i / 2,
                         divide ? DivideBytes(output, sum[i], sum[i + 1]) : FinishBytes(division, sum[i], sum[i + 1]));
}

TARGET_AVX512 inline __m512d Doubles(__m128i bytes) { return _mm512_cvtepi32_pd(_mm256_cvtepu8_epi32(bytes)); }

}  // namespace

TARGET_AVX512 void BytesToLanesAvx512(const std::uint8_t* band, std::int64_t stride, std::int64_t count,
                                      double* lanes) {
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

TARGET_AVX512 void SumAcrossAvx512(int values, const Taps* columns, std::int64_t count, const double* lanes,
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

TARGET_AVX512 void LanesToRowsAvx512(const float* sums, std::int64_t count, double* rows, std::int64_t stride) {
    for (std::int64_t v = 0; v < count; v += 8) {
        __m256 row[8];
        TurnFloats(sums + v * kLanes, row);
#pragma GCC unroll 8
        for (int r = 0; r < kLanes; ++r) _mm512_storeu_pd(rows + r * stride + v, _mm512_cvtps_pd(row[r]));
    }
}

TARGET_AVX512 void SumDownAvx512(const DownRow* outputs, int count, std::int64_t values) {
    for (std::int64_t at = 0; at < values; at += kPiece)
        for (int i = 0; i < count; ++i) SumDownPiece(outputs[i], at);
}

}  // namespace rows

#endif
