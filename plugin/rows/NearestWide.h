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

// Picks from the first columns on, sixteen at a time, as long as those lie close together; gives
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

#else

std::int32_t PickNearLanes(const PixelSpan&, const std::uint8_t*, std::int32_t, const std::int32_t*, std::int32_t,
                           std::uint8_t*) {
    return 0;
}

#endif

void PickPixels(const PixelSpan& span, const std::uint8_t* row, std::int32_t width, const std::int32_t* columns,
                std::int32_t count, std::uint8_t* picked) {
    const std::int32_t done = PickNearLanes(span, row, width, columns, count, picked);
    PickOneByOne(span, row, width, columns + done, count - done, picked + std::int64_t{done} * PickedPixelSize(span));
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
