#include "plugin/rows/EngraveForms.h"

#ifdef ROWS_X86

namespace rows {

// With 128 taken off both, the difference of signed bytes is cut off at -128 and 127, which is
// where 0 and 255 are with 128 added.
TARGET_AVX512 void EngraveAvx512(const std::uint8_t* pixels, const std::uint8_t* others, std::int64_t count,
                                 std::uint8_t* result) {
    const __m512i middle = _mm512_set1_epi8(static_cast<char>(128));
    for (std::int64_t at = 0; at < count; at += 64) {
        const __mmask64 present = LowBits(count - at);
        const __m512i pixel = _mm512_xor_si512(_mm512_maskz_loadu_epi8(present, pixels + at), middle);
        const __m512i other = _mm512_xor_si512(_mm512_maskz_loadu_epi8(present, others + at), middle);
        const __m512i difference = _mm512_xor_si512(_mm512_subs_epi8(pixel, other), middle);
        _mm512_mask_storeu_epi8(result + at, present, difference);
    }
}

}  // namespace rows

#endif
