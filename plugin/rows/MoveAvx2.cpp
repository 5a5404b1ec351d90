#include "plugin/rows/MoveForms.h"

#ifdef ROWS_X86

namespace rows {

namespace {

// Bytes of 255 where a bit is set.
void BytesOfBits(std::uint64_t bits, std::uint8_t (&bytes)[16]) {
    for (int i = 0; i < 16; ++i) bytes[i] = bits >> i & 1 ? 255 : 0;
}

}  // namespace

// Sixteen bytes are read and sixteen written at each step; those that are no moved byte are
// written as they were. So the last pixels, where fewer are left, are the caller's.
TARGET_AVX2 std::int32_t MoveAvx2(const MovePlan& plan, const std::uint8_t* source, std::uint8_t* destination,
                                  std::int32_t width, bool reversed) {
    const MoveShuffle& shuffle = plan.narrow;
    const std::int64_t fromSize = plan.moves.fromPixelSize, toSize = plan.moves.toPixelSize;
    const std::int64_t pixels = shuffle.pixels;
    const std::int64_t stepBytes = plan.from.Extent(shuffle.pixels);
    const std::int64_t sourceBytes = plan.from.Extent(width);
    const std::int64_t destinationBytes = plan.to.Extent(width);
    std::uint8_t blend[16];
    BytesOfBits(shuffle.written, blend);
    // In reverse the sixteen bytes end where the step's pixels end.
    const __m128i shift = _mm_set1_epi8(static_cast<char>(reversed ? 16 - stepBytes : 0));
    const __m128i order =
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(reversed ? shuffle.reversed : shuffle.index));
    const __m128i index = _mm_add_epi8(order, shift);
    const __m128i flip = _mm_loadu_si128(reinterpret_cast<const __m128i*>(shuffle.flip));
    const __m128i written = _mm_loadu_si128(reinterpret_cast<const __m128i*>(blend));
    std::int64_t from = reversed ? sourceBytes - 16 : 0;
    std::int64_t x = 0;
    for (; x + pixels <= width; x += pixels) {
        if (from < 0 || from + 16 > sourceBytes || x * toSize + 16 > destinationBytes) break;
        auto* const to = reinterpret_cast<__m128i*>(destination + x * toSize);
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + from));
        const __m128i moved = _mm_xor_si128(_mm_shuffle_epi8(bytes, index), flip);
        _mm_storeu_si128(to, _mm_blendv_epi8(_mm_loadu_si128(to), moved, written));
        from += reversed ? -pixels * fromSize : pixels * fromSize;
    }
    return static_cast<std::int32_t>(x);
}

}  // namespace rows

#endif
