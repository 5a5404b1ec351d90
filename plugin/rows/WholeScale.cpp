// Sums in whole numbers plainly; the compiler widens those down columns.
#include "plugin/rows/WholeScale.h"

#include "plugin/rows/LoopForms.h"

#define ROWS_WIDE "plugin/rows/WholeScaleWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

struct WholeSumDown {
    ROWS_INLINE static void Run(const std::uint8_t* upper, const std::uint8_t* lower, int upperWeight, int lowerWeight,
                                std::int64_t count, std::uint16_t* __restrict sums) {
        const auto above = static_cast<std::uint16_t>(upperWeight), below = static_cast<std::uint16_t>(lowerWeight);
        for (std::int64_t i = 0; i < count; ++i)
            sums[i] = static_cast<std::uint16_t>(upper[i] * above + lower[i] * below);
    }
};

struct WholePair {
    ROWS_INLINE static void Run(const std::uint16_t* sums, std::int64_t step, std::int64_t count,
                                std::uint32_t* __restrict pairs) {
        for (std::int64_t i = 0; i < count; ++i) pairs[i] = sums[i] | std::uint32_t{sums[i + step]} << 16;
    }
};

std::uint32_t SumOfPair(std::uint32_t pair, std::uint32_t weights) {
    return (pair & 0xFFFF) * (weights & 0xFFFF) + (pair >> 16) * (weights >> 16);
}

void WholeSumAcrossPlain(const WholeRun* runs, std::int64_t count, const std::uint32_t* const* pairs, int rows,
                         int shift, std::uint8_t* const* bytes) {
    for (std::int64_t run = 0; run < count; ++run)
        for (int row = 0; row < rows; ++row)
            for (int i = 0; i < WholeRun::kValues; ++i) {
                const std::uint32_t* const from = pairs[row] + runs[run].base[i / WholeRun::kGroup];
                bytes[row][run * WholeRun::kValues + i] =
                    static_cast<std::uint8_t>(SumOfPair(from[runs[run].index[i]], runs[run].weights[i]) >> shift);
            }
}

}  // namespace

const Forms<WholeSumDownFunction> kWholeSumDown = LoopForms<WholeSumDown>::kTable;
const Forms<WholePairFunction> kWholePair = LoopForms<WholePair>::kTable;
const Forms<WholeSumAcrossFunction> kWholeSumAcross = ROWS_FORMS(WholeSumAcrossPlain, WholeSumAcross);

}  // namespace rows
