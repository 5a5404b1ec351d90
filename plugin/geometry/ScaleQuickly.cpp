// A scaling in bands by quick arithmetic, where no intermediate is wanted: near values, the bytes that
// they tell beyond doubt, and the definition for the others.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "plugin/geometry/ExactSamples.h"
#include "plugin/geometry/QuickAcross.h"
#include "plugin/geometry/QuickTaps.h"
#include "plugin/geometry/ScaleJob.h"

namespace tqx {

namespace {

using rows::kPiece;
using rows::kQuickLanes;

constexpr std::int64_t kSlack = 64;  // bytes past the last one that wide forms may touch
constexpr std::int64_t kCacheLine = 64;

// What the rings of rows may take; a larger window is the doubles' business, which carry sums.
constexpr std::int64_t kMostRingBytes = 32 << 20;

// Below this a multiply-add in one rounding is a call of the C library's.
bool HasFusedSteps() { return rows::ActiveCpuLevel() != rows::CpuLevel::Plain; }

constexpr std::int64_t RoundUp(std::int64_t value, std::int64_t step) { return (value + step - 1) / step * step; }

// Rows of a band are touched in turn, a piece of each: an odd number of cache lines from row to row keeps
// them from claiming the same places of the cache.
constexpr std::int64_t OddLines(std::int64_t size, std::int64_t line) {
    return (RoundUp(size, line) / line | 1) * line;
}

// The number as a single, or the next one on the way to `end`.
float SingleToward(double number, float end) {
    const auto single = static_cast<float>(number);
    return single == number ? single : std::nextafter(single, end);
}

class QuickScaling {
  public:
    // False when memory is short, or when a size or a kernel's weights don't suit.
    bool Prepare(const ScaleJob& job) {
        job_ = &job;
        return BuildLists() && quickAcross_.Build(across_, job.source->Width) && quickDown_.Build(down_) &&
               MakeRings() && acrossBands_.Prepare(job, quickAcross_) &&
               exact_.Prepare(job, across_, down_, sampled_, stride_);
    }

    void Run() {
        std::int32_t next = 0;
        for (std::int64_t y = 0; next < job_->rows; y += kQuickLanes) {
            TakeBand(y);
            std::int32_t end = next;
            while (end < job_->rows && reaches_[end] < y + kQuickLanes) ++end;
            for (const rows::Block batch : rows::Blocks(next, end, kBatch)) MakeRows(batch);
            next = end;
        }
    }

  private:
    static constexpr int kBatch = 32;  // rows of self at a time

    // Samples of lists with so few places are multiples of the step.
    static constexpr int kFewPlaces = 5;
    static constexpr double kLeastStep = 0x1p-10;
    static constexpr double kRoundings = 0x1p-14;  // of low, of high, and of what is added to them

    // Errors along rows that are held for the same.
    static constexpr double kAlike = 1.125;

    bool BuildLists() {
        if (!across_.Start(*job_->kernel, job_->AcrossScale(job_->columns))) return false;
        for (std::int32_t i = 0; i < across_.Count(); ++i) across_.BuildList(i);
        if (!down_.Start(*job_->kernel, job_->DownScale())) return false;
        for (std::int32_t i = 0; i < down_.Count(); ++i) down_.BuildList(i);
        return true;
    }

    // Lists of rows may be out of step by a row, so a row waits for all before it.
    bool FindReaches(std::int64_t* span) {
        if (!reaches_.Allocate(down_.Count())) return false;
        std::int32_t reach = 0;
        for (std::int32_t y = 0; y < down_.Count(); ++y) {
            reach = std::max(reach, down_[y].first + down_[y].count - 1);
            reaches_[y] = reach;
            *span = std::max<std::int64_t>(*span, std::int64_t{reach} - down_[y].first + 1);
        }
        return true;
    }

    bool MakeRings() {
        const int values = job_->path.Values();
        std::int64_t span = 0;
        if (!FindReaches(&span)) return false;
        const std::int64_t rows = RoundUp(span + kQuickLanes - 1, kQuickLanes);
        values_ = RoundUp(std::int64_t{job_->columns} * values, kPiece);
        stride_ = RoundUp(std::int64_t{job_->columns} * values, std::int64_t{ExactSamples::kBlockColumns} * values);
        ringStride_ = OddLines(stride_, kCacheLine / 4);
        const std::int64_t packedStride = OddLines(std::int64_t{job_->source->Width} * values + kSlack, kCacheLine);
        // Quick values, exact ones and sampled bytes.
        if (rows * (ringStride_ * 4 + stride_ * 8 + packedStride) > kMostRingBytes) return false;
        if (!packed_.Allocate(rows, packedStride) || !ring_.Allocate(rows, ringStride_) ||
            !ringRow_.Allocate(2, rows) || !packedRow_.Allocate(2, rows) || !bytes_.Allocate(kBatch, stride_) ||
            !undecided_.Allocate(kBatch, stride_ / kPiece))
            return false;
        for (std::int64_t i = 0; i < 2 * rows; ++i) {
            ringRow_[i] = ring_.data() + i % rows * ringStride_;
            packedRow_[i] = packed_.data() + i % rows * packedStride;
        }
        sampled_ = {packedRow_.data(), packedStride, rows};
        FindEdges();
        return FindExactColumns();
    }

    // How far the values of a piece along rows are from the defined ones, at most.
    double ErrorOfPiece(std::int64_t piece) const {
        const int values = job_->path.Values();
        return quickAcross_.ErrorAcross(piece * kPiece / values, ((piece + 1) * kPiece - 1) / values + 1);
    }

    // From the middle of a row to where the error becomes larger. Lists that the source's edges cut have a small
    // total, and so large weights.
    void FindEdges() {
        const std::int64_t pieces = values_ / kPiece;
        std::int64_t first = pieces / 2, end = first + 1;
        const double most = ErrorOfPiece(first) * kAlike;
        while (first > 0 && ErrorOfPiece(first - 1) <= most) --first;
        while (end < pieces && ErrorOfPiece(end) <= most) ++end;
        innerFirst_ = first * kPiece;
        innerEnd_ = end * kPiece;
        errorInside_ = most;
        errorAcross_ = std::max(most, quickAcross_.ErrorAcross(0, job_->columns));
    }

    // Marks the values of columns whose lists leave nothing to round.
    bool FindExactColumns() {
        if (!exactColumns_.Allocate(stride_ / kPiece)) return false;
        const int values = job_->path.Values();
        for (std::int64_t i = 0; i < std::int64_t{job_->columns} * values; ++i) {
            const bool exact = quickAcross_.Places(static_cast<std::int32_t>(i / values)) <= kFewPlaces;
            exactColumns_[i / kPiece] |= std::uint64_t{exact} << (i % kPiece);
        }
        return true;
    }

    void TakeBand(std::int64_t y) {
        RowCursor& source = job_->source;
        std::uint8_t* const band = packed_.data() + y % sampled_.rows * sampled_.stride;
        for (int r = 0; r < kQuickLanes; ++r) {
            std::uint8_t* const packed = band + r * sampled_.stride;
            const std::uint8_t* const row =
                y + r < source->Height ? source.Row(static_cast<std::int32_t>(y + r)) : nullptr;
            if (row)
                rows::MoveRow(job_->path.pack, row, packed, source->Width);
            else
                std::memset(packed, 0, static_cast<std::size_t>(sampled_.stride));
        }
        acrossBands_.Make(band, sampled_.stride, ring_.data() + y % sampled_.rows * ringStride_, ringStride_);
        exact_.Forget(y);
    }

    // Samples whose lists both leave nothing to round are multiples of a step. Where the error leaves one open, there
    // is a whole number between what its sum + low and its sum + high give, and if that is less than a step, the sample
    // is this number.
    bool LeavesWholeNumbers(std::int32_t y, double error) const {
        return quickDown_.Places(y) <= kFewPlaces && 2 * error + kRoundings < kLeastStep;
    }

    // Row y from values that are `across` away from the defined ones.
    rows::QuickRow RowOf(std::int32_t y, double across, std::int32_t place) const {
        const rows::QuickTaps& taps = quickDown_[y];
        const bool exact = quickAcross_.MostPlaces() + quickDown_.Places(y) <= QuickTaps::kMostPlaces;
        const double error = exact ? 0 : quickDown_.ErrorDown(y, across);
        return {.rows = &ringRow_[taps.first % sampled_.rows],
                .weights = taps.weights,
                .count = taps.count,
                .low = SingleToward(rows::kMiddle - error, 0),
                .high = SingleToward(rows::kMiddle + error, 1024),
                .whole = LeavesWholeNumbers(y, error) ? exactColumns_.data() : nullptr,
                .bytes = bytes_.data() + place * stride_,
                .undecided = undecided_.data() + place * (stride_ / kPiece)};
    }

    // Rows with the list of the row before have its bytes, as most have where boxes enlarge.
    bool Repeats(std::int32_t y) const {
        const rows::Taps &list = down_[y], &before = down_[y - 1];
        return list.first == before.first &&
               std::equal(list.weights, list.weights + list.count, before.weights, before.weights + before.count);
    }

    void MakeRows(const rows::Block& batch) {
        rows::QuickRow outputs[kBatch], inside[kBatch];
        std::int32_t rowOf[kBatch], count = 0;
        for (std::int32_t y = batch.first; y < batch.End(); ++y) {
            if (y > batch.first && Repeats(y)) continue;
            rowOf[count] = y;
            outputs[count] = RowOf(y, errorAcross_, count);
            inside[count] = RowOf(y, errorInside_, count);
            ++count;
        }
        sumDown_(outputs, count, 0, innerFirst_);
        sumDown_(inside, count, innerFirst_, innerEnd_);
        sumDown_(outputs, count, innerEnd_, values_);
        for (std::int32_t i = 0; i < count; ++i) {
            if (outputs[i].low != outputs[i].high) exact_.Decide(rowOf[i], outputs[i].undecided, outputs[i].bytes);
            const std::int32_t end = i + 1 < count ? rowOf[i + 1] : batch.End();
            for (std::int32_t y = rowOf[i]; y < end; ++y)
                if (std::uint8_t* const row = job_->self.Row(y))
                    rows::MoveRow(job_->path.fromPacked, outputs[i].bytes, row, job_->columns);
        }
    }

    const ScaleJob* job_ = nullptr;
    rows::QuickSumDownFunction* sumDown_ = rows::kQuickSumDown.Chosen();
    Contributions across_;
    Contributions down_;
    QuickTaps quickAcross_;
    QuickTaps quickDown_;
    double errorAcross_ = 0;  // of any value along rows, and of those from innerFirst_ to innerEnd_
    double errorInside_ = 0;
    std::int64_t innerFirst_ = 0;
    std::int64_t innerEnd_ = 0;
    Scratch<std::int32_t> reaches_;  // no row of self up to this one uses rows of the source below
    Scratch<std::uint8_t> packed_;   // the rings: sampled bytes, and quick values
    SampledRows sampled_{};
    Scratch<float> ring_;
    std::int64_t ringStride_ = 0;
    std::int64_t values_ = 0;                 // of a row, whole pieces
    std::int64_t stride_ = 0;                 // the same, whole blocks
    Scratch<const std::uint8_t*> packedRow_;  // the rings' rows twice in a row, so that runs may wrap
    Scratch<const float*> ringRow_;
    Scratch<std::uint8_t> bytes_;  // of a batch
    Scratch<std::uint64_t> undecided_;
    Scratch<std::uint64_t> exactColumns_;  // a bit a value, as in undecided_
    QuickAcross acrossBands_;
    ExactSamples exact_;
};

}  // namespace

bool ScaleQuickly(const ScaleJob& job) {
    if (!HasFusedSteps() || job.path.samples.luma || job.columns <= 0 || job.rows <= 0) return false;
    QuickScaling scaling;
    if (!scaling.Prepare(job)) return false;
    scaling.Run();
    return true;
}

}  // namespace tqx
