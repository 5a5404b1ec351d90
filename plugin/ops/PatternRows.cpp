#include "plugin/ops/PatternRows.h"

#include "plugin/buffer/Destination.h"
#include "plugin/buffer/InPlaceRows.h"

namespace tqx {

Rectangle ClipTo(const PixelBuffer& buffer, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    return ClipRectangle(x, y, width, height, buffer.Width, buffer.Height);
}

void ApplyInPlace(PixelBuffer& buffer, const Rectangle& area, const rows::PixelPattern& pattern) {
    if (area.IsEmpty() || !BeginInPlace(buffer)) return;
    const std::int64_t first = std::int64_t{area.x} * buffer.PixelSize;
    ForRowsInPlace(buffer, area.y, area.height,
                   [&](std::uint8_t* row) { rows::ApplyPattern(pattern, row + first, area.width); });
}

}  // namespace tqx
