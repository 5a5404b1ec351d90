#include "plugin/rows/TransposeForms.h"

#ifdef ROWS_X86

namespace rows {

namespace {

// One square, in four steps that each trade halves of ever larger parts between the rows: single
// pixels, pairs, and twice groups of four. Its columns are whole cache lines where the destination
// is aligned.
TARGET_AVX512 void TransposeSquare(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                                   std::int64_t destinationStride) {
    __m512i row[16], pixels[16], pairs[16], fours[16];
    for (int i = 0; i < 16; ++i) row[i] = _mm512_loadu_si512(source + i * sourceStride);
    for (int i = 0; i < 16; i += 2) {
        pixels[i] = _mm512_unpacklo_epi32(row[i], row[i + 1]);
        pixels[i + 1] = _mm512_unpackhi_epi32(row[i], row[i + 1]);
    }
    // pairs[i + c] has column c of rows i .. i + 3 in each quarter, the quarters four columns apart.
    for (int i = 0; i < 16; i += 4) {
        pairs[i] = _mm512_unpacklo_epi64(pixels[i], pixels[i + 2]);
        pairs[i + 1] = _mm512_unpackhi_epi64(pixels[i], pixels[i + 2]);
        pairs[i + 2] = _mm512_unpacklo_epi64(pixels[i + 1], pixels[i + 3]);
        pairs[i + 3] = _mm512_unpackhi_epi64(pixels[i + 1], pixels[i + 3]);
    }
    for (int c = 0; c < 4; ++c)
        for (int i = 0; i < 16; i += 8) {
            fours[i + c] = _mm512_shuffle_i32x4(pairs[i + c], pairs[i + c + 4], 0x88);
            fours[i + c + 4] = _mm512_shuffle_i32x4(pairs[i + c], pairs[i + c + 4], 0xdd);
        }
    for (int c = 0; c < 8; ++c) {
        row[c] = _mm512_shuffle_i32x4(fours[c], fours[c + 8], 0x88);
        row[c + 8] = _mm512_shuffle_i32x4(fours[c], fours[c + 8], 0xdd);
    }
    for (int i = 0; i < 16; ++i) _mm512_storeu_si512(destination + i * destinationStride, row[i]);
}

}  // namespace

TARGET_AVX512 void TransposeSquaresAvx512(const std::uint8_t* source, std::int64_t sourceStride,
                                          std::uint8_t* destination, std::int64_t destinationStride,
                                          std::int32_t across, std::int32_t down) {
    for (std::int64_t x = 0; x < across; ++x)
        for (std::int64_t y = 0; y < down; ++y)
            TransposeSquare(source + y * kWideSquare * sourceStride + x * 64, sourceStride,
                            destination + x * kWideSquare * destinationStride + y * 64, destinationStride);
}

}  // namespace rows

#endif
