#include "rows/Engrave.h"

#include <algorithm>

namespace rows {

void EngraveRow(const std::uint8_t* pixels, const std::uint8_t* others, std::int64_t count, std::uint8_t* result) {
    for (std::int64_t i = 0; i < count; ++i)
        result[i] = static_cast<std::uint8_t>(std::clamp(pixels[i] - others[i] + 128, 0, 255));
}

}  // namespace rows
