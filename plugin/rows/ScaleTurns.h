// Turning 8 rows into lanes and back, for the wide forms of scaling. Needs AVX2.
#pragma once

#include <cstdint>

#include "plugin/rows/X86.h"

#ifdef ROWS_AVX2

namespace rows {

#define TURN_INLINE __attribute__((target("avx2"), always_inline)) inline

// 16 bytes of 8 rows: turned[i] holds byte 2i of every row, then byte 2i + 1.
TURN_INLINE void TurnLoaded(const __m128i* row, __m128i* turned) {
    __m128i pair[8], four[8];
    // Bytes of two rows side by side, then of four, then of eight; the first half of each array is
    // of the low bytes.
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
        pair[i] = _mm_unpacklo_epi8(row[2 * i], row[2 * i + 1]);
        pair[4 + i] = _mm_unpackhi_epi8(row[2 * i], row[2 * i + 1]);
    }
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
        four[2 * i] = _mm_unpacklo_epi16(pair[2 * i], pair[2 * i + 1]);
        four[2 * i + 1] = _mm_unpackhi_epi16(pair[2 * i], pair[2 * i + 1]);
    }
    // four[0..3]: bytes 0-3 of rows 0-3, 4-7 of rows 0-3, 0-3 of rows 4-7, 4-7 of rows 4-7.
#pragma GCC unroll 2
    for (int half = 0; half < 2; ++half)
#pragma GCC unroll 2
        for (int i = 0; i < 2; ++i) {
            const __m128i upper = four[4 * half + i], lower = four[4 * half + 2 + i];
            turned[4 * half + 2 * i] = _mm_unpacklo_epi32(upper, lower);
            turned[4 * half + 2 * i + 1] = _mm_unpackhi_epi32(upper, lower);
        }
}

TURN_INLINE void TurnBytes(const std::uint8_t* band, std::int64_t stride, __m128i* turned) {
    __m128i row[8];
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) row[r] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(band + r * stride));
    TurnLoaded(row, turned);
}

// 8 registers of 8 numbers, turned: register i of the result holds number i of each.
TURN_INLINE void TurnEight(__m256* numbers) {
    __m256 pair[8], four[8];
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
        pair[2 * i] = _mm256_unpacklo_ps(numbers[2 * i], numbers[2 * i + 1]);
        pair[2 * i + 1] = _mm256_unpackhi_ps(numbers[2 * i], numbers[2 * i + 1]);
    }
#pragma GCC unroll 2
    for (int i = 0; i < 2; ++i) {
        four[4 * i] = _mm256_shuffle_ps(pair[4 * i], pair[4 * i + 2], 0x44);
        four[4 * i + 1] = _mm256_shuffle_ps(pair[4 * i], pair[4 * i + 2], 0xEE);
        four[4 * i + 2] = _mm256_shuffle_ps(pair[4 * i + 1], pair[4 * i + 3], 0x44);
        four[4 * i + 3] = _mm256_shuffle_ps(pair[4 * i + 1], pair[4 * i + 3], 0xEE);
    }
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
        numbers[i] = _mm256_permute2f128_ps(four[i], four[4 + i], 0x20);
        numbers[4 + i] = _mm256_permute2f128_ps(four[i], four[4 + i], 0x31);
    }
}

// 8 values of 8 lanes, `stride` floats from a value to the next: row[r] holds lane r of every value.
TURN_INLINE void TurnFloats(const float* lanes, std::int64_t stride, __m256* row) {
#pragma GCC unroll 8
    for (int v = 0; v < 8; ++v) row[v] = _mm256_loadu_ps(lanes + v * stride);
    TurnEight(row);
}

// 32 bytes of 8 rows: turned[i] holds bytes 4i to 4i + 3 of every row.
TURN_INLINE void TurnFours(const std::uint8_t* band, std::int64_t stride, __m256i* turned) {
    __m256 row[8];
#pragma GCC unroll 8
    for (int r = 0; r < 8; ++r) row[r] = _mm256_loadu_ps(reinterpret_cast<const float*>(band + r * stride));
    TurnEight(row);
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) turned[i] = _mm256_castps_si256(row[i]);
}

}  // namespace rows

#endif
