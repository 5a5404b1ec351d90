// A scaling in the order of its definition: list by list, row by row, with the yields in between.
#include <algorithm>

#include "plugin/buffer/Scratch.h"
#include "plugin/buffer/Sharing.h"
#include "plugin/geometry/ScaleJob.h"
#include "plugin/rows/Blocks.h"
#include "plugin/rows/ScaleDown.h"

namespace tqx {

namespace {

bool BuildLists(const ScaleJob& job, const AxisScale& scale, Contributions& lists) {
    if (!lists.Start(*job.kernel, scale)) return false;
    for (std::int32_t i = 0; i < lists.Count(); ++i) {
        lists.BuildList(i);
        if (!job.Yield()) return false;
    }
    return true;
}

void RowAcross(const ScaleJob& job, const Contributions& lists, std::int32_t y) {
    const std::uint8_t* const source = job.source.Row(y);
    std::uint8_t* const row = job.intermediate.Row(y);
    if (!source || !row) return;
    for (std::int64_t x = 0; x < lists.Count(); ++x) {
        double values[rows::kSlots];
        rows::SumAcrossPixel(job.path.samples, lists[static_cast<std::int32_t>(x)], source, values);
        rows::ValuesToSlots(job.path.slots, values, 1, row + x * rows::kSlotPixelSize);
    }
}

// Sums of a stretch of columns of one row, four slots a column, and their bytes.
struct Stretch {
    double* sums;
    std::uint8_t* bytes;
    std::int32_t columns;  // at most
};

// Some columns of one row of self.
void ColumnsDown(const ScaleJob& job, const rows::Taps& list, std::int32_t y, std::int32_t x, std::int32_t columns,
                 const Stretch& stretch) {
    const std::int64_t count = std::int64_t{columns} * rows::kSlots;
    const std::int64_t kept = std::clamp<std::int64_t>(job.keptColumns - x, 0, columns) * rows::kSlots;
    std::fill_n(stretch.sums, count, 0.0);
    for (std::int32_t k = 0; k < list.count; ++k) {
        const std::int32_t j = list.first + k;
        if (list.weights[k] == 0 || j >= job.keptRows) continue;
        const std::uint8_t* const row = job.intermediate.Row(j);
        if (row) rows::AddWeighted(list.weights[k], row + std::int64_t{x} * rows::kSlotPixelSize, kept, stretch.sums);
    }
    rows::BytesOfSums(stretch.sums, list.total, count, stretch.bytes);
    std::uint8_t* const row = job.self.Row(y);
    if (row) rows::MoveRow(job.path.fromSlots, stretch.bytes, row + std::int64_t{x} * job.self->PixelSize, columns);
}

void RowDown(const ScaleJob& job, const rows::Taps& list, std::int32_t y, const Stretch& stretch) {
    for (const auto [x, columns] : rows::Blocks(job.columns, stretch.columns))
        ColumnsDown(job, list, y, x, columns, stretch);
}

bool RowsDown(const ScaleJob& job, const Stretch& stretch) {
    Contributions lists;
    if (!BuildLists(job, job.DownScale(), lists)) return false;
    for (std::int32_t y = 0; y < job.rows; ++y) {
        RowDown(job, lists[y], y, stretch);
        if (!job.Yield() && y + 1 < job.rows) return false;
    }
    return true;
}

}  // namespace

bool ScaleAcrossInOrder(const ScaleJob& job) {
    Contributions lists;
    if (!BuildLists(job, job.AcrossScale(job.keptColumns), lists)) return false;
    for (std::int32_t y = 0; y < job.keptRows; ++y) {
        RowAcross(job, lists, y);
        if (!job.Yield()) return false;
    }
    return true;
}

bool ScaleDownInOrder(const ScaleJob& job) {
    constexpr std::int32_t kFewColumns = 64;
    double fewSums[kFewColumns * rows::kSlots];
    std::uint8_t fewBytes[kFewColumns * rows::kSlots];
    // Where self lies in the intermediate's memory, every pixel is summed after the one before is
    // written.
    if (MayShareStorage(job.self.Picture(), job.intermediate.Picture())) return RowsDown(job, {fewSums, fewBytes, 1});
    const std::int32_t columns = std::max(job.columns, 1);
    const Scratch<double> sums(columns, rows::kSlots);
    const ScratchBytes bytes(columns, rows::kSlots);
    if (!sums || !bytes) return RowsDown(job, {fewSums, fewBytes, kFewColumns});
    return RowsDown(job, {sums.data(), bytes.data(), columns});
}

}  // namespace tqx
