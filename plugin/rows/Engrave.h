// Differences of neighbouring pixels of packed rows.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"

namespace rows {

// result = pixel - other + 128, clamped to 0..255, for each of `count` bytes. The result may be the
// row of pixels, and may not otherwise overlap either.
using EngraveFunction = void(const std::uint8_t* pixels, const std::uint8_t* others, std::int64_t count,
                             std::uint8_t* result);
extern const Forms<EngraveFunction> kEngraveRow;

// The same for all `width` pixels of a row with those of another row that lie `level` columns to
// the right (or left, below 0); the row's end pixels stand for those beyond. By a form of kEngraveRow.
void EngraveShiftedRow(EngraveFunction* engrave, const std::uint8_t* pixels, const std::uint8_t* others, int channels,
                       std::int32_t width, std::int32_t level, std::uint8_t* result);

}  // namespace rows
