// A scaling in bands: with the script's intermediate pass after pass, else both passes at once.
#include <algorithm>

#include "plugin/geometry/BandAcross.h"
#include "plugin/geometry/BandDown.h"
#include "plugin/geometry/ScaleJob.h"

namespace tqx {

namespace {

using rows::kLanes;

// The intermediate's rows from y on, as values; rows that it does not have are 0.
void ReadBand(const ScaleJob& job, std::int32_t y, double* rows, std::int64_t stride) {
    const std::int32_t columns = std::min(job.columns, job.keptColumns);
    for (int r = 0; r < kLanes; ++r) {
        double* const values = rows + r * stride;
        const std::uint8_t* const row = y + r < job.keptRows ? job.intermediate.Row(y + r) : nullptr;
        if (row)
            rows::SlotsToValues(job.path.slots, row, columns, values);
        else
            std::fill_n(values, stride, 0.0);
    }
}

// Writes the rows of a band that the source has.
void WriteBand(const ScaleJob& job, std::int32_t y, unsigned present, const double* rows, std::int64_t stride) {
    for (int r = 0; r < kLanes && y + r < job.keptRows; ++r) {
        if (!(present >> r & 1)) continue;
        std::uint8_t* const row = job.intermediate.Row(y + r);
        if (row) rows::ValuesToSlots(job.path.slots, rows + r * stride, job.keptColumns, row);
    }
}

}  // namespace

Across ScaleAcrossInBands(const ScaleJob& job) {
    BandAcross across;
    Scratch<double> band;
    const std::int64_t values = std::int64_t{job.keptColumns} * job.path.Values();
    const std::int64_t stride = (values + rows::kPiece - 1) / rows::kPiece * rows::kPiece;
    if (!across.Prepare(job, job.keptColumns) || !band.Allocate(kLanes, stride)) return Across::NotDone;
    Across result = Across::Complete;
    for (std::int64_t y = 0; y < job.keptRows; y += kLanes) {
        const auto row = static_cast<std::int32_t>(y);
        const unsigned present = across.Make(row, band.data(), stride);
        const unsigned wanted = (1u << std::min<std::int64_t>(kLanes, job.keptRows - y)) - 1;
        if ((present & wanted) != wanted) result = Across::Gaps;
        WriteBand(job, row, present, band.data(), stride);
    }
    return result;
}

bool ScaleDownInBands(const ScaleJob& job) {
    BandDown down;
    if (!down.Prepare(job)) return false;
    for (std::int64_t y = 0; !down.Done(); y += kLanes) {
        ReadBand(job, static_cast<std::int32_t>(y), down.NextBand(), down.Stride());
        down.TakeBand();
    }
    return true;
}

bool ScaleThroughBands(const ScaleJob& job) {
    BandAcross across;
    BandDown down;
    if (!across.Prepare(job, job.columns) || !down.Prepare(job)) return false;
    for (std::int64_t y = 0; !down.Done(); y += kLanes) {
        across.Make(static_cast<std::int32_t>(y), down.NextBand(), down.Stride());
        down.TakeBand();
    }
    return true;
}

}  // namespace tqx
