// The registers of each wide level under the same names, so that one source serves both: in
// rows::avx2 and rows::avx512.
//
// Unpacking, packing and shuffling stay within lanes of 16 bytes at every level; what unpacking
// has split, packing brings together in the old order. A Mask has one truth a byte.
#pragma once

#include <cstdint>
#include <cstring>

#include "plugin/rows/X86.h"

#ifdef ROWS_AVX2

ROWS_BEGIN_AVX2
namespace rows::avx2 {

using Register = __m256i;
using Mask = __m256i;
inline constexpr int kBytes = 32;
inline constexpr int kLaneCount = 2;

ROWS_INLINE Register Load(const void* from) { return _mm256_loadu_si256(static_cast<const __m256i*>(from)); }
ROWS_INLINE void Store(void* to, Register value) { _mm256_storeu_si256(static_cast<__m256i*>(to), value); }
// To a multiple of the register's size, past the cache.
ROWS_INLINE void Stream(void* to, Register value) { _mm256_stream_si256(static_cast<__m256i*>(to), value); }
ROWS_INLINE __m128i LoadLane(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
ROWS_INLINE void StoreLane(void* to, __m128i value) { _mm_storeu_si128(static_cast<__m128i*>(to), value); }

// Lanes that lie `stride` bytes apart.
ROWS_INLINE Register LoadLanes(const std::uint8_t* from, std::int64_t stride) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadLane(from)), LoadLane(from + stride), 1);
}
ROWS_INLINE void StoreLanes(std::uint8_t* to, std::int64_t stride, Register value) {
    StoreLane(to, _mm256_castsi256_si128(value));
    StoreLane(to + stride, _mm256_extracti128_si256(value, 1));
}

// As many bytes as there are of `count`, the rest 0 or left alone.
ROWS_INLINE Register LoadPart(const std::uint8_t* from, std::int64_t count) {
    if (count >= kBytes) return Load(from);
    alignas(kBytes) std::uint8_t bytes[kBytes] = {};
    std::memcpy(bytes, from, static_cast<std::size_t>(count));
    return Load(bytes);
}
ROWS_INLINE void StorePart(std::uint8_t* to, Register value, std::int64_t count) {
    if (count >= kBytes) return Store(to, value);
    alignas(kBytes) std::uint8_t bytes[kBytes];
    Store(bytes, value);
    std::memcpy(to, bytes, static_cast<std::size_t>(count));
}

ROWS_INLINE Register Zero() { return _mm256_setzero_si256(); }
ROWS_INLINE Register Bytes(int value) { return _mm256_set1_epi8(static_cast<char>(value)); }
ROWS_INLINE Register Words(int value) { return _mm256_set1_epi16(static_cast<short>(value)); }
ROWS_INLINE Register Ints(std::int32_t value) { return _mm256_set1_epi32(value); }
ROWS_INLINE Register RepeatLane(const void* from) { return _mm256_broadcastsi128_si256(LoadLane(from)); }

ROWS_INLINE Register And(Register a, Register b) { return _mm256_and_si256(a, b); }
ROWS_INLINE Register Or(Register a, Register b) { return _mm256_or_si256(a, b); }
ROWS_INLINE Register Xor(Register a, Register b) { return _mm256_xor_si256(a, b); }

ROWS_INLINE Register AddBytes(Register a, Register b) { return _mm256_add_epi8(a, b); }
ROWS_INLINE Register SubBytes(Register a, Register b) { return _mm256_sub_epi8(a, b); }
ROWS_INLINE Register AddBytesCapped(Register a, Register b) { return _mm256_adds_epu8(a, b); }
ROWS_INLINE Register SubBytesCapped(Register a, Register b) { return _mm256_subs_epu8(a, b); }
ROWS_INLINE Register SubSignedBytesCapped(Register a, Register b) { return _mm256_subs_epi8(a, b); }
ROWS_INLINE Register MaxBytes(Register a, Register b) { return _mm256_max_epu8(a, b); }
ROWS_INLINE Register MinBytes(Register a, Register b) { return _mm256_min_epu8(a, b); }
ROWS_INLINE Register ShuffleBytes(Register a, Register index) { return _mm256_shuffle_epi8(a, index); }

ROWS_INLINE Register AddWords(Register a, Register b) { return _mm256_add_epi16(a, b); }
ROWS_INLINE Register SubWords(Register a, Register b) { return _mm256_sub_epi16(a, b); }
ROWS_INLINE Register AddWordsCapped(Register a, Register b) { return _mm256_adds_epu16(a, b); }
ROWS_INLINE Register EqualWords(Register a, Register b) { return _mm256_cmpeq_epi16(a, b); }
ROWS_INLINE Register MulWords(Register a, Register b) { return _mm256_mullo_epi16(a, b); }
ROWS_INLINE Register MulHighWords(Register a, Register b) { return _mm256_mulhi_epu16(a, b); }
ROWS_INLINE Register MulHighSignedWords(Register a, Register b) { return _mm256_mulhi_epi16(a, b); }
ROWS_INLINE Register MaxSignedWords(Register a, Register b) { return _mm256_max_epi16(a, b); }
template <int Bits>
ROWS_INLINE Register ShiftWordsUp(Register a) {
    return _mm256_slli_epi16(a, Bits);
}
template <int Bits>
ROWS_INLINE Register ShiftWordsDown(Register a) {
    return _mm256_srli_epi16(a, Bits);
}
ROWS_INLINE Register ShiftWordsDownBy(Register a, __m128i bits) { return _mm256_srl_epi16(a, bits); }
ROWS_INLINE Register ShiftWordsUpBy(Register a, __m128i bits) { return _mm256_sll_epi16(a, bits); }

ROWS_INLINE Register AddInts(Register a, Register b) { return _mm256_add_epi32(a, b); }
ROWS_INLINE Register SubInts(Register a, Register b) { return _mm256_sub_epi32(a, b); }
template <int Bits>
ROWS_INLINE Register ShiftIntsUp(Register a) {
    return _mm256_slli_epi32(a, Bits);
}
template <int Bits>
ROWS_INLINE Register ShiftIntsDown(Register a) {
    return _mm256_srli_epi32(a, Bits);
}
template <int Bits>
ROWS_INLINE Register ShiftSignedIntsDown(Register a) {
    return _mm256_srai_epi32(a, Bits);
}

// Sums of products of neighbours: bytes (b signed, the sums capped as signed words), and words.
ROWS_INLINE Register MulAddBytes(Register a, Register b) { return _mm256_maddubs_epi16(a, b); }
ROWS_INLINE Register MulAddWords(Register a, Register b) { return _mm256_madd_epi16(a, b); }

ROWS_INLINE Register UnpackLowBytes(Register a, Register b) { return _mm256_unpacklo_epi8(a, b); }
ROWS_INLINE Register UnpackHighBytes(Register a, Register b) { return _mm256_unpackhi_epi8(a, b); }
ROWS_INLINE Register UnpackLowWords(Register a, Register b) { return _mm256_unpacklo_epi16(a, b); }
ROWS_INLINE Register UnpackHighWords(Register a, Register b) { return _mm256_unpackhi_epi16(a, b); }
ROWS_INLINE Register PackWords(Register a, Register b) { return _mm256_packus_epi16(a, b); }
ROWS_INLINE Register PackInts(Register a, Register b) { return _mm256_packs_epi32(a, b); }

ROWS_INLINE Mask MaskOfBytes(Register bytes) { return bytes; }  // bytes of 0 or 255
ROWS_INLINE Mask Equal(Register a, Register b) { return _mm256_cmpeq_epi8(a, b); }
ROWS_INLINE Mask NotZero(Register a) { return _mm256_xor_si256(Equal(a, Zero()), Bytes(255)); }
ROWS_INLINE Mask Less(Register a, Register b) { return _mm256_xor_si256(Equal(MaxBytes(a, b), a), Bytes(255)); }
ROWS_INLINE Register Choose(Mask mask, Register where, Register elsewhere) {
    return _mm256_blendv_epi8(elsewhere, where, mask);
}
ROWS_INLINE bool AnySet(Register a, Register bits) { return !_mm256_testz_si256(a, bits); }

// Bytes as words, half a register of them; and back, capped at 255 (words are signed).
ROWS_INLINE Register LoadWords(const std::uint8_t* from) { return _mm256_cvtepu8_epi16(LoadLane(from)); }
ROWS_INLINE void StoreWords(std::uint8_t* to, Register words) {
    StoreLane(to, _mm256_castsi256_si128(_mm256_permute4x64_epi64(_mm256_packus_epi16(words, words), 0x08)));
}

// trunc(scale × int), clamped to 0..255 before it is truncated; not-a-number is 0.
ROWS_INLINE __m128i ScaledHalf(__m128i ints, __m256d scale) {
    const __m256d value = _mm256_mul_pd(_mm256_cvtepi32_pd(ints), scale);
    const __m256d positive = _mm256_max_pd(value, _mm256_setzero_pd());
    return _mm256_cvttpd_epi32(_mm256_min_pd(positive, _mm256_set1_pd(255)));
}
ROWS_INLINE Register ScaledInts(Register ints, double scale) {
    const __m256d factor = _mm256_set1_pd(scale);
    const __m128i low = ScaledHalf(_mm256_castsi256_si128(ints), factor);
    return _mm256_inserti128_si256(_mm256_castsi128_si256(low), ScaledHalf(_mm256_extracti128_si256(ints, 1), factor),
                                   1);
}

// Lanes moved up by some bytes, with zeros below; the sum of the lanes before each as words; and
// the last lane in all places.
template <int Count>
ROWS_INLINE Register ShiftLanesUp(Register a) {
    return _mm256_bslli_epi128(a, Count);
}
ROWS_INLINE Register SumOfLanesBefore(Register a) { return _mm256_permute2x128_si256(a, a, 0x08); }
ROWS_INLINE Register RepeatLastLane(Register a) { return _mm256_permute2x128_si256(a, a, 0x11); }

// Four ints of each lane, the first of all lanes first, then the second ones and so on.
ROWS_INLINE Register QuartersInOrder(Register a) {
    return _mm256_permutevar8x32_epi32(a, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}

}  // namespace rows::avx2
ROWS_END_LEVEL

#endif

#ifdef ROWS_AVX512

ROWS_BEGIN_AVX512
namespace rows::avx512 {

using Register = __m512i;
using Mask = __mmask64;
inline constexpr int kBytes = 64;
inline constexpr int kLaneCount = 4;

// A mask of the lowest `count` of 64 lanes; all of them from 64 on, none below 1.
ROWS_INLINE std::uint64_t LowBits(std::int64_t count) {
    if (count >= 64) return ~std::uint64_t{0};
    return count < 1 ? 0 : (std::uint64_t{1} << count) - 1;
}

ROWS_INLINE Register Load(const void* from) { return _mm512_loadu_si512(from); }
ROWS_INLINE void Store(void* to, Register value) { _mm512_storeu_si512(to, value); }
ROWS_INLINE void Stream(void* to, Register value) { _mm512_stream_si512(static_cast<__m512i*>(to), value); }
ROWS_INLINE __m128i LoadLane(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
ROWS_INLINE void StoreLane(void* to, __m128i value) { _mm_storeu_si128(static_cast<__m128i*>(to), value); }

ROWS_INLINE Register LoadLanes(const std::uint8_t* from, std::int64_t stride) {
    const __m256i low = _mm256_inserti128_si256(_mm256_castsi128_si256(LoadLane(from)), LoadLane(from + stride), 1);
    const __m256i high =
        _mm256_inserti128_si256(_mm256_castsi128_si256(LoadLane(from + 2 * stride)), LoadLane(from + 3 * stride), 1);
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
}
ROWS_INLINE void StoreLanes(std::uint8_t* to, std::int64_t stride, Register value) {
    StoreLane(to, _mm512_castsi512_si128(value));
    StoreLane(to + stride, _mm512_extracti32x4_epi32(value, 1));
    StoreLane(to + 2 * stride, _mm512_extracti32x4_epi32(value, 2));
    StoreLane(to + 3 * stride, _mm512_extracti32x4_epi32(value, 3));
}

ROWS_INLINE Register LoadPart(const std::uint8_t* from, std::int64_t count) {
    return _mm512_maskz_loadu_epi8(LowBits(count), from);
}
ROWS_INLINE void StorePart(std::uint8_t* to, Register value, std::int64_t count) {
    _mm512_mask_storeu_epi8(to, LowBits(count), value);
}

ROWS_INLINE Register Zero() { return _mm512_setzero_si512(); }
ROWS_INLINE Register Bytes(int value) { return _mm512_set1_epi8(static_cast<char>(value)); }
ROWS_INLINE Register Words(int value) { return _mm512_set1_epi16(static_cast<short>(value)); }
ROWS_INLINE Register Ints(std::int32_t value) { return _mm512_set1_epi32(value); }
ROWS_INLINE Register RepeatLane(const void* from) { return _mm512_broadcast_i32x4(LoadLane(from)); }

ROWS_INLINE Register And(Register a, Register b) { return _mm512_and_si512(a, b); }
ROWS_INLINE Register Or(Register a, Register b) { return _mm512_or_si512(a, b); }
ROWS_INLINE Register Xor(Register a, Register b) { return _mm512_xor_si512(a, b); }

ROWS_INLINE Register AddBytes(Register a, Register b) { return _mm512_add_epi8(a, b); }
ROWS_INLINE Register SubBytes(Register a, Register b) { return _mm512_sub_epi8(a, b); }
ROWS_INLINE Register AddBytesCapped(Register a, Register b) { return _mm512_adds_epu8(a, b); }
ROWS_INLINE Register SubBytesCapped(Register a, Register b) { return _mm512_subs_epu8(a, b); }
ROWS_INLINE Register SubSignedBytesCapped(Register a, Register b) { return _mm512_subs_epi8(a, b); }
ROWS_INLINE Register MaxBytes(Register a, Register b) { return _mm512_max_epu8(a, b); }
ROWS_INLINE Register MinBytes(Register a, Register b) { return _mm512_min_epu8(a, b); }
ROWS_INLINE Register ShuffleBytes(Register a, Register index) { return _mm512_shuffle_epi8(a, index); }

ROWS_INLINE Register AddWords(Register a, Register b) { return _mm512_add_epi16(a, b); }
ROWS_INLINE Register SubWords(Register a, Register b) { return _mm512_sub_epi16(a, b); }
ROWS_INLINE Register MulWords(Register a, Register b) { return _mm512_mullo_epi16(a, b); }
ROWS_INLINE Register MulHighWords(Register a, Register b) { return _mm512_mulhi_epu16(a, b); }
ROWS_INLINE Register MulHighSignedWords(Register a, Register b) { return _mm512_mulhi_epi16(a, b); }
ROWS_INLINE Register MaxSignedWords(Register a, Register b) { return _mm512_max_epi16(a, b); }
template <int Bits>
ROWS_INLINE Register ShiftWordsUp(Register a) {
    return _mm512_slli_epi16(a, Bits);
}
template <int Bits>
ROWS_INLINE Register ShiftWordsDown(Register a) {
    return _mm512_srli_epi16(a, Bits);
}
ROWS_INLINE Register ShiftWordsDownBy(Register a, __m128i bits) { return _mm512_srl_epi16(a, bits); }
ROWS_INLINE Register ShiftWordsUpBy(Register a, __m128i bits) { return _mm512_sll_epi16(a, bits); }

ROWS_INLINE Register AddInts(Register a, Register b) { return _mm512_add_epi32(a, b); }
ROWS_INLINE Register SubInts(Register a, Register b) { return _mm512_sub_epi32(a, b); }
template <int Bits>
ROWS_INLINE Register ShiftIntsUp(Register a) {
    return _mm512_slli_epi32(a, Bits);
}
template <int Bits>
ROWS_INLINE Register ShiftIntsDown(Register a) {
    return _mm512_srli_epi32(a, Bits);
}
template <int Bits>
ROWS_INLINE Register ShiftSignedIntsDown(Register a) {
    return _mm512_srai_epi32(a, Bits);
}

ROWS_INLINE Register MulAddBytes(Register a, Register b) { return _mm512_maddubs_epi16(a, b); }
ROWS_INLINE Register MulAddWords(Register a, Register b) { return _mm512_madd_epi16(a, b); }

ROWS_INLINE Register UnpackLowBytes(Register a, Register b) { return _mm512_unpacklo_epi8(a, b); }
ROWS_INLINE Register UnpackHighBytes(Register a, Register b) { return _mm512_unpackhi_epi8(a, b); }
ROWS_INLINE Register UnpackLowWords(Register a, Register b) { return _mm512_unpacklo_epi16(a, b); }
ROWS_INLINE Register UnpackHighWords(Register a, Register b) { return _mm512_unpackhi_epi16(a, b); }
ROWS_INLINE Register PackWords(Register a, Register b) { return _mm512_packus_epi16(a, b); }
ROWS_INLINE Register PackInts(Register a, Register b) { return _mm512_packs_epi32(a, b); }

ROWS_INLINE Mask MaskOfBytes(Register bytes) { return _mm512_movepi8_mask(bytes); }
ROWS_INLINE Mask Equal(Register a, Register b) { return _mm512_cmpeq_epi8_mask(a, b); }
ROWS_INLINE Mask NotZero(Register a) { return _mm512_test_epi8_mask(a, a); }
ROWS_INLINE Mask Less(Register a, Register b) { return _mm512_cmplt_epu8_mask(a, b); }
ROWS_INLINE Register Choose(Mask mask, Register where, Register elsewhere) {
    return _mm512_mask_blend_epi8(mask, elsewhere, where);
}
ROWS_INLINE bool AnySet(Register a, Register bits) { return _mm512_test_epi64_mask(a, bits) != 0; }

ROWS_INLINE Register LoadWords(const std::uint8_t* from) {
    return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
}
ROWS_INLINE void StoreWords(std::uint8_t* to, Register words) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm512_cvtusepi16_epi8(words));
}

ROWS_INLINE __m256i ScaledHalf(__m256i ints, __m512d scale) {
    const __m512d value = _mm512_mul_pd(_mm512_cvtepi32_pd(ints), scale);
    const __m512d positive = _mm512_max_pd(value, _mm512_setzero_pd());
    return _mm512_cvttpd_epi32(_mm512_min_pd(positive, _mm512_set1_pd(255)));
}
ROWS_INLINE Register ScaledInts(Register ints, double scale) {
    const __m512d factor = _mm512_set1_pd(scale);
    const __m256i low = ScaledHalf(_mm512_castsi512_si256(ints), factor);
    return _mm512_inserti64x4(_mm512_castsi256_si512(low), ScaledHalf(_mm512_extracti64x4_epi64(ints, 1), factor), 1);
}

template <int Count>
ROWS_INLINE Register ShiftLanesUp(Register a) {
    return _mm512_bslli_epi128(a, Count);
}
ROWS_INLINE Register SumOfLanesBefore(Register a) {
    const Register one = _mm512_maskz_shuffle_i64x2(0xFC, a, a, 0x90);  // the lane before
    const Register two = _mm512_maskz_shuffle_i64x2(0xF0, a, a, 0x40);  // the one before that
    const Register three = _mm512_maskz_shuffle_i64x2(0xC0, a, a, 0x00);
    return AddWords(AddWords(one, two), three);
}
ROWS_INLINE Register RepeatLastLane(Register a) { return _mm512_shuffle_i64x2(a, a, 0xFF); }

ROWS_INLINE Register QuartersInOrder(Register a) {
    return _mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), a);
}

}  // namespace rows::avx512
ROWS_END_LEVEL

#endif
