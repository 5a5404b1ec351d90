// The pass along rows by quick arithmetic, one band of rows at a time.
#pragma once

#include <cstdint>

#include "plugin/buffer/Scratch.h"
#include "plugin/geometry/QuickTaps.h"
#include "plugin/geometry/ScaleJob.h"

namespace tqx {

class QuickAcross {
  public:
    // For all columns of a job. False when memory is short, or when a column is made of so many that a
    // band would not be small any more. The taps must outlive it.
    bool Prepare(const ScaleJob& job, const QuickTaps& taps);

    // Makes rows::kQuickLanes rows of values, `stride` floats apart and with room up to the next
    // whole piece, from as many rows of sampled bytes, `packedStride` bytes apart.
    void Make(const std::uint8_t* packed, std::int64_t packedStride, float* rows, std::int64_t stride);

  private:
    const QuickTaps* taps_ = nullptr;
    int values_ = 0;  // of a pixel
    std::int32_t columns_ = 0;
    std::int32_t stripColumns_ = 0;  // whose source columns are put into lanes together
    rows::QuickBytesToLanesFunction* bytesToLanes_ = rows::kQuickBytesToLanes.Chosen();
    rows::QuickSumAcrossFunction* sumAcross_ = rows::kQuickSumAcross.Chosen();
    rows::QuickLanesToRowsFunction* lanesToRows_ = rows::kQuickLanesToRows.Chosen();
    Scratch<float> lanes_;
    Scratch<float> sums_;
};

}  // namespace tqx
