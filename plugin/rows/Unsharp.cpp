// Sharpening in doubles, and by tables of small distances.
#include "plugin/rows/Unsharp.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "plugin/rows/LoopForms.h"
#include "plugin/rows/TableRegisters.h"

#define ROWS_WIDE "plugin/rows/UnsharpWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

// Finding the steps takes as long as half a million samples by the rule.
constexpr std::int64_t kSamplesWorthSteps = 1 << 20;

struct Sharpening {
    ROWS_INLINE static void Run(const UnsharpRule& rule, const std::uint8_t* __restrict reference, std::int64_t count,
                                std::uint8_t* __restrict samples) {
        const double gain = rule.gain;
        const std::int32_t threshold = rule.threshold;
        for (std::int64_t i = 0; i < count; ++i) {
            const std::int32_t difference = samples[i] - reference[i];
            const double value = reference[i] + gain * difference;
            // A value that isn't a number fails the first comparison.
            const double clamped = value > 0 ? std::min(value, 255.0) : 0;
            const std::int32_t distance = difference < 0 ? -difference : difference;
            samples[i] =
                static_cast<std::uint8_t>(distance < threshold ? samples[i] : static_cast<std::int32_t>(clamped));
        }
    }
};

using SharpenFunction = void(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count,
                             std::uint8_t* samples);

// The definition of steps.
void SharpenPlain(const UnsharpSteps& steps, const std::uint8_t* reference, std::int64_t count, std::uint8_t* samples) {
    for (std::int64_t i = 0; i < count; ++i) {
        const int from = reference[i], distance = samples[i] - from;
        const bool falls = distance < 0;
        const int result =
            falls ? std::max(from - steps.fall[-distance], 0) : std::min(from + steps.rise[distance], 255);
        const int limit = falls ? steps.fallLimit[-distance] : steps.riseLimit[distance];
        samples[i] = static_cast<std::uint8_t>(result < limit ? std::max(result - 1, 0) : result);
    }
}

constexpr Forms<SharpenFunction> kSharpenBySteps = ROWS_FORMS(SharpenPlain, SharpenBySteps);

// What the rule makes of every sample beside one reference.
struct Outcomes {
    std::uint8_t of[256];

    Outcomes(const UnsharpRule& rule, int reference) {
        std::uint8_t references[256];
        std::fill_n(references, 256, static_cast<std::uint8_t>(reference));
        for (int i = 0; i < 256; ++i) of[i] = static_cast<std::uint8_t>(i);
        LoopForms<Sharpening>::kTable.Chosen()(rule, references, 256, of);
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

bool GiveTheRule(SharpenFunction* sharpen, const UnsharpRule& rule, const UnsharpSteps& steps) {
    for (int reference = 0; reference < 256; ++reference) {
        std::uint8_t references[256], samples[256];
        std::fill_n(references, 256, static_cast<std::uint8_t>(reference));
        for (int i = 0; i < 256; ++i) samples[i] = static_cast<std::uint8_t>(i);
        sharpen(steps, references, 256, samples);
        if (std::memcmp(samples, Outcomes(rule, reference).of, 256) != 0) return false;
    }
    return true;
}

// --- Products ---------------------------------------------------------------------------------

int Product(int distance, int shift, int factor) { return std::min((distance << shift) * factor >> 16, 255); }

// Whether products give a distance's steps, both ways and wherever the reference lies.
bool GiveTheSteps(const UnsharpProducts& products, const UnsharpSteps& steps, int distance) {
    return Product(distance, products.shift, products.rise) == steps.rise[distance] &&
           std::min(Product(distance, products.shift, products.fall) + 1, 255) == steps.fall[distance] &&
           steps.riseLimit[distance] == 0 && steps.fallLimit[distance] == 0;
}

// Distances for which a factor does not give the steps of one direction.
int Misses(const std::uint8_t* step, int from, int shift, int factor, int more) {
    int misses = 0;
    for (int distance = from; distance < 256; ++distance)
        misses += std::min(Product(distance, shift, factor) + more, 255) != step[distance];
    return misses;
}

// Of the whole numbers about the gain the one that misses least; the one just below makes falls of it that
// end right before a whole number.
std::uint16_t FactorFor(const std::uint8_t* step, int from, double gain, int shift, int more) {
    const int middle = static_cast<int>(std::ldexp(gain, 16 - shift));
    int best = middle, least = 256;
    for (int factor = std::max(middle - 2, 0); factor <= std::min(middle + 2, 65535); ++factor) {
        const int misses = Misses(step, from, shift, factor, more);
        if (misses < least) least = misses, best = factor;
    }
    return static_cast<std::uint16_t>(best);
}

void MarkOdd(UnsharpProducts& products, int distance) {
    std::uint8_t(&marks)[16] = distance < 128 ? products.oddLow : products.oddHigh;
    marks[distance % 16] |= static_cast<std::uint8_t>(1 << (distance / 16 % 8));
    products.odd = true;
}

// The factors have as many bits as 16 hold, and words with a sign hold every product.
void FindProducts(const UnsharpRule& rule, const UnsharpSteps& steps, UnsharpProducts* products) {
    constexpr double kMostGain = 127;
    constexpr int kMostOdd = 16;
    *products = {};
    if (!(rule.gain >= 0 && rule.gain <= kMostGain) || rule.threshold > 255) return;
    while (std::ldexp(rule.gain, 16 - products->shift) >= 65535) ++products->shift;
    const int first = std::max(rule.threshold, 1);
    products->threshold = static_cast<std::uint8_t>(first);
    products->rise = FactorFor(steps.rise, first, rule.gain, products->shift, 0);
    products->fall = FactorFor(steps.fall, first, rule.gain, products->shift, 1);
    int odd = 0;
    for (int distance = first; distance < 256; ++distance) {
        if (GiveTheSteps(*products, steps, distance)) continue;
        MarkOdd(*products, distance);
        ++odd;
    }
    products->serve = odd <= kMostOdd;
}

// Finds the steps of a rule; false when they don't give what it gives for every pair of samples.
bool FindSteps(SharpenFunction* sharpen, const UnsharpRule& rule, UnsharpSteps* steps) {
    *steps = {};
    std::fill_n(steps->fall, 256, std::uint8_t{255});
    ForEachPair(rule, steps, &Widen);
    ForEachPair(rule, steps, &Limit);
    FindProducts(rule, *steps, &steps->products);
    return GiveTheRule(sharpen, rule, *steps);
}

}  // namespace

UnsharpPlan PlanUnsharp(const UnsharpRule& rule, std::int64_t samples) {
    UnsharpPlan plan{LoopForms<Sharpening>::kTable.Chosen(), kSharpenBySteps.Chosen(), rule, false, {}};
    if (samples >= kSamplesWorthSteps) plan.stepped = FindSteps(plan.bySteps, rule, &plan.steps);
    return plan;
}

void UnsharpRow(const UnsharpPlan& plan, const std::uint8_t* reference, std::int64_t count, std::uint8_t* samples) {
    if (plan.stepped)
        plan.bySteps(plan.steps, reference, count, samples);
    else
        plan.byRule(plan.rule, reference, count, samples);
}

}  // namespace rows
