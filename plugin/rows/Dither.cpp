// Thresholds compared plainly.
#include "plugin/rows/Dither.h"

#include <algorithm>

#include "plugin/rows/Forms.h"
#include "plugin/rows/TableRegisters.h"

namespace rows {

namespace {

// The definition.
void DitherPlain(const DitherPlan& plan, const DitherJob& job) {
    const DitherTables& tables = plan.tables;
    const std::uint8_t* pixels = job.pixels;
    std::uint8_t* result = job.result;
    std::int32_t cell = job.first % job.cells.size;
    for (std::int32_t x = 0; x < job.count; ++x) {
        const std::uint8_t threshold = job.cells.threshold[cell];
        for (int channel = 0; channel < job.channels; ++channel, ++pixels, ++result)
            *result = threshold < tables.limit[*pixels] ? tables.lower[*pixels] : tables.upper[*pixels];
        if (++cell == job.cells.size) cell = 0;
    }
}

// A row of cells as the bytes of packed pixels, from the first cell on: the highest byte that
// becomes `upper` in each.
struct CellBytes {
    static constexpr std::int32_t kMostCells = 16;
    std::int32_t period;                        // bytes after which it repeats, at most 64
    std::uint8_t highest[4 * kMostCells + 64];  // a register can be loaded from anywhere in a period

    CellBytes(const DitherPlan& plan, const DitherJob& job) : period(job.cells.size * job.channels), highest{} {
        std::uint8_t* to = highest;
        for (std::int32_t cell = 0; cell < job.cells.size; ++cell, to += job.channels)
            std::fill_n(to, job.channels, plan.highest[job.cells.threshold[cell]]);
        const std::int32_t end = period + 64;
        for (std::int32_t known = period; known < end; known *= 2)
            std::copy_n(highest, std::min(known, end - known), highest + known);
    }
};

// Rows that are worth expanding their cells; others are done before that is.
[[maybe_unused]] bool IsWorthExpanding(const DitherJob& job) {
    return job.count >= 64 && job.cells.size <= CellBytes::kMostCells;
}

}  // namespace

}  // namespace rows

#define ROWS_WIDE "plugin/rows/DitherWide.h"
#include "plugin/rows/WideForms.h"

namespace rows {

namespace {

constexpr Forms<DitherFunction> kDitherRow = ROWS_FORMS(DitherPlain, DitherRow);

// Whether the bytes that become `upper` are, at every threshold, those up to some byte.
bool HaveHighest(const DitherTables& tables) {
    return tables.limit[0] == 0 && std::is_sorted(tables.limit, tables.limit + 256);
}

}  // namespace

DitherPlan PlanDither(const DitherTables& tables) {
    DitherPlan plan{&DitherPlain, tables, {}};
    if (!HaveHighest(tables)) return plan;
    plan.form = kDitherRow.Chosen();
    for (int threshold = 0; threshold < 256; ++threshold)
        plan.highest[threshold] =
            static_cast<std::uint8_t>(std::upper_bound(tables.limit, tables.limit + 256, threshold) - tables.limit - 1);
    return plan;
}

void DitherRow(const DitherPlan& plan, const DitherJob& job) { plan.form(plan, job); }

}  // namespace rows
