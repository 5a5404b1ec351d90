#include <algorithm>
#include <cstring>

#include "plugin/rows/TableRegisters.h"
#include "plugin/rows/UnsharpForms.h"

#ifdef ROWS_X86

namespace rows {

namespace {

// What the rule makes of every sample beside one reference.
struct Outcomes {
    std::uint8_t of[256];

    Outcomes(const UnsharpRule& rule, int reference) {
        std::uint8_t references[256];
        std::fill_n(references, 256, static_cast<std::uint8_t>(reference));
        for (int i = 0; i < 256; ++i) of[i] = static_cast<std::uint8_t>(i);
        UnsharpByRule(rule, references, 256, of);
    }
};

// One pair's outcome widens the step of its distance. A rise or a fall is the one that the highest
// outcome asks for; what is cut off at 0 tells nothing about a fall, so those start at 255.
void Widen(int sample, int reference, int outcome, UnsharpSteps* steps) {
    if (sample >= reference) {
        std::uint8_t& rise = steps->rise[sample - reference];
        rise = static_cast<std::uint8_t>(std::max<int>(rise, outcome - reference));
    } else if (outcome > 0) {
        std::uint8_t& fall = steps->fall[reference - sample];
        fall = static_cast<std::uint8_t>(std::clamp<int>(reference - outcome, 0, fall));
    }
}

// Raises a limit past the step's result where the outcome is less than that.
void Limit(int sample, int reference, int outcome, UnsharpSteps* steps) {
    const bool rises = sample >= reference;
    const int distance = rises ? sample - reference : reference - sample;
    const int result =
        rises ? std::min(reference + steps->rise[distance], 255) : std::max(reference - steps->fall[distance], 0);
    if (outcome >= result) return;
    std::uint8_t& limit = rises ? steps->riseLimit[distance] : steps->fallLimit[distance];
    limit = static_cast<std::uint8_t>(std::max<int>(limit, std::min(result + 1, 255)));
    steps->limited = true;
}

template <class Step>
void ForEachPair(const UnsharpRule& rule, UnsharpSteps* steps, const Step& step) {
    for (int reference = 0; reference < 256; ++reference) {
        const Outcomes outcomes(rule, reference);
        for (int sample = 0; sample < 256; ++sample) step(sample, reference, outcomes.of[sample], steps);
    }
}

bool StepsGiveTheRule(const UnsharpRule& rule, const UnsharpSteps& steps) {
    for (int reference = 0; reference < 256; ++reference) {
        std::uint8_t references[256], samples[256];
        std::fill_n(references, 256, static_cast<std::uint8_t>(reference));
        for (int i = 0; i < 256; ++i) samples[i] = static_cast<std::uint8_t>(i);
        UnsharpAvx512(steps, references, 256, samples);
        if (std::memcmp(samples, Outcomes(rule, reference).of, 256) != 0) return false;
    }
    return true;
}

struct StepRegisters {
    TableRegisters step, limit;
};

template <bool Limited>
TARGET_AVX512 void Sharpen(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count,
                           std::uint8_t* samples) {
    const StepRegisters rise{LoadTable(steps.rise), LoadTable(steps.riseLimit)};
    const StepRegisters fall{LoadTable(steps.fall), LoadTable(steps.fallLimit)};
    for (std::int64_t at = 0; at < count; at += 64) {
        const __mmask64 present = LowBits(count - at);
        const __m512i from = _mm512_maskz_loadu_epi8(present, reference + at);
        const __m512i sample = _mm512_maskz_loadu_epi8(present, samples + at);
        const __m512i below = _mm512_subs_epu8(from, sample);
        const __m512i distance = _mm512_or_si512(below, _mm512_subs_epu8(sample, from));
        const __mmask64 falls = _mm512_test_epi8_mask(below, below);
        __m512i result = _mm512_mask_subs_epu8(_mm512_adds_epu8(from, LookUpBytes(rise.step, distance)), falls, from,
                                               LookUpBytes(fall.step, distance));
        if constexpr (Limited) {
            const __m512i limit =
                _mm512_mask_mov_epi8(LookUpBytes(rise.limit, distance), falls, LookUpBytes(fall.limit, distance));
            const __mmask64 less = _mm512_cmplt_epu8_mask(result, limit);
            result = _mm512_mask_subs_epu8(result, less, result, _mm512_set1_epi8(1));
        }
        _mm512_mask_storeu_epi8(samples + at, present, result);
    }
}

}  // namespace

bool FindUnsharpSteps(const UnsharpRule& rule, UnsharpSteps* steps) {
    *steps = {};
    std::fill_n(steps->fall, 256, std::uint8_t{255});
    ForEachPair(rule, steps, &Widen);
    ForEachPair(rule, steps, &Limit);
    return StepsGiveTheRule(rule, *steps);
}

void UnsharpAvx512(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count,
                   std::uint8_t* samples) {
    return steps.limited ? Sharpen<true>(steps, reference, count, samples)
                         : Sharpen<false>(steps, reference, count, samples);
}

}  // namespace rows

#endif
