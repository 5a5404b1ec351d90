// Luminances in registers of doubles, for Luminance.cpp.

namespace rows::ROWS_LEVEL {

namespace {

#if ROWS_LEVEL_IS_AVX512

using Doubles = __m512d;
using Ints = __m256i;

ROWS_INLINE Ints LoadPixels(const std::uint8_t* pixels, std::int64_t lane) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadLane(pixels)), LoadLane(pixels + lane), 1);
}
ROWS_INLINE Doubles ChannelOf(Ints pixels, const std::uint8_t* index) {
    return _mm512_cvtepi32_pd(_mm256_shuffle_epi8(pixels, _mm256_broadcastsi128_si256(LoadLane(index))));
}
ROWS_INLINE void StoreLuminances(Doubles red, Doubles green, Doubles blue, std::int32_t* to) {
    const Doubles warm = _mm512_fmadd_pd(red, _mm512_set1_pd(0.177), _mm512_mul_pd(green, _mm512_set1_pd(0.813)));
    _mm256_storeu_si256(reinterpret_cast<Ints*>(to),
                        _mm512_cvttpd_epi32(_mm512_fmadd_pd(blue, _mm512_set1_pd(0.01), warm)));
}

#else

using Doubles = __m256d;
using Ints = __m128i;

ROWS_INLINE Ints LoadPixels(const std::uint8_t* pixels, std::int64_t) { return LoadLane(pixels); }
ROWS_INLINE Doubles ChannelOf(Ints pixels, const std::uint8_t* index) {
    return _mm256_cvtepi32_pd(_mm_shuffle_epi8(pixels, LoadLane(index)));
}
ROWS_INLINE void StoreLuminances(Doubles red, Doubles green, Doubles blue, std::int32_t* to) {
    const Doubles warm = _mm256_fmadd_pd(red, _mm256_set1_pd(0.177), _mm256_mul_pd(green, _mm256_set1_pd(0.813)));
    StoreLane(to, _mm256_cvttpd_epi32(_mm256_fmadd_pd(blue, _mm256_set1_pd(0.01), warm)));
}

#endif

constexpr std::int32_t kPixels = sizeof(Doubles) / sizeof(double);

// The bytes of one channel of four pixels as ints.
struct ChannelIndex {
    alignas(16) std::uint8_t index[16];

    explicit ChannelIndex(std::int32_t pixelSize, std::int32_t offset) {
        std::fill_n(index, 16, std::uint8_t{128});
        for (int pixel = 0; pixel < 4; ++pixel)
            index[4 * pixel] = static_cast<std::uint8_t>(pixel * pixelSize + offset);
    }
};

// Gives how many of `count` pixels it did: those whose lanes end before `bytes` bytes do.
std::int32_t LuminancesOf(const PixelLayout& layout, const PixelSpan& span, const std::uint8_t* row, std::int32_t count,
                          std::int64_t bytes, std::int32_t* luminance) {
    const std::int64_t size = layout.pixelSize, lane = 4 * size;
    const ChannelIndex red(layout.pixelSize, layout.offset[0] - span.offset);
    const ChannelIndex green(layout.pixelSize, layout.offset[1] - span.offset);
    const ChannelIndex blue(layout.pixelSize, layout.offset[2] - span.offset);
    std::int32_t x = 0;
    for (; x + kPixels <= count && (x + kPixels - 4) * size + 16 <= bytes; x += kPixels) {
        const Ints pixels = LoadPixels(row + span.offset + x * size, lane);
        StoreLuminances(ChannelOf(pixels, red.index), ChannelOf(pixels, green.index), ChannelOf(pixels, blue.index),
                        luminance + x);
    }
    return x;
}

void CountLuminance(const PixelLayout& layout, const std::uint8_t* row, std::int32_t width, Histogram* histogram) {
    const PixelSpan span = SpanOf(layout.pixelSize, layout.offset, 3);
    const bool compact = span.IsCompact() && span.pixelSize <= 4;
    ManyCounts counts;
    std::int32_t luminance[kPixelsATime];
    for (const auto [x, count] : Blocks(width, kPixelsATime)) {
        const std::uint8_t* const pixels = row + std::int64_t{x} * layout.pixelSize;
        const std::int32_t done =
            compact ? LuminancesOf(layout, span, pixels, count, span.Extent(width - x), luminance) : 0;
        for (std::int32_t i = done; i < count; ++i)
            luminance[i] = LuminanceOf(layout, pixels + std::int64_t{i} * layout.pixelSize);
        counts.Add(luminance, count);
    }
    counts.AddTo(histogram);
}

}  // namespace

}  // namespace rows::ROWS_LEVEL
