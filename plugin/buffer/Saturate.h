// Conversions to 32-bit integers that are defined for every value.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tqx {

// The nearest 32-bit integer.
constexpr std::int32_t Saturate(std::int64_t value) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, std::numeric_limits<std::int32_t>::min(),
                                                              std::numeric_limits<std::int32_t>::max()));
}

// Truncates toward zero; values out of range give the nearest end, not-a-number the most negative
// integer.
constexpr std::int32_t Truncate(double value) {
    if (value >= 2147483648.0) return std::numeric_limits<std::int32_t>::max();
    if (!(value > -2147483649.0)) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

// Truncates toward zero and clamps to a byte; not-a-number gives 0.
constexpr std::uint8_t TruncateToByte(double value) {
    return static_cast<std::uint8_t>(std::clamp(Truncate(value), 0, 255));
}

}  // namespace tqx
