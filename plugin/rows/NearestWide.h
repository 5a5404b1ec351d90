// Picking pixels in registers, for Nearest.cpp.

namespace rows::ROWS_LEVEL {

namespace {

#if ROWS_LEVEL_IS_AVX512

// Stores the lowest `Size` bytes of each lane side by side; of three, four.
template <int Size>
inline void StorePicks(__m512i lanes, __mmask16 present, std::uint8_t* to) {
    if constexpr (Size == 1)
        _mm_mask_storeu_epi8(to, present, _mm512_cvtepi32_epi8(lanes));
    else if constexpr (Size == 2)
        _mm256_mask_storeu_epi16(to, present, _mm512_cvtepi32_epi16(lanes));
    else
        _mm512_mask_storeu_epi32(to, present, lanes);
}

// A lane's bytes come out of two registers of the row by one permutation, which sees seven bits of
// an index: columns that lie further apart end the walk.
template <int Size>
std::int32_t PickLanes(const PixelSpan& span, const std::uint8_t* row, std::int32_t width, const std::int32_t* columns,
                       std::int32_t count, std::uint8_t* picked) {
    const std::int64_t end = span.Extent(width);
    const __m512i bytesOfPixel = _mm512_set1_epi32(span.pixelSize * 0x01010101);
    const __m512i byteOfLane = _mm512_set1_epi32(0x03020100);
    for (const auto [i, picks] : Blocks(count, 16)) {
        const std::int64_t at = std::int64_t{columns[i]} * span.pixelSize;
        if ((columns[i + picks - 1] - columns[i]) * std::int64_t{span.pixelSize} > 128 - 4) return i;
        const auto present = static_cast<__mmask16>(LowBits(picks));
        const __m512i column = _mm512_maskz_loadu_epi32(present, columns + i);
        const __m512i distance = _mm512_sub_epi32(column, _mm512_set1_epi32(columns[i]));
        const __m512i index = _mm512_add_epi32(_mm512_mullo_epi32(distance, bytesOfPixel), byteOfLane);
        const __m512i low = _mm512_maskz_loadu_epi8(LowBits(end - at), row + at);
        const __m512i high = _mm512_maskz_loadu_epi8(LowBits(end - at - 64), row + at + 64);
        StorePicks<Size>(_mm512_permutex2var_epi8(low, index, high), present,
                         picked + std::int64_t{i} * PickedPixelSize(span));
    }
    return count;
}

#else

alignas(16) constexpr std::uint8_t kLowBytes[2][16] = {{0, 4, 8, 12}, {0, 1, 4, 5, 8, 9, 12, 13}};

// Stores the lowest `Size` bytes of each int side by side; of three, four.
template <int Size>
ROWS_INLINE void StorePicks(Register ints, std::uint8_t* to) {
    if constexpr (Size == 4) {
        Store(to, ints);
    } else {
        alignas(kBytes) std::uint8_t bytes[kBytes];
        Store(bytes, ShuffleBytes(ints, RepeatLane(kLowBytes[Size - 1])));
        std::memcpy(to, bytes, 4 * Size);
        std::memcpy(to + 4 * Size, bytes + 16, 4 * Size);
    }
}

// Four picks come out of a lane by one shuffle: columns that lie further apart end the walk.
template <int Size>
std::int32_t PickLanes(const PixelSpan& span, const std::uint8_t* row, std::int32_t width, const std::int32_t* columns,
                       std::int32_t count, std::uint8_t* picked) {
    const std::int64_t size = span.pixelSize, end = span.Extent(width);
    const Register bytesOfPixel = Ints(span.pixelSize * 0x01010101), byteOfInt = Ints(0x03020100);
    std::int64_t i = 0;
    for (; i + 8 <= count; i += 8) {
        const std::int32_t first = columns[i], second = columns[i + 4];
        const bool near = (columns[i + 3] - first) * size <= 12 && (columns[i + 7] - second) * size <= 12;
        if (!near || second * size + 16 > end) break;
        const Register bases = _mm256_set_m128i(_mm_set1_epi32(second), _mm_set1_epi32(first));
        const Register distance = SubInts(Load(columns + i), bases);
        const Register index = AddInts(_mm256_mullo_epi32(distance, bytesOfPixel), byteOfInt);
        const Register bytes = LoadLanes(row + first * size, (second - first) * size);
        StorePicks<Size>(ShuffleBytes(bytes, index), picked + i * PickedPixelSize(span));
    }
    return static_cast<std::int32_t>(i);
}

#endif

// Picks from the first columns on, some at a time, as long as those lie close together; gives
// how many were picked.
std::int32_t PickNearLanes(const PixelSpan& span, const std::uint8_t* row, std::int32_t width,
                           const std::int32_t* columns, std::int32_t count, std::uint8_t* picked) {
    row += span.offset;
    switch (span.size) {
        case 1:
            return PickLanes<1>(span, row, width, columns, count, picked);
        case 2:
            return PickLanes<2>(span, row, width, columns, count, picked);
        default:
            return PickLanes<4>(span, row, width, columns, count, picked);
    }
}

void PickPixels(const PixelSpan& span, const std::uint8_t* row, std::int32_t width, const std::int32_t* columns,
                std::int32_t count, std::uint8_t* picked) {
    const std::int32_t done = PickNearLanes(span, row, width, columns, count, picked);
    PickOneByOne(span, row, width, columns + done, count - done, picked + std::int64_t{done} * PickedPixelSize(span));
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
