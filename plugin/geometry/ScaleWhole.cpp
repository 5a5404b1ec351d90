// Enlarging by a triangle or a box in whole numbers.
//
// Where a factor is a power of two, up to 32, a triangle weighs two neighbours by multiples of 1/64, which add
// up to 1; a box takes one pixel as it is; and at an edge the only sample has all the weight. Let
// U = w / T × 2^p be whole for every weight w, with its list's total T. Then the doubles of the definition round
// nothing (QuickTaps.h), not even to the singles in between, which have 14 bits at most: a sample is the sum of
// all U × U' × byte of both directions, divided by 2^(p + p'), and its byte is that without the bits
// below the point. No sum is beyond 255 × 64 × 64, in whichever order it is made, and none is below 0, so
// that a shift truncates and the clamps do nothing.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "plugin/buffer/Scratch.h"
#include "plugin/geometry/QuickTaps.h"
#include "plugin/geometry/ScaleJob.h"
#include "plugin/rows/WholeScale.h"

namespace tqx {

namespace {

using rows::kWholeRows;
using rows::WholeRun;

constexpr std::int64_t kSlack = 16;  // values past the last one that sums may read

// The lists of one direction, with weights as whole numbers.
class WholeTaps {
  public:
    // False when memory is short, or where a list has more than two samples or weights that are not whole.
    bool Build(const ScaleKernel& kernel, const AxisScale& scale) {
        if (!lists_.Start(kernel, scale)) return false;
        for (std::int32_t i = 0; i < lists_.Count(); ++i) lists_.BuildList(i);
        return lists_.MostTaps() <= 2 && taps_.Build(lists_) && (1 << taps_.MostPlaces()) <= rows::kWholeWeight &&
               NoneIsNegative();
    }

    const rows::QuickTaps& operator[](std::int32_t i) const { return taps_[i]; }
    int Places() const { return taps_.MostPlaces(); }

    // Weight k of list i; 0 for one that it does not have.
    std::uint32_t Weight(std::int32_t i, std::int32_t k) const {
        return k < taps_[i].count ? static_cast<std::uint32_t>(std::ldexp(taps_[i].weights[k], Places())) : 0;
    }

    bool AreSame(std::int32_t i, std::int32_t j) const {
        const rows::QuickTaps &one = taps_[i], &other = taps_[j];
        return one.first == other.first && one.count == other.count &&
               std::equal(one.weights, one.weights + one.count, other.weights);
    }

  private:
    bool NoneIsNegative() const {
        for (std::int32_t i = 0; i < lists_.Count(); ++i)
            if (std::any_of(taps_[i].weights, taps_[i].weights + taps_[i].count, [](float w) { return w < 0; }))
                return false;
        return true;
    }

    Contributions lists_;
    QuickTaps taps_;
};

class WholeScaling {
  public:
    // False when memory is short or the lists don't suit.
    bool Prepare(const ScaleJob& job) {
        job_ = &job;
        values_ = job.path.Values();
        return across_.Build(*job.kernel, job.AcrossScale(job.columns)) && down_.Build(*job.kernel, job.DownScale()) &&
               MakeRuns() && MakeRows();
    }

    void Run() {
        for (std::int32_t y = 0; y < job_->rows;) y = MakeBatch(y);
    }

  private:
    bool MakeRuns() {
        const std::int64_t count = std::int64_t{job_->columns} * values_;
        runCount_ = (count + WholeRun::kValues - 1) / WholeRun::kValues;
        if (!runs_.Allocate(runCount_)) return false;
        for (std::int64_t i = 0; i < count; i += WholeRun::kGroup)
            if (!FillGroup(i, std::min(i + WholeRun::kGroup, count))) return false;
        return true;
    }

    std::int64_t PairOf(std::int64_t value) const {
        return std::int64_t{across_[static_cast<std::int32_t>(value / values_)].first} * values_ + value % values_;
    }

    // The values from `first` to `end`. False when their pairs lie too far apart.
    bool FillGroup(std::int64_t first, std::int64_t end) {
        WholeRun& run = runs_[first / WholeRun::kValues];
        std::int64_t base = PairOf(first);
        for (std::int64_t i = first; i < end; ++i) base = std::min(base, PairOf(i));
        run.base[first % WholeRun::kValues / WholeRun::kGroup] = static_cast<std::int32_t>(base);
        for (std::int64_t i = first; i < end; ++i) {
            const auto column = static_cast<std::int32_t>(i / values_);
            run.index[i % WholeRun::kValues] = static_cast<std::int32_t>(PairOf(i) - base);
            run.weights[i % WholeRun::kValues] = across_.Weight(column, 0) | across_.Weight(column, 1) << 16;
            if (PairOf(i) - base >= WholeRun::kGroup) return false;
        }
        return true;
    }

    bool MakeRows() {
        sourceValues_ = std::int64_t{job_->source->Width} * values_;
        if (sourceValues_ > INT32_MAX - kSlack) return false;  // pairs are counted in 32 bits
        const std::int64_t stride = sourceValues_ + kSlack, byteStride = runCount_ * WholeRun::kValues;
        if (!sampled_.Allocate(2, stride) || !sums_.Allocate(stride) || !pairs_.Allocate(kWholeRows, stride) ||
            !bytes_.Allocate(kWholeRows, byteStride))
            return false;
        for (int i = 0; i < kWholeRows; ++i) {
            pairRow_[i] = pairs_.data() + i * stride;
            byteRow_[i] = bytes_.data() + i * byteStride;
        }
        return true;
    }

    // The sampled bytes of a row of the source; of a row that it does not have, 0. Two neighbours are kept.
    const std::uint8_t* Sampled(std::int32_t y) {
        std::uint8_t* const bytes = sampled_.data() + y % 2 * (sourceValues_ + kSlack);
        if (sampledRow_[y % 2] == y) return bytes;
        sampledRow_[y % 2] = y;
        if (const std::uint8_t* const row = job_->source.Row(y))
            rows::MoveRow(job_->path.pack, row, bytes, job_->source->Width);
        else
            std::memset(bytes, 0, static_cast<std::size_t>(sourceValues_));
        return bytes;
    }

    void SumDown(std::int32_t y, std::uint32_t* pairs) {
        const rows::QuickTaps& list = down_[y];
        const std::uint8_t* const upper = Sampled(list.first);
        const std::uint8_t* const lower = Sampled(list.first + list.count - 1);
        sumDown_(upper, lower, static_cast<int>(down_.Weight(y, 0)), static_cast<int>(down_.Weight(y, 1)),
                 sourceValues_, sums_.data());
        pair_(sums_.data(), values_, sourceValues_, pairs);
    }

    // Some rows from y on that differ, and those between them that don't. Gives the row after them.
    std::int32_t MakeBatch(std::int32_t y) {
        std::int32_t first[kWholeRows + 1], count = 0;
        for (; y < job_->rows; ++y) {
            if (count > 0 && down_.AreSame(y, y - 1)) continue;
            if (count == kWholeRows) break;
            SumDown(y, pairRow_[count]);
            first[count++] = y;
        }
        first[count] = y;
        sumAcross_(runs_.data(), runCount_, pairRow_, count, across_.Places() + down_.Places(), byteRow_);
        for (std::int32_t i = 0; i < count; ++i)
            for (std::int32_t row = first[i]; row < first[i + 1]; ++row) Write(row, byteRow_[i]);
        return y;
    }

    void Write(std::int32_t y, const std::uint8_t* bytes) {
        if (std::uint8_t* const row = job_->self.Row(y))
            rows::MoveRow(job_->path.fromPacked, bytes, row, job_->columns);
    }

    const ScaleJob* job_ = nullptr;
    rows::WholeSumDownFunction* sumDown_ = rows::kWholeSumDown.Chosen();
    rows::WholePairFunction* pair_ = rows::kWholePair.Chosen();
    rows::WholeSumAcrossFunction* sumAcross_ = rows::kWholeSumAcross.Chosen();
    WholeTaps across_;
    WholeTaps down_;
    int values_ = 0;                 // of a pixel
    std::int64_t sourceValues_ = 0;  // of a row
    std::int64_t runCount_ = 0;
    Scratch<WholeRun> runs_;
    Scratch<std::uint8_t> sampled_;
    std::int32_t sampledRow_[2] = {-1, -1};
    Scratch<std::uint16_t> sums_;
    Scratch<std::uint32_t> pairs_;
    Scratch<std::uint8_t> bytes_;
    std::uint32_t* pairRow_[kWholeRows] = {};
    std::uint8_t* byteRow_[kWholeRows] = {};
};

bool MayBeWhole(const ScaleJob& job) {
    return job.kernel->support <= 1 && job.width >= job.source->Width && job.height >= job.source->Height &&
           !job.path.samples.luma && job.columns > 0 && job.rows > 0;
}

}  // namespace

bool ScaleInWholeNumbers(const ScaleJob& job) {
    if (!MayBeWhole(job)) return false;
    WholeScaling scaling;
    if (!scaling.Prepare(job)) return false;
    scaling.Run();
    return true;
}

}  // namespace tqx
