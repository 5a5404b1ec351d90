#include "plugin/rows/HostPixelsForms.h"

#ifdef ROWS_X86

namespace rows {

namespace {

constexpr std::int32_t kStep = 4;  // pixels; sixteen bytes of host pixels

TARGET_AVX2 inline __m128i Load(const void* bytes) { return _mm_loadu_si128(static_cast<const __m128i*>(bytes)); }

TARGET_AVX2 inline void Store(void* bytes, __m128i value) { _mm_storeu_si128(static_cast<__m128i*>(bytes), value); }

// Bytes of 255 for the destination bytes that a step writes.
TARGET_AVX2 __m128i WrittenBytes(const MaskedPlan& plan) {
    const std::uint64_t bits = plan.written & LowBits(kStep * plan.layout.pixelSize);
    std::uint8_t bytes[16];
    for (int i = 0; i < 16; ++i) bytes[i] = bits >> i & 1 ? 255 : 0;
    return Load(bytes);
}

// How many pixels steps of sixteen bytes can work on: each must lie whole between the row's first
// and last written byte.
std::int32_t PixelsOfSteps(const MaskedPlan& plan, std::int32_t width) {
    const std::int64_t bytes = plan.span.Extent(width);
    const std::int64_t steps = bytes < 16 ? 0 : (bytes - 16) / (kStep * plan.layout.pixelSize) + 1;
    return static_cast<std::int32_t>(steps < width / kStep ? steps * kStep : width / kStep * kStep);
}

TARGET_AVX2 inline __m256i BlendWords(__m256i keep, __m256i destination, __m256i picture) {
    // keep × destination + (255 - keep) × picture, modulo 2^16: the sum is below it.
    const __m256i sum = _mm256_add_epi16(_mm256_mullo_epi16(keep, _mm256_sub_epi16(destination, picture)),
                                         _mm256_sub_epi16(_mm256_slli_epi16(picture, 8), picture));
    // Division by 255, exact for every 16-bit number.
    return _mm256_srli_epi16(_mm256_mulhi_epu16(sum, _mm256_set1_epi16(static_cast<short>(0x8081))), 7);
}

TARGET_AVX2 inline __m128i BlendBytes(__m128i keep, __m128i destination, __m128i picture) {
    const __m256i words =
        BlendWords(_mm256_cvtepu8_epi16(keep), _mm256_cvtepu8_epi16(destination), _mm256_cvtepu8_epi16(picture));
    return _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
}

}  // namespace

TARGET_AVX2 std::int32_t DrawMaskedAvx2(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                                        std::uint8_t* destination, std::int32_t width) {
    const __m128i index = Load(plan.index);
    const __m128i fromMask = _mm_cmpgt_epi8(index, _mm_set1_epi8(kFromMask - 1));
    const __m128i flip = Load(plan.maskFlip);
    const __m128i written = WrittenBytes(plan);
    const std::int32_t pixels = PixelsOfSteps(plan, width);
    for (std::int32_t x = 0; x < pixels; x += kStep) {
        const __m128i colors = _mm_shuffle_epi8(Load(picture), index);
        const __m128i alphas = mask ? _mm_shuffle_epi8(Load(mask), index) : _mm_set1_epi8(-1);
        const __m128i bytes = _mm_xor_si128(_mm_blendv_epi8(colors, alphas, fromMask), flip);
        Store(destination, _mm_blendv_epi8(Load(destination), bytes, written));
        picture += 16;
        if (mask) mask += 16;
        destination += kStep * plan.layout.pixelSize;
    }
    return pixels;
}

// The destination is brought into the order of host pixels, blended and brought back.
TARGET_AVX2 std::int32_t BlendMaskedAvx2(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                                         std::uint8_t* destination, std::int32_t width) {
    const __m128i index = Load(plan.index);
    const __m128i inverse = Load(plan.inverse);
    const __m128i flip = _mm_set1_epi8(static_cast<char>(plan.flip));
    const __m128i written = WrittenBytes(plan);
    const std::int32_t pixels = PixelsOfSteps(plan, width);
    for (std::int32_t x = 0; x < pixels; x += kStep) {
        const __m128i before = Load(destination);
        const __m128i keep = _mm_xor_si128(Load(mask), flip);
        const __m128i blended = BlendBytes(keep, _mm_shuffle_epi8(before, inverse), Load(picture));
        Store(destination, _mm_blendv_epi8(before, _mm_shuffle_epi8(blended, index), written));
        picture += 16;
        mask += 16;
        destination += kStep * plan.layout.pixelSize;
    }
    return pixels;
}

}  // namespace rows

#endif
