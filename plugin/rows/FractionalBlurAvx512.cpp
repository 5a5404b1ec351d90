#include <algorithm>
#include <cmath>
#include <cstring>

#include "plugin/rows/FractionalBlurForms.h"
#include "plugin/rows/TableRegisters.h"

#ifdef ROWS_X86

namespace rows {

namespace {

constexpr int kFractionBits = 22;

// Added before rounding down, so that what should be a whole number is one: far above the error of
// the gain times the largest difference, 2^-23 × 510, and below the smallest distance of another
// product from a whole number, about 1 / 1021. Taken away, the same product stays below the number.
constexpr std::int32_t kTie = 512;

constexpr int kSums = 511;  // of two neighbours

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

struct Averages {
    __m512i reached;  // where products that come close count as whole
    __m512i below;    // where they don't
};

// Of 32 samples with their neighbours, as words.
template <bool Limited>
TARGET_AVX512 inline Averages AverageWords(const SplitGain& gain, __m512i sample, __m512i neighbours) {
    const __m512i difference = _mm512_sub_epi16(neighbours, _mm512_add_epi16(sample, sample));
    const __m512i high = _mm512_slli_epi16(difference, 6);
    const __m512i low = _mm512_add_epi16(difference, _mm512_set1_epi16(static_cast<short>(gain.shift)));
    const __m512i pair = _mm512_set1_epi32(gain.Pair());
    const __m512i left = _mm512_madd_epi16(_mm512_unpacklo_epi16(high, low), pair);
    const __m512i right = _mm512_madd_epi16(_mm512_unpackhi_epi16(high, low), pair);
    const auto rounded = [&](__m512i a, __m512i b) TARGET_AVX512 {
        const __m512i change =
            _mm512_packs_epi32(_mm512_srai_epi32(a, kFractionBits), _mm512_srai_epi32(b, kFractionBits));
        return _mm512_add_epi16(sample, change);
    };
    Averages averages{rounded(left, right), {}};
    if constexpr (Limited) {
        const __m512i tie = _mm512_set1_epi32(2 * kTie);
        averages.below = rounded(_mm512_sub_epi32(left, tie), _mm512_sub_epi32(right, tie));
    }
    return averages;
}

template <bool Limited>
TARGET_AVX512 void MixBytes(const WholeTaps& taps, const std::uint8_t* first, const std::uint8_t* row,
                            const std::uint8_t* second, std::int64_t count, std::uint8_t* result) {
    const SplitGain gain(taps.gain);
    const TableRegisters limit = LoadTable(taps.limit);
    const __m512i zero = _mm512_setzero_si512(), one = _mm512_set1_epi8(1);
    const __m512i flip = _mm512_set1_epi8(static_cast<char>(taps.flip));
    for (std::int64_t at = 0; at < count; at += 64) {
        const __mmask64 present = LowBits(count - at);
        const __m512i sample = _mm512_maskz_loadu_epi8(present, row + at);
        const __m512i a = _mm512_maskz_loadu_epi8(present, first + at);
        const __m512i b = _mm512_maskz_loadu_epi8(present, second + at);
        const Averages left = AverageWords<Limited>(gain, _mm512_unpacklo_epi8(sample, zero),
                                                    _mm512_maddubs_epi16(_mm512_unpacklo_epi8(a, b), one));
        const Averages right = AverageWords<Limited>(gain, _mm512_unpackhi_epi8(sample, zero),
                                                     _mm512_maddubs_epi16(_mm512_unpackhi_epi8(a, b), one));
        __m512i average = _mm512_packus_epi16(left.reached, right.reached);
        if constexpr (Limited) {
            const __m512i turned = _mm512_max_epu8(_mm512_xor_si512(sample, flip), one);
            const __mmask64 stays = _mm512_cmpgt_epu8_mask(turned, LookUpBytes(limit, average));
            average = _mm512_mask_mov_epi8(average, stays, _mm512_packus_epi16(left.below, right.below));
        }
        _mm512_mask_storeu_epi8(result + at, present, average);
    }
}

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

bool GiveTheSame(const ThreeTaps& taps, const WholeTaps& whole) {
    EverySum every;
    for (int sample = 0; sample < 256; ++sample) {
        every.SetSample(sample);
        std::uint8_t exact[kSums], found[kSums];
        MixByDoubles(taps, every.first, every.sample, every.second, kSums, exact);
        MixAvx512(whole, every.first, every.sample, every.second, kSums, found);
        if (std::memcmp(exact, found, kSums) != 0) return false;
    }
    return true;
}

}  // namespace

bool FindWholeTaps(const ThreeTaps& taps, WholeTaps* whole) {
    if (!(taps.share >= 0 && taps.share < 1)) return false;
    *whole = {static_cast<std::int32_t>(std::lround(taps.share * taps.norm * (1 << kFractionBits))), false, 0, {}};
    Turns turns, flipped;
    EverySum every;
    for (int sample = 0; sample < 256; ++sample) {
        every.SetSample(sample);
        std::uint8_t exact[kSums];
        MixByDoubles(taps, every.first, every.sample, every.second, kSums, exact);
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
    return GiveTheSame(taps, *whole);
}

void MixAvx512(const WholeTaps& taps, const std::uint8_t* first, const std::uint8_t* row, const std::uint8_t* second,
               std::int64_t count, std::uint8_t* result) {
    return taps.limited ? MixBytes<true>(taps, first, row, second, count, result)
                        : MixBytes<false>(taps, first, row, second, count, result);
}

}  // namespace rows

#endif
