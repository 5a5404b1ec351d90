// Steps of picked pixels by shuffles, for PickSteps.cpp: a lane at AVX2, a register at AVX-512.

namespace rows::ROWS_LEVEL {

namespace {

#if ROWS_LEVEL_IS_AVX512

ROWS_INLINE void PickStep(const std::uint8_t* from, const std::uint8_t* index, std::uint8_t* picked) {
    Store(picked, _mm512_permutex2var_epi8(Load(from), Load(index), Load(from + kBytes)));
}

#else

// A shuffle gives 0 for an index of 128 or more.
ROWS_INLINE void PickStep(const std::uint8_t* from, const std::uint8_t* index, std::uint8_t* picked) {
    const __m128i at = LoadLane(index);
    const __m128i low = _mm_shuffle_epi8(LoadLane(from), _mm_adds_epu8(at, _mm_set1_epi8(0x70)));
    const __m128i high = _mm_shuffle_epi8(LoadLane(from + 16), _mm_sub_epi8(at, _mm_set1_epi8(16)));
    StoreLane(picked, _mm_or_si128(low, high));
}

#endif

void PickStepsOf(const PickedPixels& pixels, const std::uint8_t* row, std::uint8_t* picked) {
    constexpr std::int32_t kStep = ROWS_LEVEL_IS_AVX512 ? kBytes : 16;
    const std::int32_t advance = kStep / pixels.pixelSize * pixels.pixelSize;
    const std::uint8_t* index = pixels.index;
    for (std::int32_t step = 0; step < pixels.steps; ++step) {
        PickStep(row + pixels.from[step], index, picked);
        picked += advance;
        index += kStep;
    }
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
