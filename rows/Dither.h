// Ordered dithering of packed rows.
#pragma once

#include <cstdint>

namespace rows {

// What a byte becomes: `lower` in the cells of the threshold matrix whose value is below `limit`,
// `upper` in the others. Indexed by the byte.
struct DitherTables {
    std::uint8_t limit[256];
    std::uint8_t lower[256];
    std::uint8_t upper[256];
};

// One row of a threshold matrix, repeated along the picture's row.
struct DitherCells {
    const std::uint8_t* threshold;
    std::int32_t size;
};

// Dithers `count` packed pixels in place, the first of them in column `first` of its row. All
// channels of a pixel share its cell.
void DitherRow(const DitherTables& tables, const DitherCells& cells, std::int32_t first, int channels,
               std::int32_t count, std::uint8_t* pixels);

}  // namespace rows
