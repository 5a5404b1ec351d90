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

// Rows of pixels of three or four bytes on their way into registers, a pixel to an int, and out. What the
// ints of three bytes have as their fourth is lost on the way out.
template <int Size>
struct IntPixels;

template <>
struct IntPixels<4> {
    using Pixel = std::uint32_t;
    ROWS_INLINE static Register Take(const std::uint8_t* from) { return Load(from); }
    ROWS_INLINE static void Give(std::uint8_t* to, Register pixels) { Store(to, pixels); }
};

template <>
struct IntPixels<3> {
    using Pixel = Triple;
#if ROWS_LEVEL_IS_AVX512
    static constexpr __mmask64 kRow = 0xFFFFFFFFFFFF;  // 16 pixels

    ROWS_INLINE static Register Take(const std::uint8_t* from) {
        const Register ints =
            _mm512_setr_epi32(0x020100, 0x050403, 0x080706, 0x0b0a09, 0x0e0d0c, 0x11100f, 0x141312, 0x171615, 0x1a1918,
                              0x1d1c1b, 0x201f1e, 0x232221, 0x262524, 0x292827, 0x2c2b2a, 0x2f2e2d);
        return _mm512_permutexvar_epi8(ints, _mm512_maskz_loadu_epi8(kRow, from));
    }
    ROWS_INLINE static void Give(std::uint8_t* to, Register pixels) {
        const Register triples =
            _mm512_setr_epi32(0x04020100, 0x09080605, 0x0e0d0c0a, 0x14121110, 0x19181615, 0x1e1d1c1a, 0x24222120,
                              0x29282625, 0x2e2d2c2a, 0x34323130, 0x39383635, 0x3e3d3c3a, 0, 0, 0, 0);
        _mm512_mask_storeu_epi8(to, kRow, _mm512_permutexvar_epi8(triples, pixels));
    }
#else
    // Four pixels to a lane; the second lane is loaded from 8 bytes on, where four more precede its own.
    ROWS_INLINE static Register Take(const std::uint8_t* from) {
        const Register ints = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1,  //
                                               4, 5, 6, -1, 7, 8, 9, -1, 10, 11, 12, -1, 13, 14, 15, -1);
        return ShuffleBytes(LoadLanes(from, 8), ints);
    }
    ROWS_INLINE static void Give(std::uint8_t* to, Register pixels) {
        const __m128i lane = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
        const Register parts = ShuffleBytes(pixels, _mm256_broadcastsi128_si256(lane));
        const Register triples = _mm256_permutevar8x32_epi32(parts, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
        StoreLane(to, _mm256_castsi256_si128(triples));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to + 16), _mm256_extracti128_si256(triples, 1));
    }
#endif
};

template <int Size>
struct IntSquare {
    using Pixels = IntPixels<Size>;
    using Pixel = typename Pixels::Pixel;
    static constexpr std::int32_t kSide = kBytes / 4;

    // In steps that each trade halves of ever larger parts between the rows: single pixels, pairs,
    // and then lanes.
    ROWS_INLINE static void Turn(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                                 std::int64_t destinationStride) {
#if ROWS_LEVEL_IS_AVX512
        __m512i row[16], pixels[16], pairs[16], fours[16];
        for (int i = 0; i < 16; ++i) row[i] = Pixels::Take(source + i * sourceStride);
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
        for (int i = 0; i < 16; ++i) Pixels::Give(destination + i * destinationStride, row[i]);
#else
        __m256i row[8], pixels[8], pairs[8];
#pragma GCC unroll 8
        for (int i = 0; i < 8; ++i) row[i] = Pixels::Take(source + i * sourceStride);
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
            const Register upper = _mm256_permute2x128_si256(pairs[c], pairs[c + 4], 0x20);
            const Register lower = _mm256_permute2x128_si256(pairs[c], pairs[c + 4], 0x31);
            Pixels::Give(destination + c * destinationStride, upper);
            Pixels::Give(destination + (c + 4) * destinationStride, lower);
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

void TransposeTriples(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                      std::int64_t destinationStride, std::int32_t width, std::int32_t height) {
    TransposeWith<IntSquare<3>>(source, sourceStride, destination, destinationStride, width, height);
}

void TransposeInts(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                   std::int64_t destinationStride, std::int32_t width, std::int32_t height) {
    TransposeWith<IntSquare<4>>(source, sourceStride, destination, destinationStride, width, height);
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
