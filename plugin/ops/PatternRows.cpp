// Loops over a rectangle's rows.
#include "plugin/ops/PatternRows.h"

#include "plugin/buffer/Operation.h"

namespace tqx {

void ApplyInPlace(PixelBuffer& buffer, const Rectangle& area, const rows::PixelPattern& pattern) {
    RowCursor picture(buffer);
    if (area.IsEmpty() || !BeginInPlace(picture)) return;
    const rows::StreamsEnd end;
    const std::int64_t first = std::int64_t{area.x} * buffer.PixelSize;
    ForRowsInPlace(picture, area.Rows(),
                   [&](std::uint8_t* row) { rows::ApplyPattern(pattern, row + first, area.width); });
}

}  // namespace tqx
