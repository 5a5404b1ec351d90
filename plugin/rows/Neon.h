// Gradients of packed rows.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"

namespace rows {

// result = trunc(2 √((c - r)² + (c - b)²)), at most 255, for each of `count` bytes c of a row: r is
// the byte `channels` further on, b the byte below. The result is neither row.
using NeonFunction = void(const std::uint8_t* row, const std::uint8_t* below, int channels, std::int64_t count,
                          std::uint8_t* result);
extern const Forms<NeonFunction> kNeonRow;

}  // namespace rows
