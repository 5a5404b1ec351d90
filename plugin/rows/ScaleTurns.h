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

// 8 rows of 8 numbers, `stride` bytes apart, turned: register i of the result holds number i of each. Halves of
// rows that lie four apart are put together as they are loaded, which takes a shuffle less a register.
TURN_INLINE void TurnEight(const std::uint8_t* rows, std::int64_t stride, __m256* turned) {
#pragma GCC unroll 2
    for (int half = 0; half < 2; ++half) {
        __m256 both[4], pair[4];
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i) {
            const auto* const upper = reinterpret_cast<const float*>(rows + i * stride) + 4 * half;
            const auto* const lower = reinterpret_cast<const float*>(rows + (4 + i) * stride) + 4 * half;
            both[i] = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(upper)), _mm_loadu_ps(lower), 1);
        }
#pragma GCC unroll 2
        for (int i = 0; i < 2; ++i) {
            pair[2 * i] = _mm256_unpacklo_ps(both[2 * i], both[2 * i + 1]);
            pair[2 * i + 1] = _mm256_unpackhi_ps(both[2 * i], both[2 * i + 1]);
        }
#pragma GCC unroll 2
        for (int i = 0; i < 2; ++i) {
            turned[4 * half + 2 * i] = _mm256_shuffle_ps(pair[i], pair[2 + i], 0x44);
            turned[4 * half + 2 * i + 1] = _mm256_shuffle_ps(pair[i], pair[2 + i], 0xEE);
        }
    }
}

// 8 values of 8 lanes, `stride` floats from a value to the next: row[r] holds lane r of every value.
TURN_INLINE void TurnFloats(const float* lanes, std::int64_t stride, __m256* row) {
    TurnEight(reinterpret_cast<const std::uint8_t*>(lanes), stride * std::int64_t{sizeof(float)}, row);
}

// 32 bytes of 8 rows: turned[i] holds bytes 4i to 4i + 3 of every row.
TURN_INLINE void TurnFours(const std::uint8_t* band, std::int64_t stride, __m256i* turned) {
    __m256 fours[8];
    TurnEight(band, stride, fours);
#pragma GCC unroll 8
    for (int i = 0; i < 8; ++i) turned[i] = _mm256_castps_si256(fours[i]);
}

}  // namespace rows

#endif
