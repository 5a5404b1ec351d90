// Box sums plainly, with the multiplication that divides them.
#include "plugin/rows/BoxBlur.h"

#include <algorithm>

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

// Some sums at a time are made one after the other, and then divided side by side.
template <class Sum, class SumMean>
struct BlurringStretch {
    static constexpr std::int64_t kAtOnce = 768;  // bytes, whole pixels of 1 to 4

    template <int Channels>
    ROWS_INLINE static void RunOf(const WindowStretch& stretch, std::int32_t size, std::int32_t* sums) {
        const SumMean mean(size);
        Sum sum[Channels], before[kAtOnce];
        for (int c = 0; c < Channels; ++c) sum[c] = static_cast<Sum>(sums[c]);
        for (std::int64_t at = 0; at < stretch.count; at += kAtOnce) {
            const std::int64_t count = std::min(kAtOnce, stretch.count - at);
            const std::uint8_t* const entering = stretch.entering + at;
            const std::uint8_t* const leaving = stretch.leaving + at;
            for (std::int64_t i = 0; i < count; i += Channels)
                for (int c = 0; c < Channels; ++c) {
                    before[i + c] = sum[c];
                    sum[c] = static_cast<Sum>(sum[c] + entering[i + c] - leaving[i + c]);
                }
            std::uint8_t* const result = stretch.result + at;
            for (std::int64_t i = 0; i < count; ++i) result[i] = mean(before[i]);
        }
        for (int c = 0; c < Channels; ++c) sums[c] = sum[c];
    }

    ROWS_INLINE static void Run(const WindowStretch& stretch, int channels, std::int32_t size, std::int32_t* sums) {
        switch (channels) {
            case 1:
                return RunOf<1>(stretch, size, sums);
            case 2:
                return RunOf<2>(stretch, size, sums);
            case 3:
                return RunOf<3>(stretch, size, sums);
            default:
                return RunOf<4>(stretch, size, sums);
        }
    }
};

// A pixel `count` times over, to stand for those beyond an end.
struct RepeatedPixel {
    static constexpr std::int32_t kMost = 256;
    std::uint8_t bytes[kMost * 4];

    RepeatedPixel(const std::uint8_t* pixel, int channels, std::int32_t count) {
        for (std::int32_t i = 0; i < count; ++i) std::copy_n(pixel, channels, bytes + i * channels);
    }
};

using StretchFunction = void(const WindowStretch& stretch, int channels, std::int32_t size, std::int32_t* sums);

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/BoxBlurWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

using PlainWords = LoopForms<BlurringStretch<std::uint16_t, WordMean>>;
constexpr Forms<StretchFunction> kBlurWords = ROWS_FORMS(PlainWords::Plain, BlurWords);

const Forms<StretchFunction>& StretchFormsFor(std::int32_t size) {
    if (WordMeanServes(size)) return kBlurWords;
    if (size <= kLargestSingleMean) return LoopForms<BlurringStretch<std::int32_t, Mean<float>>>::kTable;
    return LoopForms<BlurringStretch<std::int32_t, Mean<double>>>::kTable;
}

}  // namespace

bool FitsWords(std::int32_t size) { return WordMeanServes(size); }

template <>
ColumnBlur<std::uint16_t> PlanColumnBlur(std::int32_t size) {
    return {size, LoopForms<Adding<std::uint16_t>>::kTable.Chosen(),
            LoopForms<Sliding<std::uint16_t, WordMean>>::kTable.Chosen()};
}

template <>
ColumnBlur<std::int32_t> PlanColumnBlur(std::int32_t size) {
    const auto& slide = size <= kLargestSingleMean ? LoopForms<Sliding<std::int32_t, Mean<float>>>::kTable
                                                   : LoopForms<Sliding<std::int32_t, Mean<double>>>::kTable;
    return {size, LoopForms<Adding<std::int32_t>>::kTable.Chosen(), slide.Chosen()};
}

template <class Sum>
void AddRow(const ColumnBlur<Sum>& blur, const std::uint8_t* row, std::int32_t times, std::int32_t count, Sum* sums) {
    blur.add(row, times, count, sums);
}

template <class Sum>
void SlideRow(const ColumnBlur<Sum>& blur, Sum* sums, const std::uint8_t* leaving, const std::uint8_t* entering,
              std::int32_t count, std::uint8_t* result) {
    if (!leaving || !entering) return SlideWithout(sums, blur.size, leaving, entering, count, result);
    blur.slide(sums, blur.size, leaving, entering, count, result);
}

template void AddRow(const ColumnBlur<std::int32_t>&, const std::uint8_t*, std::int32_t, std::int32_t, std::int32_t*);
template void AddRow(const ColumnBlur<std::uint16_t>&, const std::uint8_t*, std::int32_t, std::int32_t, std::uint16_t*);
template void SlideRow(const ColumnBlur<std::int32_t>&, std::int32_t*, const std::uint8_t*, const std::uint8_t*,
                       std::int32_t, std::uint8_t*);
template void SlideRow(const ColumnBlur<std::uint16_t>&, std::uint16_t*, const std::uint8_t*, const std::uint8_t*,
                       std::int32_t, std::uint8_t*);

RowBlur PlanRowBlur(std::int32_t radius) { return {radius, StretchFormsFor(2 * radius + 1).Chosen()}; }

void BlurRow(const RowBlur& blur, const std::uint8_t* row, int channels, std::int32_t width, std::uint8_t* result) {
    const std::int32_t radius = blur.radius;
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
        const WindowStretch stretch{leaves ? row + (x - radius) * channels : left.bytes,
                                    enters ? row + (x + radius + 1) * channels : right.bytes, (end - x) * channels,
                                    result + x * channels};
        blur.stretch(stretch, channels, 2 * radius + 1, sums);
        x = end;
    }
}

}  // namespace rows
