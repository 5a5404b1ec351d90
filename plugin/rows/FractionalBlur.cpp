// Three-tap averages in doubles, and whole numbers where they are shown to give the same.
#include "plugin/rows/FractionalBlur.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "plugin/rows/LoopForms.h"
#include "plugin/rows/TableRegisters.h"

namespace rows {

namespace {

// Finding the whole form takes as long as blurring so many samples by doubles.
constexpr std::int64_t kSamplesWorthWholeTaps = 1 << 20;

constexpr int kFractionBits = 22;

// Added before rounding down, so that what should be a whole number is one: far above the error of
// the gain times the largest difference, 2^-23 × 510, and below the smallest distance of another
// product from a whole number, about 1 / 1021. Taken away, the same product stays below the number.
constexpr std::int32_t kTie = 512;

// Below a sample's eight bits; a quarter of it is the last fraction bit of a sum in words.
constexpr int kWordTie = 4;

// The gain times a difference of ten bits, plus kTie or a little less, as one multiply-add of two
// 16-bit pairs: 64 d × high + (d + shift) × low.
struct SplitGain {
    std::int32_t low, high, shift;

    explicit SplitGain(std::int32_t gain) : low(64 + gain % 64), high((gain - low) / 64), shift(kTie / low) {}

    std::int32_t Pair() const {
        return static_cast<std::int32_t>((static_cast<std::uint32_t>(low) << 16) |
                                         (static_cast<std::uint32_t>(high) & 0xFFFF));
    }
};

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

using MixWholeFunction = void(const WholeTaps& taps, const std::uint8_t* first, const std::uint8_t* row,
                              const std::uint8_t* second, std::int64_t count, std::uint8_t* result);

// The definition of averages in whole numbers.
void MixWholePlain(const WholeTaps& taps, const std::uint8_t* first, const std::uint8_t* row,
                   const std::uint8_t* second, std::int64_t count, std::uint8_t* result) {
    for (std::int64_t i = 0; i < count; ++i) {
        const std::int32_t product = taps.gain * (first[i] + second[i] - 2 * row[i]);
        const auto reached = static_cast<std::uint8_t>(row[i] + ((product + kTie) >> kFractionBits));
        const auto below = static_cast<std::uint8_t>(row[i] + ((product - kTie) >> kFractionBits));
        const int turned = std::max(row[i] ^ taps.flip, 1);
        result[i] = taps.limited && turned > taps.limit[reached] ? below : reached;
    }
}

// The definition of averages in words: a sample has six fraction bits there, with a last one more, so that a
// product just below a whole number reaches it. That serves shares of few decimals, whose products lie on
// whole numbers or well apart from them.
void MixWordsPlain(const WholeTaps& taps, const std::uint8_t* first, const std::uint8_t* row,
                   const std::uint8_t* second, std::int64_t count, std::uint8_t* result) {
    for (std::int64_t i = 0; i < count; ++i) {
        const int sample = row[i] * 256 + kWordTie;
        const int difference = 64 * (first[i] + second[i]) - sample / 2;
        const int sum = ((difference * taps.wordGain) >> 16) + sample / 4;
        result[i] = static_cast<std::uint8_t>(std::clamp(sum, 0, 255 * 64) / 64);
    }
}

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/FractionalBlurWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

constexpr Forms<MixWholeFunction> kMixWhole = ROWS_FORMS(MixWholePlain, MixWhole);
constexpr Forms<MixWholeFunction> kMixWords = ROWS_FORMS(MixWordsPlain, MixWords);

constexpr int kSums = 511;  // of two neighbours

// A sample beside every sum of two neighbours.
struct EverySum {
    std::uint8_t first[kSums], second[kSums], sample[kSums];

    EverySum() {
        for (int sum = 0; sum < kSums; ++sum) {
            first[sum] = static_cast<std::uint8_t>(std::min(sum, 255));
            second[sum] = static_cast<std::uint8_t>(sum - first[sum]);
        }
    }

    void SetSample(int value) { std::fill_n(sample, kSums, static_cast<std::uint8_t>(value)); }
};

// How large the samples of averages are that reach a whole number and of those that stay below.
struct Turns {
    int most[256];   // of those that reach it; 0 where none does
    int least[256];  // of those that stay below; 256 where none does

    Turns() {
        std::fill_n(most, 256, 0);
        std::fill_n(least, 256, 256);
    }

    void Note(int average, int sample, bool reached) {
        const int turned = std::max(sample, 1);
        if (reached)
            most[average] = std::max(most[average], turned);
        else
            least[average] = std::min(least[average], turned);
    }

    // Whether one limit for each average tells them apart.
    bool AreApart() const {
        for (int i = 0; i < 256; ++i)
            if (least[i] <= most[i]) return false;
        return true;
    }
};

bool GiveTheSame(MixWholeFunction* mix, const ThreeTaps& taps, const WholeTaps& whole) {
    EverySum every;
    for (int sample = 0; sample < 256; ++sample) {
        every.SetSample(sample);
        std::uint8_t exact[kSums], found[kSums];
        LoopForms<Mixing>::kTable.Chosen()(taps, every.first, every.sample, every.second, kSums, exact);
        mix(whole, every.first, every.sample, every.second, kSums, found);
        if (std::memcmp(exact, found, kSums) != 0) return false;
    }
    return true;
}

// Finds what averages in whole numbers stay below. False when they don't give the same for all samples and
// neighbours.
bool FindLimits(MixWholeFunction* mix, const ThreeTaps& taps, WholeTaps* whole) {
    Turns turns, flipped;
    EverySum every;
    for (int sample = 0; sample < 256; ++sample) {
        every.SetSample(sample);
        std::uint8_t exact[kSums];
        LoopForms<Mixing>::kTable.Chosen()(taps, every.first, every.sample, every.second, kSums, exact);
        for (int sum = 0; sum < kSums; ++sum) {
            const std::int32_t product = (sum - 2 * sample) * whole->gain;
            const int reached = sample + ((product + kTie) >> kFractionBits);
            if (reached == sample + ((product - kTie) >> kFractionBits) || reached < 0 || reached > 255) continue;
            turns.Note(reached, sample, exact[sum] == reached);
            flipped.Note(reached, 255 - sample, exact[sum] == reached);
            whole->limited |= exact[sum] != reached;
        }
    }
    const Turns& chosen = turns.AreApart() ? turns : flipped;
    whole->flip = &chosen == &flipped ? 255 : 0;
    for (int i = 0; i < 256; ++i) whole->limit[i] = static_cast<std::uint8_t>(std::max(chosen.least[i] - 1, 0));
    return GiveTheSame(mix, taps, *whole);
}

// Finds a whole form; false when none gives the same.
bool FindWholeTaps(ThreeTapsPlan* plan) {
    const ThreeTaps& taps = plan->taps;
    if (!(taps.share >= 0 && taps.share < 1)) return false;
    const double gain = taps.share * taps.norm;
    plan->wholeTaps = {static_cast<std::int32_t>(std::lround(gain * (1 << kFractionBits))),
                       static_cast<std::int16_t>(std::lround(gain * (1 << 16))),
                       false,
                       0,
                       {}};
    plan->byWholes = kMixWords.Chosen();
    if (GiveTheSame(plan->byWholes, taps, plan->wholeTaps)) return true;
    plan->byWholes = kMixWhole.Chosen();
    return FindLimits(plan->byWholes, taps, &plan->wholeTaps);
}

void Mix(const ThreeTapsPlan& plan, const std::uint8_t* first, const std::uint8_t* row, const std::uint8_t* second,
         std::int64_t count, std::uint8_t* result) {
    if (plan.whole)
        plan.byWholes(plan.wholeTaps, first, row, second, count, result);
    else
        plan.byDoubles(plan.taps, first, row, second, count, result);
}

}  // namespace

ThreeTapsPlan PlanThreeTaps(const ThreeTaps& taps, std::int64_t samples) {
    ThreeTapsPlan plan{LoopForms<Mixing>::kTable.Chosen(), kMixWhole.Chosen(), taps, false, {}};
    if (samples >= kSamplesWorthWholeTaps) plan.whole = FindWholeTaps(&plan);
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
