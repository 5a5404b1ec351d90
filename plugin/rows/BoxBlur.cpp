#include "plugin/rows/BoxBlur.h"

#include <algorithm>

#include "plugin/rows/BoxBlurForms.h"
#include "plugin/rows/LoopForms.h"
#include "plugin/rows/Mean.h"

namespace rows {

namespace {

template <class Sum>
struct Adding {
    ROWS_INLINE static void Run(const std::uint8_t* row, std::int32_t times, std::int32_t count, Sum* __restrict sums) {
        for (std::int32_t i = 0; i < count; ++i) sums[i] = static_cast<Sum>(sums[i] + times * row[i]);
    }
};

template <class Sum, class SumMean>
struct Sliding {
    ROWS_INLINE static void Run(Sum* __restrict sums, std::int32_t size, const std::uint8_t* leaving,
                                const std::uint8_t* entering, std::int32_t count, std::uint8_t* __restrict result) {
        const SumMean mean(size);
        for (std::int32_t i = 0; i < count; ++i) {
            result[i] = mean(sums[i]);
            sums[i] = static_cast<Sum>(sums[i] + entering[i] - leaving[i]);
        }
    }
};

// With rows that may be missing.
template <class Sum>
void SlideWithout(Sum* sums, std::int32_t size, const std::uint8_t* leaving, const std::uint8_t* entering,
                  std::int32_t count, std::uint8_t* result) {
    const Mean<double> mean(size);
    for (std::int32_t i = 0; i < count; ++i) {
        result[i] = mean(sums[i]);
        sums[i] = static_cast<Sum>(sums[i] + (entering ? entering[i] : 0) - (leaving ? leaving[i] : 0));
    }
}

// The definition of a stretch: a pixel after the other.
void BlurStretchPlain(const WindowStretch& stretch, int channels, std::int32_t size, std::int32_t* sums) {
    const Mean<double> mean(size);
    for (std::int64_t i = 0; i < stretch.count; i += channels)
        for (int channel = 0; channel < channels; ++channel) {
            stretch.result[i + channel] = mean(sums[channel]);
            sums[channel] += stretch.entering[i + channel] - stretch.leaving[i + channel];
        }
}

void BlurStretch(const WindowStretch& stretch, int channels, std::int32_t size, std::int32_t* sums) {
#ifdef ROWS_X86
    if (ActiveCpuLevel() == CpuLevel::Avx512) {
        if (WordMeanServes(size)) return BlurStretchWordsAvx512(stretch, channels, size, sums);
        if (size <= kLargestSingleMean) return BlurStretchAvx512(stretch, channels, size, sums);
    }
#endif
    BlurStretchPlain(stretch, channels, size, sums);
}

// A pixel `count` times over, to stand for those beyond an end.
struct RepeatedPixel {
    static constexpr std::int32_t kMost = 256;
    std::uint8_t bytes[kMost * 4];

    RepeatedPixel(const std::uint8_t* pixel, int channels, std::int32_t count) {
        for (std::int32_t i = 0; i < count; ++i) std::copy_n(pixel, channels, bytes + i * channels);
    }
};

}  // namespace

bool FitsWords(std::int32_t size) { return WordMeanServes(size); }

void AddRow(const std::uint8_t* row, std::int32_t times, std::int32_t count, std::int32_t* sums) {
    LoopOf<Adding<std::int32_t>>()(row, times, count, sums);
}

void AddRow(const std::uint8_t* row, std::int32_t times, std::int32_t count, std::uint16_t* sums) {
    LoopOf<Adding<std::uint16_t>>()(row, times, count, sums);
}

void SlideRow(std::int32_t* sums, std::int32_t size, const std::uint8_t* leaving, const std::uint8_t* entering,
              std::int32_t count, std::uint8_t* result) {
    if (!leaving || !entering) return SlideWithout(sums, size, leaving, entering, count, result);
    if (size <= kLargestSingleMean)
        LoopOf<Sliding<std::int32_t, Mean<float>>>()(sums, size, leaving, entering, count, result);
    else
        LoopOf<Sliding<std::int32_t, Mean<double>>>()(sums, size, leaving, entering, count, result);
}

void SlideRow(std::uint16_t* sums, std::int32_t size, const std::uint8_t* leaving, const std::uint8_t* entering,
              std::int32_t count, std::uint8_t* result) {
    if (!leaving || !entering) return SlideWithout(sums, size, leaving, entering, count, result);
    LoopOf<Sliding<std::uint16_t, WordMean>>()(sums, size, leaving, entering, count, result);
}

void BlurRow(const std::uint8_t* row, int channels, std::int32_t width, std::int32_t radius, std::uint8_t* result) {
    const std::uint8_t* const last = row + (std::int64_t{width} - 1) * channels;
    const std::int32_t inside = std::min(radius, width - 1);  // pixels right of the first that its window meets
    std::int32_t sums[4] = {};
    for (int channel = 0; channel < channels; ++channel) {
        sums[channel] = row[channel] * (radius + 1) + last[channel] * (radius - inside);
        for (std::int64_t x = 1; x <= inside; ++x) sums[channel] += row[x * channels + channel];
    }

    // Stretches in which each side is either within the row or beyond its end throughout.
    const std::int32_t repeated = std::min({RepeatedPixel::kMost, radius + 1, width});
    const RepeatedPixel left(row, channels, repeated), right(last, channels, repeated);
    const std::int64_t leavingBegins = std::int64_t{radius} + 1;         // before, the first pixel leaves
    const std::int64_t enteringEnds = std::int64_t{width} - 1 - radius;  // from here on the last one enters
    for (std::int64_t x = 0; x < width;) {
        const bool leaves = x >= leavingBegins, enters = x < enteringEnds;
        std::int64_t end = leaves ? width : std::min<std::int64_t>(leavingBegins, x + repeated);
        end = std::min(end, enters ? enteringEnds : x + repeated);
        end = std::min<std::int64_t>(end, width);
        BlurStretch(
            {leaves ? row + (x - radius) * channels : left.bytes,
             enters ? row + (x + radius + 1) * channels : right.bytes, (end - x) * channels, result + x * channels},
            channels, 2 * radius + 1, sums);
        x = end;
    }
}

}  // namespace rows
