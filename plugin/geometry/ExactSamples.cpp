// Undecided samples one by one, by the colour of flat areas, or piece by piece.
#include "plugin/geometry/ExactSamples.h"

#include <algorithm>
#include <cstring>

#include "plugin/geometry/SourceColumns.h"
#include "plugin/rows/QuickScale.h"

namespace tqx {

namespace {

using rows::kLanes;
using rows::kPiece;

// Products that a sum of a whole piece takes as long as, where its rows are there already; and so many
// samples a piece may leave even if these are worth more.
constexpr int kProductsOfPiece = 512, kLeastFew = 6;

// A block of more source columns is not worth keeping in lanes.
constexpr std::int32_t kMostLaneColumns = 1 << 16;

constexpr std::int64_t kSlack = 64;  // values past the last one that wide forms may touch

}  // namespace

bool ExactSamples::Prepare(const ScaleJob& job, const Contributions& across, const Contributions& down,
                           const SampledRows& sampled, std::int64_t stride) {
    job_ = &job;
    values_ = job.path.Values();
    count_ = std::int64_t{job.columns} * values_;
    across_ = &across;
    down_ = &down;
    sampled_ = sampled;
    stride_ = stride;
    few_ = std::max(kProductsOfPiece / (across.MostTaps() * down.MostTaps()), kLeastFew);
    const bool isLong = across.MostTaps() > rows::kMostScatteredTaps;
    sumScattered_ = (isLong ? rows::kSumScatteredLong : rows::kSumScattered).Chosen();
    blocks_ = stride / (std::int64_t{kBlockColumns} * values_);
    std::int32_t most = 0;
    for (const rows::Block block : rows::Blocks(job.columns, kBlockColumns))
        most = std::max(most, SourceColumnsOf(across, block).count);
    return most <= kMostLaneColumns && rows_.Allocate(sampled.rows, stride) &&
           made_.Allocate(sampled.rows / kLanes, blocks_) &&
           lanes_.Allocate(std::int64_t{most} * values_ + kSlack, kLanes) &&
           sums_.Allocate(std::int64_t{kBlockColumns} * values_ + kSlack, kLanes) && piece_.Allocate(sampled.rows) &&
           scattered_.Allocate(stride + rows::kOpenAtOnce) && openPieces_.Allocate(stride / kPiece);
}

bool& ExactSamples::Made(std::int64_t band, std::int64_t block) const {
    return made_[band % (sampled_.rows / kLanes) * blocks_ + block];
}

void ExactSamples::Forget(std::int64_t y) {
    for (std::int64_t row = y; row < y + rows::kQuickLanes; row += kLanes)
        std::fill_n(&Made(row / kLanes, 0), blocks_, false);
}

void ExactSamples::Decide(std::int32_t y, std::uint64_t* undecided, std::uint8_t* bytes) {
    const std::int64_t pieces = (count_ + kPiece - 1) / kPiece;
    if (count_ % kPiece != 0) undecided[pieces - 1] &= (std::uint64_t{1} << (count_ % kPiece)) - 1;
    rows::OpenSamples open{scattered_.data(), 0, openPieces_.data(), 0};
    listOpen_(undecided, pieces, few_, &open);
    for (std::int64_t i = 0; i < open.pieceCount; ++i) {
        const std::int64_t at = std::int64_t{open.pieces[i]} * kPiece;
        const rows::Block columns = ColumnsOf(at);
        if (IsFlat(y, columns))
            DecideFlat(y, at, columns, bytes);
        else
            DecidePiece(y, at, bytes);
    }
    DecideScattered(y, open, bytes);
}

// The columns that the samples of a piece belong to.
rows::Block ExactSamples::ColumnsOf(std::int64_t at) const {
    const std::int64_t first = at / values_, end = (std::min(at + kPiece, count_) + values_ - 1) / values_;
    return {static_cast<std::int32_t>(first), static_cast<std::int32_t>(end - first)};
}

// --- One by one -------------------------------------------------------------------------------

void ExactSamples::DecideScattered(std::int32_t y, const rows::OpenSamples& open, std::uint8_t* bytes) {
    const rows::Taps& list = (*down_)[y];
    const rows::ScatteredRow row{
        .columns = across_->Lists(), .down = list, .rows = sampled_.From(list.first), .values = values_};
    sumScattered_(row, open.samples, open.sampleCount, bytes);
}

// --- Flat areas -------------------------------------------------------------------------------

// Whether all pixels of the source that the columns of row y are made of are the same.
bool ExactSamples::IsFlat(std::int32_t y, const rows::Block& columns) const {
    const rows::Taps& list = (*down_)[y];
    const SourceColumns source = SourceColumnsOf(*across_, columns);
    const std::int64_t offset = std::int64_t{source.first} * values_;
    const auto size = static_cast<std::size_t>(source.count) * static_cast<std::size_t>(values_);
    const std::uint8_t* const* const sampled = sampled_.From(list.first);
    const std::uint8_t* const first = sampled[0] + offset;
    if (std::memcmp(first, first + values_, size - static_cast<std::size_t>(values_)) != 0) return false;
    for (std::int32_t k = 1; k < list.count; ++k)
        if (std::memcmp(first, sampled[k] + offset, size) != 0) return false;
    return true;
}

// The byte of row y where every sample has one value: along rows the quotient is within 2^-30 of it,
// and the nearest single is the value itself.
std::uint8_t ExactSamples::FlatByte(std::int32_t y, std::uint8_t value) {
    Flat& flat = flat_[value];
    if (flat.row == y) return flat.byte;
    const rows::Taps& list = (*down_)[y];
    double sum = 0;
    for (std::int32_t k = 0; k < list.count; ++k) sum += list.weights[k] * value;
    flat.row = y;
    rows::BytesOfSums(&sum, list.total, 1, &flat.byte);
    return flat.byte;
}

void ExactSamples::DecideFlat(std::int32_t y, std::int64_t at, const rows::Block& columns, std::uint8_t* bytes) {
    const std::int64_t source = SourceColumnsOf(*across_, columns).first;
    const std::uint8_t* const pixel = *sampled_.From((*down_)[y].first) + source * values_;
    for (std::int64_t i = at; i < std::min(at + kPiece, count_); ++i) bytes[i] = FlatByte(y, pixel[i % values_]);
}

// --- Pieces -----------------------------------------------------------------------------------

void ExactSamples::MakeBlock(std::int64_t band, std::int64_t block) {
    const rows::Block columns =
        rows::BlockAt(static_cast<std::int32_t>(block * kBlockColumns), job_->columns, kBlockColumns);
    const SourceColumns source = SourceColumnsOf(*across_, columns);
    bytesToLanes_(*sampled_.From(band * kLanes) + std::int64_t{source.first} * values_, sampled_.stride,
                  std::int64_t{source.count} * values_, lanes_.data());
    sumAcross_(values_, across_->Lists() + columns.first, columns.count, lanes_.data(), source.first, sums_.data());
    lanesToRows_(sums_.data(), std::int64_t{columns.count} * values_,
                 rows_.data() + band * kLanes % sampled_.rows * stride_ + std::int64_t{columns.first} * values_,
                 stride_);
    Made(band, block) = true;
}

void ExactSamples::DecidePiece(std::int32_t y, std::int64_t at, std::uint8_t* bytes) {
    const rows::Taps& list = (*down_)[y];
    const std::int64_t block = at / (std::int64_t{kBlockColumns} * values_);
    for (std::int32_t k = 0; k < list.count; ++k) {
        const std::int64_t row = std::int64_t{list.first} + k;
        if (!Made(row / kLanes, block)) MakeBlock(row / kLanes, block);
        piece_[k] = rows_.data() + row % sampled_.rows * stride_ + at;
    }
    const rows::DownRow output{.rows = piece_.data(),
                               .weights = list.weights,
                               .count = list.count,
                               .begins = true,
                               .ends = true,
                               .total = list.total,
                               .reciprocal = list.reciprocal,
                               .carried = nullptr,
                               .bytes = bytes + at};
    sumDown_(&output, 1, kPiece);
}

}  // namespace tqx
