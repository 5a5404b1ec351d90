#include "plugin/rows/Unsharp.h"

#include <algorithm>

#include "plugin/rows/LoopForms.h"
#include "plugin/rows/UnsharpForms.h"

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

}  // namespace

void UnsharpByRule(const UnsharpRule& rule, const std::uint8_t* reference, std::int64_t count, std::uint8_t* samples) {
    LoopOf<Sharpening>()(rule, reference, count, samples);
}

UnsharpPlan PlanUnsharp(const UnsharpRule& rule, std::int64_t samples) {
    UnsharpPlan plan{rule, false, {}};
#ifdef ROWS_X86
    if (ActiveCpuLevel() == CpuLevel::Avx512 && samples >= kSamplesWorthSteps)
        plan.stepped = FindUnsharpSteps(rule, &plan.steps);
#endif
    return plan;
}

void UnsharpRow(const UnsharpPlan& plan, const std::uint8_t* reference, std::int64_t count, std::uint8_t* samples) {
#ifdef ROWS_X86
    if (plan.stepped) return UnsharpAvx512(plan.steps, reference, count, samples);
#endif
    UnsharpByRule(plan.rule, reference, count, samples);
}

}  // namespace rows
