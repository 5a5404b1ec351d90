// Turning blocks by squares in registers, for Transpose.cpp.

namespace rows::ROWS_LEVEL {

namespace {

// Pixels of two rows by turns, of the first halves of lanes and of the second.
ROWS_INLINE __m128i LowPixels(std::uint8_t, __m128i a, __m128i b) { return _mm_unpacklo_epi8(a, b); }
ROWS_INLINE __m128i HighPixels(std::uint8_t, __m128i a, __m128i b) { return _mm_unpackhi_epi8(a, b); }
ROWS_INLINE __m128i LowPixels(std::uint16_t, __m128i a, __m128i b) { return _mm_unpacklo_epi16(a, b); }
ROWS_INLINE __m128i HighPixels(std::uint16_t, __m128i a, __m128i b) { return _mm_unpackhi_epi16(a, b); }

// A square of pixels whose rows are lanes. Trading rows i and i + side / 2, pixel by pixel, into rows
// 2 i and 2 i + 1 turns a square when it is done as often as the side has bits.
template <class PixelType>
struct LaneSquare {
    using Pixel = PixelType;
    static constexpr std::int32_t kSide = 16 / sizeof(Pixel);

    ROWS_INLINE static void Turn(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                                 std::int64_t destinationStride) {
        __m128i row[kSide], traded[kSide];
#pragma GCC unroll 16
        for (int i = 0; i < kSide; ++i) row[i] = LoadLane(source + i * sourceStride);
#pragma GCC unroll 4
        for (int side = 1; side < kSide; side *= 2) {
#pragma GCC unroll 8
            for (int i = 0; i < kSide / 2; ++i) {
                traded[2 * i] = LowPixels(Pixel{}, row[i], row[i + kSide / 2]);
                traded[2 * i + 1] = HighPixels(Pixel{}, row[i], row[i + kSide / 2]);
            }
#pragma GCC unroll 16
            for (int i = 0; i < kSide; ++i) row[i] = traded[i];
        }
#pragma GCC unroll 16
        for (int i = 0; i < kSide; ++i) StoreLane(destination + i * destinationStride, row[i]);
    }
};

struct IntSquare {
    using Pixel = std::uint32_t;
    static constexpr std::int32_t kSide = kBytes / 4;

    // In steps that each trade halves of ever larger parts between the rows: single pixels, pairs,
    // and then lanes.
    ROWS_INLINE static void Turn(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                                 std::int64_t destinationStride) {
#if ROWS_LEVEL_IS_AVX512
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
#else
        __m256i row[8], pixels[8], pairs[8];
#pragma GCC unroll 8
        for (int i = 0; i < 8; ++i) row[i] = Load(source + i * sourceStride);
#pragma GCC unroll 4
        for (int i = 0; i < 8; i += 2) {
            pixels[i] = _mm256_unpacklo_epi32(row[i], row[i + 1]);
            pixels[i + 1] = _mm256_unpackhi_epi32(row[i], row[i + 1]);
        }
        // pairs[i + c] has column c of rows i .. i + 3 in each lane, the lanes four columns apart.
#pragma GCC unroll 2
        for (int i = 0; i < 8; i += 4) {
            pairs[i] = _mm256_unpacklo_epi64(pixels[i], pixels[i + 2]);
            pairs[i + 1] = _mm256_unpackhi_epi64(pixels[i], pixels[i + 2]);
            pairs[i + 2] = _mm256_unpacklo_epi64(pixels[i + 1], pixels[i + 3]);
            pairs[i + 3] = _mm256_unpackhi_epi64(pixels[i + 1], pixels[i + 3]);
        }
#pragma GCC unroll 4
        for (int c = 0; c < 4; ++c) {
            Store(destination + c * destinationStride, _mm256_permute2x128_si256(pairs[c], pairs[c + 4], 0x20));
            Store(destination + (c + 4) * destinationStride, _mm256_permute2x128_si256(pairs[c], pairs[c + 4], 0x31));
        }
#endif
    }
};

// The columns on the right and the rows below that fill no square come after.
template <class Square>
void TransposeWith(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                   std::int64_t destinationStride, std::int32_t width, std::int32_t height) {
    constexpr std::int64_t kSize = sizeof(typename Square::Pixel);
    const std::int32_t across = width / Square::kSide * Square::kSide, down = height / Square::kSide * Square::kSide;
    for (std::int64_t x = 0; x < across; x += Square::kSide)
        for (std::int64_t y = 0; y < down; y += Square::kSide)
            Square::Turn(source + y * sourceStride + x * kSize, sourceStride,
                         destination + x * destinationStride + y * kSize, destinationStride);
    TransposeBySquares<typename Square::Pixel>(source + across * kSize, sourceStride,
                                               destination + across * destinationStride, destinationStride,
                                               width - across, height);
    TransposeBySquares<typename Square::Pixel>(source + down * sourceStride, sourceStride, destination + down * kSize,
                                               destinationStride, across, height - down);
}

void TransposeBytes(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                    std::int64_t destinationStride, std::int32_t width, std::int32_t height) {
    TransposeWith<LaneSquare<std::uint8_t>>(source, sourceStride, destination, destinationStride, width, height);
}

void TransposeWords(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                    std::int64_t destinationStride, std::int32_t width, std::int32_t height) {
    TransposeWith<LaneSquare<std::uint16_t>>(source, sourceStride, destination, destinationStride, width, height);
}

void TransposeInts(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                   std::int64_t destinationStride, std::int32_t width, std::int32_t height) {
    TransposeWith<IntSquare>(source, sourceStride, destination, destinationStride, width, height);
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
