#include "plugin/rows/Gray.h"

#include <algorithm>

#include "plugin/rows/CpuLevel.h"
#include "plugin/rows/PixelSpan.h"
#include "plugin/rows/X86.h"

namespace rows {

namespace {

// The definition.
void GrayPlain(const PixelLayout& colour, const std::uint8_t* pixels, std::uint8_t* grays, std::int32_t width) {
    for (std::int64_t x = 0; x < width; ++x) {
        const std::uint8_t* const pixel = pixels + x * colour.pixelSize;
        grays[x] = Gray(pixel[colour.offset[0]], pixel[colour.offset[1]], pixel[colour.offset[2]]);
    }
}

#ifdef ROWS_X86

constexpr std::int32_t kStep = 32;  // pixels; their bytes fill at most two registers

// Picks one channel of the pixels of a step as 16-bit numbers; the index of byte pairs' upper
// halves is not used.
struct ChannelIndex {
    std::uint8_t index[64];
};

ChannelIndex IndexOf(std::int32_t pixelSize, std::int32_t offset) {
    ChannelIndex channel{};
    for (std::int32_t x = 0; x < kStep; ++x) channel.index[2 * x] = static_cast<std::uint8_t>(x * pixelSize + offset);
    return channel;
}

// 16 bits hold the weighted sum: at most 256 × 255.
TARGET_AVX512 void GrayAvx512(const PixelLayout& colour, const PixelSpan& span, const std::uint8_t* pixels,
                              std::uint8_t* grays, std::int32_t width) {
    constexpr __mmask64 kLowBytes = 0x5555555555555555;
    ChannelIndex channels[3];
    for (int c = 0; c < 3; ++c) channels[c] = IndexOf(colour.pixelSize, colour.offset[c] - span.offset);
    const __m512i redIndex = _mm512_loadu_si512(channels[0].index);
    const __m512i greenIndex = _mm512_loadu_si512(channels[1].index);
    const __m512i blueIndex = _mm512_loadu_si512(channels[2].index);
    const __m512i redWeight = _mm512_set1_epi16(77);
    const __m512i greenWeight = _mm512_set1_epi16(151);
    const __m512i blueWeight = _mm512_set1_epi16(28);
    pixels += span.offset;
    for (std::int64_t x = 0; x < width; x += kStep) {
        const auto count = static_cast<std::int32_t>(std::min<std::int64_t>(kStep, width - x));
        const std::int64_t bytes = span.Extent(count);
        const std::uint8_t* const from = pixels + x * colour.pixelSize;
        const __m512i low = _mm512_maskz_loadu_epi8(LowBits(bytes), from);
        const __m512i high = _mm512_maskz_loadu_epi8(LowBits(bytes - 64), from + (bytes > 64 ? 64 : 0));
        const __m512i red = _mm512_maskz_permutex2var_epi8(kLowBytes, low, redIndex, high);
        const __m512i green = _mm512_maskz_permutex2var_epi8(kLowBytes, low, greenIndex, high);
        const __m512i blue = _mm512_maskz_permutex2var_epi8(kLowBytes, low, blueIndex, high);
        const __m512i warm =
            _mm512_add_epi16(_mm512_mullo_epi16(red, redWeight), _mm512_mullo_epi16(green, greenWeight));
        const __m512i sum = _mm512_add_epi16(warm, _mm512_mullo_epi16(blue, blueWeight));
        const __m256i gray = _mm512_maskz_cvtepi16_epi8(~__mmask32{0}, _mm512_maskz_srli_epi16(~__mmask32{0}, sum, 8));
        _mm256_mask_storeu_epi8(grays + x, static_cast<__mmask32>(LowBits(count)), gray);
    }
}

#endif

}  // namespace

void GrayRow(const PixelLayout& colour, const std::uint8_t* pixels, std::uint8_t* grays, std::int32_t width) {
    if (width <= 0) return;
#ifdef ROWS_X86
    const PixelSpan span = SpanOf(colour.pixelSize, colour.offset, 3);
    if (span.IsCompact() && span.pixelSize <= 4 && ActiveCpuLevel() == CpuLevel::Avx512)
        return GrayAvx512(colour, span, pixels, grays, width);
#endif
    GrayPlain(colour, pixels, grays, width);
}

}  // namespace rows
