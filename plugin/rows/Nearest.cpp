// Pixels picked one by one, and which picks a register can make.
#include "plugin/rows/Nearest.h"

#include <cstring>

#include "plugin/rows/Blocks.h"

namespace rows {

namespace {

template <int Size>
void PickEach(std::int32_t pixelSize, const std::uint8_t* row, const std::int32_t* columns, std::int32_t count,
              std::uint8_t* picked) {
    for (std::int64_t i = 0; i < count; ++i)
        std::memcpy(picked + i * Size, row + std::int64_t{columns[i]} * pixelSize, Size);
}

// Three bytes are read and written as four, but for the row's last pixel, which may lie at the end
// of the memory.
void PickThrees(const PixelSpan& span, const std::uint8_t* row, std::int32_t width, const std::int32_t* columns,
                std::int32_t count, std::uint8_t* picked) {
    std::int32_t last = count;
    while (last > 0 && columns[last - 1] == width - 1) --last;
    PickEach<4>(span.pixelSize, row, columns, last, picked);
    for (std::int64_t i = last; i < count; ++i)
        std::memcpy(picked + i * 4, row + std::int64_t{columns[i]} * span.pixelSize, 3);
}

void PickOneByOne(const PixelSpan& span, const std::uint8_t* row, std::int32_t width, const std::int32_t* columns,
                  std::int32_t count, std::uint8_t* picked) {
    row += span.offset;
    switch (span.size) {
        case 1:
            return PickEach<1>(span.pixelSize, row, columns, count, picked);
        case 2:
            return PickEach<2>(span.pixelSize, row, columns, count, picked);
        case 3:
            return PickThrees(span, row, width, columns, count, picked);
        default:
            return PickEach<4>(span.pixelSize, row, columns, count, picked);
    }
}

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/NearestWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

const Forms<PickPixelsFunction> kPickPixels = ROWS_FORMS(PickOneByOne, PickPixels);

}  // namespace rows
