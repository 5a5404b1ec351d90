#include "plugin/rows/FractionalBlur.h"

#include "plugin/rows/FractionalBlurForms.h"
#include "plugin/rows/LoopForms.h"

namespace rows {

namespace {

// Finding the whole form takes as long as blurring so many samples by doubles.
constexpr std::int64_t kSamplesWorthWholeTaps = 1 << 20;

ROWS_INLINE std::uint8_t Mixed(const ThreeTaps& taps, std::int32_t neighbours, std::int32_t sample) {
    const double value =
        taps.norm * __builtin_fma(taps.share, static_cast<double>(neighbours), static_cast<double>(sample));
    // At most 255; what isn't a number fails the comparison.
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(value > 0 ? value : 0));
}

struct Mixing {
    ROWS_INLINE static void Run(const ThreeTaps& given, const std::uint8_t* first, const std::uint8_t* row,
                                const std::uint8_t* second, std::int64_t count, std::uint8_t* __restrict result) {
        const ThreeTaps taps = given;
        for (std::int64_t i = 0; i < count; ++i) result[i] = Mixed(taps, first[i] + second[i], row[i]);
    }
};

void Mix(const ThreeTapsPlan& plan, const std::uint8_t* first, const std::uint8_t* row, const std::uint8_t* second,
         std::int64_t count, std::uint8_t* result) {
#ifdef ROWS_X86
    if (plan.whole) return MixAvx512(plan.wholeTaps, first, row, second, count, result);
#endif
    MixByDoubles(plan.taps, first, row, second, count, result);
}

}  // namespace

void MixByDoubles(const ThreeTaps& taps, const std::uint8_t* first, const std::uint8_t* row, const std::uint8_t* second,
                  std::int64_t count, std::uint8_t* result) {
    LoopOf<Mixing>()(taps, first, row, second, count, result);
}

ThreeTapsPlan PlanThreeTaps(const ThreeTaps& taps, std::int64_t samples) {
    ThreeTapsPlan plan{taps, false, {}};
#ifdef ROWS_X86
    if (ActiveCpuLevel() == CpuLevel::Avx512 && samples >= kSamplesWorthWholeTaps)
        plan.whole = FindWholeTaps(taps, &plan.wholeTaps);
#endif
    return plan;
}

void MixRows(const ThreeTapsPlan& plan, const std::uint8_t* above, const std::uint8_t* row, const std::uint8_t* below,
             std::int32_t count, std::uint8_t* result) {
    if (above && below) return Mix(plan, above, row, below, count, result);
    for (std::int32_t i = 0; i < count; ++i)
        result[i] = Mixed(plan.taps, (above ? above[i] : 0) + (below ? below[i] : 0), row[i]);
}

void MixAlongRow(const ThreeTapsPlan& plan, const std::uint8_t* row, int channels, std::int32_t width,
                 std::uint8_t* result) {
    const std::int64_t last = (std::int64_t{width} - 1) * channels;
    for (int i = 0; i < channels && width > 1; ++i) result[i] = Mixed(plan.taps, row[i] + row[i + channels], row[i]);
    if (last > channels) Mix(plan, row, row + channels, row + 2 * channels, last - channels, result + channels);
    for (std::int64_t i = last; i < last + channels; ++i) result[i] = Mixed(plan.taps, 2 * row[i], row[i]);
}

}  // namespace rows
