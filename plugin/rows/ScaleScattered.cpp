// Scattered samples plainly, one after the other.
#include "plugin/rows/ScaleScattered.h"

#include <algorithm>

#include "plugin/rows/ScaleAcross.h"
#include "plugin/rows/ScaleDown.h"
#include "plugin/rows/ScaleTurns.h"

#define ROWS_WIDE "plugin/rows/ScaleScatteredWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

constexpr int kRowsAtOnce = 16;

double SumDownOf(const ScatteredRow& row, const Taps& taps, int channel) {
    double sum = 0;
    for (std::int32_t first = 0; first < row.down.count; first += kRowsAtOnce) {
        const std::int32_t count = std::min(kRowsAtOnce, row.down.count - first);
        float value[kRowsAtOnce];
        SumAcrossSamples(taps, row.rows + first, count, channel, row.values, value);
        for (std::int32_t k = 0; k < count; ++k) sum += row.down.weights[first + k] * value[k];
    }
    return sum;
}

void SumScatteredPlain(const ScatteredRow& row, const std::int32_t* places, std::int64_t count, std::uint8_t* bytes) {
    for (const std::int32_t* place = places; place != places + count; ++place) {
        const double sum = SumDownOf(row, row.columns[*place / row.values], *place % row.values);
        BytesOfSums(&sum, row.down.total, 1, bytes + *place);
    }
}

}  // namespace

const Forms<SumScatteredFunction> kSumScattered = ROWS_FORMS(SumScatteredPlain, SumScattered);
const Forms<SumScatteredFunction> kSumScatteredLong = ROWS_FORMS(SumScatteredPlain, SumScatteredLong);

}  // namespace rows
