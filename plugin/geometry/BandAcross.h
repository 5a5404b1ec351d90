// The pass along rows, one band of rows at a time.
#pragma once

#include <cstdint>

#include "plugin/buffer/Scratch.h"
#include "plugin/geometry/Contributions.h"
#include "plugin/geometry/ScaleJob.h"
#include "plugin/rows/Blocks.h"

namespace tqx {

class BandAcross {
  public:
    // For the first `columns` columns of a job. False when memory is short, or when a column is made
    // of so many that a band would not be small any more.
    bool Prepare(const ScaleJob& job, std::int32_t columns);

    // Makes the rows of the intermediate that come from rows::kLanes rows of the source, y being the
    // first: rows of values, `stride` doubles apart, with room up to the next whole piece. Rows that
    // the source does not have are 0. Gives a bit for each row that it has.
    unsigned Make(std::int32_t y, double* rows, std::int64_t stride);

  private:
    // Neighbouring columns whose source columns are put into lanes together.
    struct Strip {
        std::int32_t begin;
        std::int32_t end;
        std::int32_t firstColumn;  // of the source
        std::int32_t columns;
    };

    Strip StripOf(const rows::Block& group) const;
    bool CutIntoStrips(std::int32_t columns);
    unsigned Pack(std::int32_t y);
    void MakeStrip(const Strip& strip, double* rows, std::int64_t stride);

    RowCursor* source_ = nullptr;
    const ScalePath* path_ = nullptr;
    rows::BytesToLanesFunction* bytesToLanes_ = rows::kBytesToLanes.Chosen();
    rows::SumAcrossFunction* sumAcross_ = rows::kSumAcross.Chosen();
    rows::LanesToRowsFunction* lanesToRows_ = rows::kLanesToRows.Chosen();
    Contributions lists_;
    Scratch<Strip> strips_;
    std::int32_t stripCount_ = 0;
    Scratch<std::uint8_t> packed_;  // the sampled bytes of a band, row after row
    std::int64_t packedStride_ = 0;
    Scratch<double> lanes_;
    Scratch<float> sums_;
};

}  // namespace tqx
