// Differences of neighbouring pixels of packed rows.
#pragma once

#include <cstdint>

namespace rows {

// result = pixel - other + 128, clamped to 0..255, for each of `count` bytes in turn. The result
// may be either row.
void EngraveRow(const std::uint8_t* pixels, const std::uint8_t* others, std::int64_t count, std::uint8_t* result);

}  // namespace rows
