// Square roots of squared gradients, as a loop for every level.
#include "plugin/rows/Neon.h"

#include <algorithm>
#include <cmath>

#include "plugin/rows/LoopForms.h"

namespace rows {

namespace {

struct Gradients {
    ROWS_INLINE static void Run(const std::uint8_t* row, const std::uint8_t* below, int channels, std::int64_t count,
                                std::uint8_t* __restrict result) {
        for (std::int64_t i = 0; i < count; ++i) {
            const int right = row[i] - row[i + channels];
            const int down = row[i] - below[i];
            // Single precision is exact here: sums of squares below 2^17, of which no root that
            // isn't a whole number comes near one.
            const float root = std::sqrt(static_cast<float>(right * right + down * down));
            result[i] = static_cast<std::uint8_t>(static_cast<int>(std::min(2 * root, 255.0F)));
        }
    }
};

}  // namespace

const Forms<NeonFunction> kNeonRow = LoopForms<Gradients>::kTable;

}  // namespace rows
