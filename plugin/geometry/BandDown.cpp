// The ring of bands, and which rows of self the latest band completes.
#include "plugin/geometry/BandDown.h"

#include <algorithm>

namespace tqx {

namespace {

using rows::kLanes;

// A larger ring leaves the second cache.
constexpr std::int64_t kMostRingBytes = 1 << 20;

}  // namespace

// Both are lists of first and last rows made to ascend: where weights of 0 at the ends are left
// out, neighbouring lists may be out of step by a row.
bool BandDown::FindReaches() {
    const std::int32_t count = lists_.Count();
    if (!starts_.Allocate(count) || !reaches_.Allocate(count)) return false;
    std::int32_t reach = 0, start = job_->source->Height;
    for (std::int32_t y = 0; y < count; ++y) {
        reach = std::max(reach, lists_[y].first + std::max(lists_[y].count, 1) - 1);
        reaches_[y] = reach;
    }
    for (std::int32_t y = count - 1; y >= 0; --y) {
        start = std::min(start, lists_[y].first);
        starts_[y] = start;
    }
    return true;
}

std::int64_t BandDown::MostRowsUnderWay() const {
    std::int64_t most = 0;
    std::int32_t begin = 0, end = 0;
    for (std::int64_t band = 0; begin < lists_.Count(); band += kLanes) {
        while (end < lists_.Count() && starts_[end] < band + kLanes) ++end;
        most = std::max<std::int64_t>(most, end - begin);
        while (begin < end && reaches_[begin] < band + kLanes) ++begin;
    }
    return most;
}

bool BandDown::ChooseMemory() {
    std::int64_t span = 0;
    for (std::int32_t y = 0; y < lists_.Count(); ++y)
        span = std::max<std::int64_t>(span, std::int64_t{reaches_[y]} - lists_[y].first + 1);
    ringRows_ = (span + 2 * kLanes - 2) / kLanes * kLanes;  // a row may end with the first row of a band
    const bool enlarging = job_->height >= job_->source->Height;
    carries_ = !enlarging && ringRows_ > kMostRingBytes / std::int64_t{sizeof(double)} / stride_;
    if (carries_) {
        ringRows_ = kLanes;
        carriedRows_ = MostRowsUnderWay();
    }
    return ring_.Allocate(ringRows_, stride_) && ringRow_.Allocate(2, ringRows_) &&
           carried_.Allocate(carriedRows_, stride_) && bytes_.Allocate(kBatch, stride_);
}

bool BandDown::Prepare(const ScaleJob& job) {
    job_ = &job;
    if (!lists_.Start(*job.kernel, job.DownScale())) return false;
    for (std::int32_t i = 0; i < lists_.Count(); ++i) lists_.BuildList(i);
    const std::int64_t values = std::int64_t{job.columns} * job.path.Values();
    stride_ = std::max<std::int64_t>((values + rows::kPiece - 1) / rows::kPiece, 1) * rows::kPiece;
    if (!FindReaches() || !ChooseMemory()) return false;
    for (std::int64_t i = 0; i < 2 * ringRows_; ++i) ringRow_[i] = ring_.data() + i % ringRows_ * stride_;
    return true;
}

// What the latest band adds to row y.
rows::DownRow BandDown::RowOf(std::int32_t y) const {
    const rows::Taps& list = lists_[y];
    const std::int64_t bandEnd = bandBegin_ + kLanes;
    const std::int64_t from = carries_ ? std::max<std::int64_t>(list.first, bandBegin_) : list.first;
    const std::int64_t to = std::min<std::int64_t>(std::int64_t{list.first} + list.count, bandEnd);
    rows::DownRow row{};
    row.rows = &ringRow_[from % ringRows_];
    row.weights = list.weights + (from - list.first);
    row.count = static_cast<int>(std::max<std::int64_t>(to - from, 0));
    row.begins = !carries_ || y >= begun_;
    row.ends = reaches_[y] < bandEnd;
    row.total = list.total;
    row.reciprocal = list.reciprocal;
    if (carries_) row.carried = carried_.data() + y % carriedRows_ * stride_;
    return row;
}

void BandDown::AddBatch(const rows::Block& block) {
    rows::DownRow batch[kBatch] = {};
    for (std::int32_t i = 0; i < block.count; ++i) {
        batch[i] = RowOf(block.first + i);
        batch[i].bytes = bytes_.data() + i * stride_;
    }
    sumDown_(batch, block.count, stride_);
    for (std::int32_t i = 0; i < block.count; ++i) {
        if (!batch[i].ends) continue;
        next_ = block.first + i + 1;
        std::uint8_t* const row = job_->self.Row(block.first + i);
        if (row) rows::MoveRow(job_->path.fromPacked, batch[i].bytes, row, job_->columns);
    }
}

// The end of the rows of self that the latest band is added to.
std::int32_t BandDown::EndOfWork() const {
    const Scratch<std::int32_t>& bounds = carries_ ? starts_ : reaches_;
    std::int32_t end = next_;
    while (end < lists_.Count() && bounds[end] < bandBegin_ + kLanes) ++end;
    return end;
}

void BandDown::TakeBand() {
    const std::int32_t end = EndOfWork();
    for (const rows::Block batch : rows::Blocks(next_, end, kBatch)) AddBatch(batch);
    begun_ = std::max(begun_, end);
    bandBegin_ += kLanes;
}

}  // namespace tqx
