#include "plugin/rows/MoveForms.h"

#ifdef ROWS_X86

namespace rows {

// Loads and stores under masks: nothing outside the moved bytes is touched, so the rest of a row
// that doesn't fill a step is one more step with shorter masks.
TARGET_AVX512 std::int32_t MoveAvx512(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination,
                                      std::int32_t width, bool reversed) {
    const MoveShuffle& shuffle = plan.wide;
    const std::int64_t fromSize = plan.moves.fromPixelSize, toSize = plan.moves.toPixelSize;
    const std::int64_t pixels = shuffle.pixels;
    const __m512i index = _mm512_loadu_si512(reversed ? shuffle.reversed : shuffle.index);
    const __m512i flip = _mm512_loadu_si512(shuffle.flip);
    const __mmask64 read = LowBits((pixels - 1) * fromSize + plan.from.size);
    const __mmask64 written = shuffle.written;
    const std::int64_t step = reversed ? -pixels * fromSize : pixels * fromSize;
    std::int64_t at = reversed ? (width - pixels) * fromSize : 0;
    std::int64_t left = width;
    for (; left >= pixels; left -= pixels) {
        const __m512i bytes = _mm512_maskz_permutexvar_epi8(written, index, _mm512_maskz_loadu_epi8(read, source + at));
        _mm512_mask_storeu_epi8(destination, written, _mm512_xor_si512(bytes, flip));
        at += step;
        destination += pixels * toSize;
    }
    if (left == 0) return width;
    // In reverse the rest lies at the row's start, and the shuffle looks too far right by what is
    // missing of a step.
    const __m512i missing = _mm512_set1_epi8(static_cast<char>(reversed ? (pixels - left) * fromSize : 0));
    const __mmask64 readLeft = LowBits((left - 1) * fromSize + plan.from.size);
    const __m512i rest = _mm512_maskz_loadu_epi8(readLeft, reversed ? source : source + at);
    const __m512i bytes = _mm512_maskz_permutexvar_epi8(written, _mm512_sub_epi8(index, missing), rest);
    _mm512_mask_storeu_epi8(destination, written & LowBits(left * toSize), _mm512_xor_si512(bytes, flip));
    return width;
}

}  // namespace rows

#endif
