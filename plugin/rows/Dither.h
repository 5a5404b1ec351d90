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
    bool twoLevels;  // lower and upper are the same for all bytes
};

// One row of a threshold matrix, repeated along the picture's row.
struct DitherCells {
    const std::uint8_t* threshold;
    std::int32_t size;
};

// Dithers `count` packed pixels, the first of them in column `first` of its row. All channels of a
// pixel share its cell. The result may be the pixels themselves, and may not otherwise overlap them.
void DitherRow(const DitherTables& tables, const DitherCells& cells, std::int32_t first, int channels,
               std::int32_t count, const std::uint8_t* pixels, std::uint8_t* result);

}  // namespace rows
