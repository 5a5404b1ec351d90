#include "plugin/rows/HostPixelsForms.h"

#ifdef ROWS_X86

namespace rows {

namespace {

constexpr std::int64_t kStep = 16;  // pixels; a register of host pixels

// The bytes of so many host pixels.
constexpr __mmask64 HostMask(std::int64_t pixels) { return LowBits(4 * pixels); }

// The destination bytes written for so many pixels.
std::uint64_t WrittenMask(const MaskedPlan& plan, std::int64_t pixels) {
    return plan.written & LowBits(pixels * plan.layout.pixelSize);
}

TARGET_AVX512 inline __m512i BlendWords(__m512i keep, __m512i destination, __m512i picture) {
    // keep × destination + (255 - keep) × picture, modulo 2^16: the sum is below it.
    const __m512i sum = _mm512_add_epi16(_mm512_mullo_epi16(keep, _mm512_sub_epi16(destination, picture)),
                                         _mm512_sub_epi16(_mm512_slli_epi16(picture, 8), picture));
    // Division by 255, exact for every 16-bit number.
    return _mm512_srli_epi16(_mm512_mulhi_epu16(sum, _mm512_set1_epi16(static_cast<short>(0x8081))), 7);
}

TARGET_AVX512 inline __m512i BlendBytes(__m512i keep, __m512i destination, __m512i picture) {
    const __m512i zero = _mm512_setzero_si512();
    const __m512i low = BlendWords(_mm512_unpacklo_epi8(keep, zero), _mm512_unpacklo_epi8(destination, zero),
                                   _mm512_unpacklo_epi8(picture, zero));
    const __m512i high = BlendWords(_mm512_unpackhi_epi8(keep, zero), _mm512_unpackhi_epi8(destination, zero),
                                    _mm512_unpackhi_epi8(picture, zero));
    return _mm512_packus_epi16(low, high);
}

}  // namespace

TARGET_AVX512 std::int32_t DrawMaskedAvx512(const MaskedPlan& plan, const std::uint8_t* picture,
                                            const std::uint8_t* mask, std::uint8_t* destination, std::int32_t width) {
    const __m512i index = _mm512_loadu_si512(plan.index);
    const __m512i flip = _mm512_loadu_si512(plan.maskFlip);
    for (std::int64_t left = width; left > 0; left -= kStep) {
        const __mmask64 read = HostMask(left);
        const __m512i colors = _mm512_maskz_loadu_epi8(read, picture);
        const __m512i alphas = mask ? _mm512_maskz_loadu_epi8(read, mask) : _mm512_set1_epi8(-1);
        const __m512i bytes = _mm512_xor_si512(_mm512_permutex2var_epi8(colors, index, alphas), flip);
        _mm512_mask_storeu_epi8(destination, WrittenMask(plan, left), bytes);
        picture += 64;
        if (mask) mask += 64;
        destination += kStep * plan.layout.pixelSize;
    }
    return width;
}

// The destination is brought into the order of host pixels, blended and brought back. Each step's
// destination is read before the step ahead of it is written: where steps don't fill a register,
// a read would wait for the store that it overlaps, bytes that the masks leave out included.
TARGET_AVX512 std::int32_t BlendMaskedAvx512(const MaskedPlan& plan, const std::uint8_t* picture,
                                             const std::uint8_t* mask, std::uint8_t* destination, std::int32_t width) {
    const __m512i index = _mm512_loadu_si512(plan.index);
    const __m512i inverse = _mm512_loadu_si512(plan.inverse);
    const __m512i flip = _mm512_set1_epi8(static_cast<char>(plan.flip));
    const std::int64_t step = kStep * plan.layout.pixelSize;
    __m512i before = _mm512_maskz_loadu_epi8(WrittenMask(plan, width), destination);
    for (std::int64_t left = width; left > 0; left -= kStep) {
        const __mmask64 read = HostMask(left);
        const __mmask64 written = WrittenMask(plan, left);
        const __m512i next = _mm512_maskz_loadu_epi8(WrittenMask(plan, left - kStep), destination + step);
        const __m512i colors = _mm512_maskz_loadu_epi8(read, picture);
        const __m512i keep = _mm512_xor_si512(_mm512_maskz_loadu_epi8(read, mask), flip);
        const __m512i blended = BlendBytes(keep, _mm512_maskz_permutexvar_epi8(read, inverse, before), colors);
        _mm512_mask_storeu_epi8(destination, written, _mm512_maskz_permutexvar_epi8(written, index, blended));
        before = next;
        picture += 64;
        mask += 64;
        destination += step;
    }
    return width;
}

}  // namespace rows

#endif
