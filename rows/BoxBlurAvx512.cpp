#include "rows/BoxBlurForms.h"

#ifdef ROWS_X86

#include "rows/Mean.h"

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

}  // namespace rows

#endif
