// The rectangle rule in plain steps, and rectangles to try it with.
#pragma once

#include <cstdint>
#include <limits>

#include "tests/support/Formats.h"

namespace ops_test {

struct Area {
    std::int64_t x, y, w, h;
};

// One axis, step by step; sizes compare as unsigned numbers.
inline void ClipAxis(std::int64_t& x, std::int64_t& w, std::int64_t extent) {
    if (w < 0) {
        x = x + w;
        w = -w;
    }
    if (x < 0) {
        w = w + x;
        x = 0;
    }
    if (static_cast<std::uint64_t>(x) >= static_cast<std::uint64_t>(extent)) w = 0;
    if (static_cast<std::uint64_t>(extent) < static_cast<std::uint64_t>(x + w)) w = extent - x;
}

inline Area Clip(Area area, std::int64_t width, std::int64_t height) {
    ClipAxis(area.x, area.w, width);
    ClipAxis(area.y, area.h, height);
    if (area.w <= 0 || area.h <= 0) return {0, 0, 0, 0};
    return area;
}

// Numbers near a picture's edges, and at times at the ends of 32 bits.
inline int RandomNumber(support::Random& random) {
    constexpr int kExtremes[] = {std::numeric_limits<int>::min(),     std::numeric_limits<int>::min() + 1,
                                 std::numeric_limits<int>::max(),     std::numeric_limits<int>::max() - 1,
                                 std::numeric_limits<int>::max() / 2, std::numeric_limits<int>::min() / 2};
    return random.Below(12) == 0 ? kExtremes[random.Below(6)] : random.Between(-25, 30);
}

}  // namespace ops_test
