// The call behind DitherFilter: matrix, levels, rows.
#include "plugin/filters/Dither.h"

#include "plugin/filters/DitherMatrices.h"
#include "plugin/filters/PackedRows.h"
#include "plugin/rows/Dither.h"

namespace tqx {

namespace {

std::uint8_t LevelValue(std::int32_t level, std::int32_t levels) {
    return static_cast<std::uint8_t>(level * 255 / (levels - 1));
}

rows::DitherTables BuildTables(const DitherMatrix& matrix, std::int32_t levels) {
    rows::DitherTables tables;
    tables.twoLevels = levels == 2;
    for (std::int32_t value = 0; value < 256; ++value) {
        const std::int32_t base = value * (levels - 1) >> 8;
        tables.limit[value] = static_cast<std::uint8_t>(value * (matrix.size * matrix.size + 1) >> 8);
        tables.lower[value] = LevelValue(base, levels);
        tables.upper[value] = LevelValue(base + 1, levels);
    }
    return tables;
}

}  // namespace

sdk::Object* DitherFilter(sdk::Object* self, sdk::Object* dest, std::int32_t matrix, std::int32_t levels) {
    if (levels < 2 || levels > 256) return nullptr;
    Operation operation(self, dest);
    const DitherMatrix* const cells = FindDitherMatrix(matrix);
    if (!operation || !cells) return operation.Give();
    const rows::DitherPlan plan = rows::PlanDither(BuildTables(*cells, levels));
    const PackedRows rows(operation);
    ChangeEachPixel(
        operation, rows,
        [&](std::int32_t y, std::int32_t first, std::int32_t count, const std::uint8_t* pixels, std::uint8_t* result) {
            const rows::DitherCells row{cells->threshold[y % cells->size], cells->size};
            rows::DitherRow(plan, {row, first, rows.Channels(), count, pixels, result});
        });
    return operation.Give();
}

}  // namespace tqx
