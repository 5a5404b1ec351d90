// Rows scaled by picking whole pixels: where the two layouts are the same, and a pixel's bytes all channels.
#pragma once

#include <cstdint>

#include "plugin/buffer/Scratch.h"
#include "plugin/rows/Convert.h"
#include "plugin/rows/PickSteps.h"
#include "plugin/rows/Streaming.h"

namespace tqx {

// The source's column or row for one of the destination; step is source pixels to one of these.
constexpr std::int32_t SourceOf(double step, std::int32_t position) {
    return static_cast<std::int32_t>(step * position);
}

class WholePicks {
  public:
    // For rows of `width` pixels made of `sourceWidth`. False where the conversion does more than move whole
    // pixels, for very wide rows, and when memory is short.
    bool Prepare(const rows::ConversionPlan& plan, std::int32_t sourceWidth, std::int32_t width);

    // From here on rows are made apart and then copied, past the cache if they write so many bytes altogether:
    // for rows that are wanted several times, or seldom read. False when memory is short.
    bool MakeApart(std::int64_t bytes);

    // Makes a row. `again`: the source row is that of the call before, and as it was.
    void Pick(const std::uint8_t* source, bool again, std::uint8_t* destination) const;

  private:
    rows::PickedPixels pixels_{};
    rows::PickStepsFunction* steps_ = nullptr;
    rows::StreamCopyFunction* copy_ = nullptr;
    std::int64_t from_ = 0, to_ = 0;  // bytes before the first pixel
    Scratch<std::int32_t> columns_;
    Scratch<std::int32_t> stepFrom_;
    ScratchBytes index_;
    ScratchBytes row_;  // made apart
};

}  // namespace tqx
