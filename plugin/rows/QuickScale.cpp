// Quick sums plainly, with the C library's fused multiply-add.
#include "plugin/rows/QuickScale.h"

#include <algorithm>
#include <cmath>

#include "plugin/rows/ScaleTurns.h"
#include "plugin/rows/Taps.h"

#define ROWS_WIDE "plugin/rows/QuickScaleWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

void QuickBytesToLanesPlain(const std::uint8_t* band, std::int64_t stride, std::int64_t count, float* lanes) {
    for (std::int64_t v = 0; v < count; ++v)
        for (int r = 0; r < kQuickLanes; ++r)
            lanes[v * kQuickLanes + r] = static_cast<float>(band[r * stride + v] - kMiddle);
}

float QuickSumAcrossLane(const QuickTaps& taps, const float* lane, std::int64_t step) {
    float sum = 0;
    for (std::int32_t i = 0; i < taps.count; ++i) {
        const std::int32_t k = QuickTurn(i, taps.count);
        sum = std::fma(taps.weights[k], lane[k * step], sum);
    }
    return std::clamp(sum, 0.0F - kMiddle, 255.0F - kMiddle);
}

void QuickSumAcrossPlain(int values, const QuickTaps* columns, std::int64_t count, const float* lanes,
                         std::int64_t firstColumn, float* sums) {
    const std::int64_t step = std::int64_t{values} * kQuickLanes;
    for (std::int64_t x = 0; x < count; ++x) {
        const float* const first = lanes + (columns[x].first - firstColumn) * step;
        for (std::int64_t i = 0; i < step; ++i) sums[x * step + i] = QuickSumAcrossLane(columns[x], first + i, step);
    }
}

void QuickLanesToRowsPlain(const float* sums, std::int64_t count, float* rows, std::int64_t stride) {
    const std::int64_t whole = (count + 7) / 8 * 8;
    for (int r = 0; r < kQuickLanes; ++r)
        for (std::int64_t v = 0; v < whole; ++v) rows[r * stride + v] = sums[v * kQuickLanes + r];
}

std::uint8_t TruncatedByte(float value) { return static_cast<std::uint8_t>(std::clamp(value, 0.0F, 255.0F)); }

float QuickSumDownOf(const QuickRow& output, std::int64_t value) {
    float sum = 0;
    for (int i = 0; i < output.count; ++i) {
        const int k = QuickTurn(i, output.count);
        sum = std::fma(output.weights[k], output.rows[k][value], sum);
    }
    return sum;
}

bool IsWhole(const QuickRow& output, std::int64_t value) {
    return output.whole && (output.whole[value / kPiece] >> (value % kPiece) & 1) != 0;
}

void QuickSumDownPlain(const QuickRow* outputs, int count, std::int64_t at, std::int64_t end) {
    for (const QuickRow* output = outputs; output != outputs + count; ++output) {
        std::fill(output->undecided + at / kPiece, output->undecided + end / kPiece, 0);
        for (std::int64_t i = at; i < end; ++i) {
            const float sum = QuickSumDownOf(*output, i);
            const std::uint8_t low = TruncatedByte(sum + output->low), high = TruncatedByte(sum + output->high);
            const bool whole = IsWhole(*output, i);
            output->bytes[i] = whole ? high : low;
            output->undecided[i / kPiece] |= std::uint64_t{high != low && !whole} << (i % kPiece);
        }
    }
}

}  // namespace

const Forms<QuickBytesToLanesFunction> kQuickBytesToLanes = ROWS_FORMS(QuickBytesToLanesPlain, QuickBytesToLanes);
const Forms<QuickSumAcrossFunction> kQuickSumAcross = ROWS_FORMS(QuickSumAcrossPlain, QuickSumAcross);
const Forms<QuickLanesToRowsFunction> kQuickLanesToRows = ROWS_FORMS(QuickLanesToRowsPlain, QuickLanesToRows);
const Forms<QuickSumDownFunction> kQuickSumDown = ROWS_FORMS(QuickSumDownPlain, QuickSumDown);

}  // namespace rows
