#include "rows/Dither.h"

namespace rows {

void DitherRow(const DitherTables& tables, const DitherCells& cells, std::int32_t first, int channels,
               std::int32_t count, std::uint8_t* pixels) {
    std::int32_t cell = first % cells.size;
    for (std::int32_t x = 0; x < count; ++x) {
        const std::uint8_t threshold = cells.threshold[cell];
        for (int channel = 0; channel < channels; ++channel, ++pixels)
            *pixels = threshold < tables.limit[*pixels] ? tables.lower[*pixels] : tables.upper[*pixels];
        if (++cell == cells.size) cell = 0;
    }
}

}  // namespace rows
