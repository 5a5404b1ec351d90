#include "plugin/rows/Dither.h"

#include "plugin/rows/CpuLevel.h"
#include "plugin/rows/DitherForms.h"

namespace rows {

namespace {

// The definition.
void DitherPlain(const DitherTables& tables, const DitherCells& cells, std::int32_t first, int channels,
                 std::int32_t count, const std::uint8_t* pixels, std::uint8_t* result) {
    std::int32_t cell = first % cells.size;
    for (std::int32_t x = 0; x < count; ++x) {
        const std::uint8_t threshold = cells.threshold[cell];
        for (int channel = 0; channel < channels; ++channel, ++pixels, ++result)
            *result = threshold < tables.limit[*pixels] ? tables.lower[*pixels] : tables.upper[*pixels];
        if (++cell == cells.size) cell = 0;
    }
}

#ifdef ROWS_X86
CellBytes Expand(const DitherCells& cells, int channels) {
    CellBytes bytes{cells.size * channels, {}};
    for (std::int32_t i = 0; i < bytes.period + 64; ++i)
        bytes.threshold[i] = cells.threshold[i % bytes.period / channels];
    return bytes;
}
#endif

}  // namespace

void DitherRow(const DitherTables& tables, const DitherCells& cells, std::int32_t first, int channels,
               std::int32_t count, const std::uint8_t* pixels, std::uint8_t* result) {
#ifdef ROWS_X86
    constexpr std::int32_t kWorthExpanding = 64;  // pixels; below, the plain loop is done before the cells are expanded
    if (count >= kWorthExpanding && cells.size <= CellBytes::kMostCells && ActiveCpuLevel() == CpuLevel::Avx512)
        return DitherAvx512(tables, Expand(cells, channels), first % cells.size * channels,
                            std::int64_t{count} * channels, pixels, result);
#endif
    DitherPlain(tables, cells, first, channels, count, pixels, result);
}

}  // namespace rows
