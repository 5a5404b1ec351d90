#include "plugin/rows/BoxBlurForms.h"

#ifdef ROWS_X86

#include "plugin/rows/Mean.h"

namespace rows {

namespace {

// Lane i becomes lane i - Distance, the lowest lanes 0.
template <int Distance>
TARGET_AVX512 inline __m512i ShiftLanes(__m512i lanes) {
    return _mm512_maskz_alignr_epi32(static_cast<__mmask16>(0xFFFF << Distance), lanes, lanes, 16 - Distance);
}

// Running sums of sixteen lanes, each with those a multiple of Channels before it.
template <int Channels>
TARGET_AVX512 inline __m512i RunningSums(__m512i lanes) {
    lanes = _mm512_add_epi32(lanes, ShiftLanes<Channels>(lanes));
    lanes = _mm512_add_epi32(lanes, ShiftLanes<2 * Channels>(lanes));
    if constexpr (4 * Channels < 16) lanes = _mm512_add_epi32(lanes, ShiftLanes<4 * Channels>(lanes));
    if constexpr (8 * Channels < 16) lanes = _mm512_add_epi32(lanes, ShiftLanes<8 * Channels>(lanes));
    return lanes;
}

TARGET_AVX512 inline __m512i Samples(__mmask16 present, const std::uint8_t* bytes) {
    return _mm512_cvtepu8_epi32(_mm_maskz_loadu_epi8(present, bytes));
}

template <int Channels>
TARGET_AVX512 void BlurStretchOf(const WindowStretch& stretch, std::int32_t size, std::int32_t* sums) {
    alignas(64) std::int32_t lane[16];
    for (int i = 0; i < 16; ++i) lane[i] = 16 - Channels + i % Channels;
    const __m512i lastOfChannel = _mm512_load_si512(lane);
    for (int i = 0; i < 16; ++i) lane[i] = sums[i % Channels];
    __m512i before = _mm512_load_si512(lane);  // each lane's sum before this step
    const __m512 half = _mm512_set1_ps(0.5F), reciprocal = _mm512_set1_ps(1.0F / static_cast<float>(size));
    std::int64_t at = 0;
    for (; at < stretch.count; at += 16) {
        const auto present = static_cast<__mmask16>(LowBits(stretch.count - at) & 0xFFFF);
        const __m512i change =
            _mm512_sub_epi32(Samples(present, stretch.entering + at), Samples(present, stretch.leaving + at));
        const __m512i after = _mm512_add_epi32(before, RunningSums<Channels>(change));
        const __m512i sum = _mm512_sub_epi32(after, change);  // of this lane's window, before it moves on
        const __m512 mean = _mm512_mul_ps(_mm512_add_ps(_mm512_cvtepi32_ps(sum), half), reciprocal);
        _mm512_mask_cvtepi32_storeu_epi8(stretch.result + at, present, _mm512_cvttps_epi32(mean));
        before = _mm512_permutexvar_epi32(lastOfChannel, after);
    }
    // Lane 0 of what would be the next step belongs to channel `at` mod Channels.
    _mm512_store_si512(lane, before);
    for (int i = 0; i < Channels; ++i) sums[(at + i) % Channels] = lane[i];
}

// Lane i of 32 becomes lane i - Distance, the lowest lanes 0; added to what was there.
template <int Distance>
TARGET_AVX512 inline __m512i AddShiftedWords(__m512i words, __m512i lane) {
    if constexpr (Distance >= 32) return words;
    const __m512i from = _mm512_sub_epi16(lane, _mm512_set1_epi16(Distance));
    return _mm512_add_epi16(words, _mm512_maskz_permutexvar_epi16(~__mmask32{0} << Distance % 32, from, words));
}

TARGET_AVX512 inline __m512i WordSamples(__mmask32 present, const std::uint8_t* bytes) {
    return _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(present, bytes));
}

template <int Channels>
TARGET_AVX512 void BlurWordsOf(const WindowStretch& stretch, std::int32_t size, std::int32_t* sums) {
    alignas(64) std::uint16_t word[32];
    for (int i = 0; i < 32; ++i) word[i] = static_cast<std::uint16_t>(i);
    const __m512i lane = _mm512_load_si512(word);
    for (int i = 0; i < 32; ++i) word[i] = static_cast<std::uint16_t>(32 - Channels + i % Channels);
    const __m512i lastOfChannel = _mm512_load_si512(word);
    for (int i = 0; i < 32; ++i) word[i] = static_cast<std::uint16_t>(sums[i % Channels]);
    __m512i before = _mm512_load_si512(word);  // each lane's sum before this step
    const WordMean mean(size);
    const __m512i factor = _mm512_set1_epi16(static_cast<short>(mean.factor));
    const __m128i shift = _mm_cvtsi32_si128(mean.shift);
    std::int64_t at = 0;
    for (; at < stretch.count; at += 32) {
        const auto present = static_cast<__mmask32>(LowBits(stretch.count - at));
        const __m512i change =
            _mm512_sub_epi16(WordSamples(present, stretch.entering + at), WordSamples(present, stretch.leaving + at));
        __m512i changes = AddShiftedWords<Channels>(change, lane);
        changes = AddShiftedWords<2 * Channels>(changes, lane);
        changes = AddShiftedWords<4 * Channels>(changes, lane);
        changes = AddShiftedWords<8 * Channels>(changes, lane);
        changes = AddShiftedWords<16 * Channels>(changes, lane);
        const __m512i after = _mm512_add_epi16(before, changes);
        const __m512i sum = _mm512_sub_epi16(after, change);  // of this lane's window, before it moves on
        const __m512i quotient = _mm512_srl_epi16(_mm512_mulhi_epu16(sum, factor), shift);
        _mm256_mask_storeu_epi8(stretch.result + at, present, _mm512_cvtepi16_epi8(quotient));
        before = _mm512_permutexvar_epi16(lastOfChannel, after);
    }
    // Lane 0 of what would be the next step belongs to channel `at` mod Channels.
    _mm512_store_si512(word, before);
    for (int i = 0; i < Channels; ++i) sums[(at + i) % Channels] = word[i];
}

}  // namespace

TARGET_AVX512 void BlurStretchAvx512(const WindowStretch& stretch, int channels, std::int32_t size,
                                     std::int32_t* sums) {
    switch (channels) {
        case 1:
            return BlurStretchOf<1>(stretch, size, sums);
        case 2:
            return BlurStretchOf<2>(stretch, size, sums);
        case 3:
            return BlurStretchOf<3>(stretch, size, sums);
        default:
            return BlurStretchOf<4>(stretch, size, sums);
    }
}

TARGET_AVX512 void BlurStretchWordsAvx512(const WindowStretch& stretch, int channels, std::int32_t size,
                                          std::int32_t* sums) {
    switch (channels) {
        case 1:
            return BlurWordsOf<1>(stretch, size, sums);
        case 2:
            return BlurWordsOf<2>(stretch, size, sums);
        case 3:
            return BlurWordsOf<3>(stretch, size, sums);
        default:
            return BlurWordsOf<4>(stretch, size, sums);
    }
}

}  // namespace rows

#endif
