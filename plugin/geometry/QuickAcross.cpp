// Bands of sampled rows put into lanes of singles strip by strip, and summed.
#include "plugin/geometry/QuickAcross.h"

#include <algorithm>

#include "plugin/geometry/SourceColumns.h"
#include "plugin/rows/Blocks.h"

namespace tqx {

namespace {

using rows::kQuickLanes;

// The source columns of a strip in lanes stay near 48 KiB with three values a pixel; a strip begins at
// a multiple of 8 columns, so that its values do at a cache line.
constexpr std::int64_t kLaneColumns = 256;
constexpr std::int32_t kLeastColumns = 8, kMostColumns = 128;

// With more source columns to one strip the doubles serve.
constexpr std::int32_t kMostLaneColumns = 1 << 16;

// Bytes or values past the last one that the wide forms may touch.
constexpr std::int64_t kSlack = 64;

}  // namespace

bool QuickAcross::Prepare(const ScaleJob& job, const QuickTaps& taps) {
    taps_ = &taps;
    values_ = job.path.Values();
    columns_ = job.columns;
    const std::int64_t wanted = kLaneColumns * job.width / job.source->Width / kLeastColumns * kLeastColumns;
    stripColumns_ = static_cast<std::int32_t>(std::clamp<std::int64_t>(wanted, kLeastColumns, kMostColumns));
    std::int32_t most = 0;
    for (const rows::Block strip : rows::Blocks(columns_, stripColumns_))
        most = std::max(most, SourceColumnsOf(taps, strip).count);
    return most <= kMostLaneColumns && lanes_.Allocate(std::int64_t{most} * values_ + kSlack, kQuickLanes) &&
           sums_.Allocate(std::int64_t{stripColumns_} * values_ + kSlack, kQuickLanes);
}

void QuickAcross::Make(const std::uint8_t* packed, std::int64_t packedStride, float* rows, std::int64_t stride) {
    for (const rows::Block strip : rows::Blocks(columns_, stripColumns_)) {
        const SourceColumns source = SourceColumnsOf(*taps_, strip);
        bytesToLanes_(packed + std::int64_t{source.first} * values_, packedStride, std::int64_t{source.count} * values_,
                      lanes_.data());
        sumAcross_(values_, taps_->Lists() + strip.first, strip.count, lanes_.data(), source.first, sums_.data());
        lanesToRows_(sums_.data(), std::int64_t{strip.count} * values_, rows + std::int64_t{strip.first} * values_,
                     stride);
    }
}

}  // namespace tqx
