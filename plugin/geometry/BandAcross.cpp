// Bands of source rows put into lanes strip by strip and summed.
#include "plugin/geometry/BandAcross.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace tqx {

namespace {

using rows::kLanes;

// A strip begins at a multiple of this, so that its values do at a cache line.
constexpr std::int32_t kGroup = 8;

// 24 KiB of sums with three values a pixel: they stay in the nearest cache until they are rows.
constexpr std::int32_t kStripColumns = 256;

// The source columns of a strip in lanes: 96 KiB with three values a pixel, in the second cache.
constexpr std::int32_t kLaneColumns = 512;

// With more source columns to one pixel, summing row by row is as good.
constexpr std::int32_t kMostLaneColumns = 1 << 16;

// Bytes or values past the last one that the wide forms may touch, and a little more.
constexpr std::int64_t kSlack = 64;

}  // namespace

BandAcross::Strip BandAcross::StripOf(const rows::Block& group) const {
    std::int32_t first = std::numeric_limits<std::int32_t>::max(), last = 0;
    for (std::int32_t x = group.first; x < group.End(); ++x) {
        first = std::min(first, lists_[x].first);
        last = std::max(last, lists_[x].first + std::max(lists_[x].count, 1) - 1);
    }
    return {group.first, group.End(), first, last - first + 1};
}

bool BandAcross::CutIntoStrips(std::int32_t columns) {
    if (!strips_.Allocate(std::int64_t{columns} / kGroup + 1)) return false;
    std::int32_t mostColumns = 0;
    for (std::int32_t begin = 0; begin < columns;) {
        Strip strip = StripOf(rows::BlockAt(begin, columns, kGroup));
        while (strip.end < columns && strip.end - begin < kStripColumns) {
            const Strip next = StripOf(rows::BlockAt(strip.end, columns, kGroup));
            const std::int32_t first = std::min(strip.firstColumn, next.firstColumn);
            const std::int32_t end = std::max(strip.firstColumn + strip.columns, next.firstColumn + next.columns);
            if (end - first > kLaneColumns) break;
            strip = {begin, next.end, first, end - first};
        }
        mostColumns = std::max(mostColumns, strip.columns);
        strips_[stripCount_++] = strip;
        begin = strip.end;
    }
    if (mostColumns > kMostLaneColumns) return false;
    return lanes_.Allocate(std::int64_t{mostColumns} * path_->samples.bytes + kSlack, kLanes) &&
           sums_.Allocate(std::int64_t{kStripColumns} * path_->Values() + kSlack, kLanes);
}

bool BandAcross::Prepare(const ScaleJob& job, std::int32_t columns) {
    source_ = &job.source;
    path_ = &job.path;
    if (!lists_.Start(*job.kernel, job.AcrossScale(columns))) return false;
    for (std::int32_t i = 0; i < lists_.Count(); ++i) lists_.BuildList(i);
    packedStride_ = (std::int64_t{job.source->Width} * path_->samples.bytes + 2 * kSlack - 1) / kSlack * kSlack;
    return CutIntoStrips(columns) && packed_.Allocate(kLanes, packedStride_);
}

unsigned BandAcross::Pack(std::int32_t y) {
    RowCursor& source = *source_;
    unsigned present = 0;
    for (int r = 0; r < kLanes; ++r) {
        std::uint8_t* const packed = packed_.data() + r * packedStride_;
        const std::uint8_t* const row = y + r < source->Height ? source.Row(y + r) : nullptr;
        if (row)
            rows::MoveRow(path_->pack, row, packed, source->Width);
        else
            std::memset(packed, 0, static_cast<std::size_t>(packedStride_));
        present |= (row ? 1u : 0u) << r;
    }
    return present;
}

void BandAcross::MakeStrip(const Strip& strip, double* rows, std::int64_t stride) {
    const rows::Samples& samples = path_->samples;
    const int values = samples.Values();
    const std::int32_t columns = strip.end - strip.begin;
    bytesToLanes_(packed_.data() + std::int64_t{strip.firstColumn} * samples.bytes, packedStride_,
                  std::int64_t{strip.columns} * samples.bytes, lanes_.data());
    if (samples.luma) rows::LumaOfLanes(samples.bytes, strip.columns, lanes_.data());
    sumAcross_(values, lists_.Lists() + strip.begin, columns, lanes_.data(), strip.firstColumn, sums_.data());
    lanesToRows_(sums_.data(), std::int64_t{columns} * values, rows + std::int64_t{strip.begin} * values, stride);
}

unsigned BandAcross::Make(std::int32_t y, double* rows, std::int64_t stride) {
    const unsigned present = Pack(y);
    for (std::int32_t i = 0; i < stripCount_; ++i) MakeStrip(strips_[i], rows, stride);
    return present;
}

}  // namespace tqx
