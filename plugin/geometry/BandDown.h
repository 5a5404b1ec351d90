// The pass along columns, one band of rows at a time.
//
// Bands of the intermediate's rows arrive from the top. A row of self whose rows all lie in the ring
// of the latest bands is summed at once. When shrinking by so much that the ring would get large,
// the sums of the rows under way are carried from band to band instead; they are few, however much
// it shrinks.
#pragma once

#include <cstdint>

#include "plugin/buffer/Scratch.h"
#include "plugin/geometry/Contributions.h"
#include "plugin/geometry/ScaleJob.h"
#include "plugin/rows/Blocks.h"
#include "plugin/rows/ScaleDown.h"

namespace tqx {

class BandDown {
  public:
    // False when memory is short.
    bool Prepare(const ScaleJob& job);

    // Whether self has all its rows.
    bool Done() const { return next_ >= job_->rows; }

    // Where the next rows::kLanes rows of values belong, Stride() doubles apart. What the rows have
    // no values for must be 0.
    double* NextBand() const { return ring_.data() + (bandBegin_ % ringRows_) * stride_; }
    std::int64_t Stride() const { return stride_; }

    // Adds that band, and writes the rows of self that it completes.
    void TakeBand();

  private:
    static constexpr int kBatch = 32;  // rows of self at a time

    bool FindReaches();
    bool ChooseMemory();
    std::int64_t MostRowsUnderWay() const;
    rows::DownRow RowOf(std::int32_t y) const;
    std::int32_t EndOfWork() const;
    void AddBatch(const rows::Block& block);

    const ScaleJob* job_ = nullptr;
    rows::SumDownFunction* sumDown_ = rows::kSumDown.Chosen();
    Contributions lists_;
    Scratch<std::int32_t> starts_;   // no row of self from this one on uses rows above
    Scratch<std::int32_t> reaches_;  // no row of self up to this one uses rows below
    std::int64_t stride_ = 0;        // values, whole pieces
    Scratch<double> ring_;
    std::int64_t ringRows_ = 0;
    Scratch<const double*> ringRow_;  // the ring's rows twice in a row, so that runs may wrap
    bool carries_ = false;
    Scratch<double> carried_;
    std::int64_t carriedRows_ = 0;
    Scratch<std::uint8_t> bytes_;  // of a batch
    std::int64_t bandBegin_ = 0;
    std::int32_t next_ = 0;   // first row of self that isn't complete
    std::int32_t begun_ = 0;  // first row of self that has no sums yet
};

}  // namespace tqx
