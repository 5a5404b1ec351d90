// Scaling along columns in registers, for ScaleDown.cpp.
//
// The quotients of a sum by its weights' total cost nine cycles a register, more than all the rest
// of a short sum. Multiplying by the total's reciprocal misses the rounded quotient by less than
// three units in the last place. What the quotient is rounded to next, a single or a whole number,
// is then the same unless a boundary of that rounding is nearer than this. Those few are divided.

namespace rows::ROWS_LEVEL {

namespace {

#if ROWS_LEVEL_IS_AVX512

// The quotient, clamped to 0..255; not-a-number gives 0, minus zero stays.
inline __m512d Clamped(__m512d sum, __m512d total) {
    const __m512d quotient = _mm512_div_pd(sum, total);
    const __mmask8 known = _mm512_cmp_pd_mask(quotient, _mm512_setzero_pd(), _CMP_GE_OQ);
    return _mm512_min_pd(_mm512_maskz_mov_pd(known, quotient), _mm512_set1_pd(255));
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
inline __m512i FixedPoint(const Division& division, __m512d low, __m512d high) {
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
inline __mmask8 RoundsBelow(__m512d sum, __m256i whole, double total) {
    const __m512d k = _mm512_cvtepi32_pd(whole);
    const __m512i justBelow = _mm512_add_epi64(_mm512_castpd_si512(k), _mm512_set1_epi64(-1));
    const __m512i power = _mm512_and_si512(justBelow, _mm512_set1_epi64(std::int64_t{0x7FF} << 52));
    const __m512d halfUnit = _mm512_mul_pd(_mm512_castsi512_pd(power), _mm512_set1_pd(-0x1p-53 * total));
    const __m512d remainder = _mm512_fnmadd_pd(k, _mm512_set1_pd(total), sum);
    return _mm512_cmp_pd_mask(remainder, halfUnit, _CMP_LT_OQ);
}

// The bytes of 16 quotients given as whole numbers, those in `doubt` rounded up.
inline __m512i Resolved(__m512i whole, __mmask16 doubt, __m512d low, __m512d high, double total) {
    const unsigned below = RoundsBelow(low, _mm512_castsi512_si256(whole), total) |
                           RoundsBelow(high, _mm512_extracti64x4_epi64(whole, 1), total) << 8;
    return _mm512_mask_sub_epi32(whole, static_cast<__mmask16>(doubt & below), whole, _mm512_set1_epi32(1));
}

// 16 bytes from 16 sums.
inline __m128i FinishBytes(const Division& division, __m512d low, __m512d high) {
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
__m128i DivideBytes(const DownRow& output, __m512d low, __m512d high) {
    const __m256i first = _mm512_cvttpd_epi32(Clamped(low, _mm512_set1_pd(output.total)));
    const __m256i second = _mm512_cvttpd_epi32(Clamped(high, _mm512_set1_pd(output.total)));
    return _mm512_cvtepi32_epi8(_mm512_inserti64x4(_mm512_castsi256_si512(first), second, 1));
}

// One piece of one output.
inline void SumDownPiece(const DownRow& output, std::int64_t at) {
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

void SumDown(const DownRow* outputs, int count, std::int64_t values) {
    for (std::int64_t at = 0; at < values; at += kPiece)
        for (int i = 0; i < count; ++i) SumDownPiece(outputs[i], at);
}

#else

// The quotient, clamped to 0..255; not-a-number gives 0, minus zero stays.
inline __m256d Clamped(__m256d sum, __m256d total) {
    const __m256d quotient = _mm256_div_pd(sum, total);
    const __m256d least = _mm256_and_pd(quotient, _mm256_cmp_pd(quotient, _mm256_setzero_pd(), _CMP_GE_OQ));
    return _mm256_min_pd(least, _mm256_set1_pd(255));
}

// 16 values of one output.
inline void SumDownPart(const DownRow& output, std::int64_t at) {
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

void SumDown(const DownRow* outputs, int count, std::int64_t values) {
    for (std::int64_t at = 0; at < values; at += kPiece)
        for (int i = 0; i < count; ++i)
            for (int part = 0; part < kPiece; part += 16) SumDownPart(outputs[i], at + part);
}

#endif

}  // namespace

}  // namespace rows::ROWS_LEVEL
