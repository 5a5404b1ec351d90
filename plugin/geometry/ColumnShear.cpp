// Columns sheared a strip at a time, or one by one where pictures share pixels.
//
// Column x moves down by start - x · slope rows. The whole part of that is an offset, so row y of the
// source lands in row y + offset of the destination; the fraction is a weight, which has each pixel
// leave a part of itself to the next one below (rows/Skew.h). Going down one column after the other
// would fetch every row as often as the picture is wide. So a strip of neighbouring columns goes down
// together. Their weights are all that blending a row needs: it is blended across the strip, for
// all columns at once, as soon as it comes in, and is put into a ring. What differs is where the blended
// pixels go: a row of the destination takes the pixels of each run of equal offset from another
// row of the ring. Offsets of a strip spread over no more rows than sin 45° times its width, which
// is what the ring has to hold. Rows come in and go out in ascending order, each once a strip.
#include "plugin/geometry/ColumnShear.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "plugin/buffer/Channels.h"
#include "plugin/buffer/Scratch.h"
#include "plugin/buffer/Sharing.h"
#include "plugin/rows/Blocks.h"
#include "plugin/rows/Move.h"
#include "plugin/rows/Skew.h"

namespace tqx {

namespace {

// How far a column goes: whole rows, and the part of a value that is left for the next one.
struct Distance {
    std::int64_t offset;
    double weight;
};

Distance DistanceOf(double position) {
    const double whole = std::floor(position);
    return {static_cast<std::int64_t>(whole), position - whole};
}

// --- Strips ---------------------------------------------------------------------------------------

// Wide enough to amortise a row address, narrow enough for the rows it keeps to stay in the second
// cache; of a mapped picture each strip walks all windows, so there are fewer.
constexpr std::int32_t kStripColumns = 128;
constexpr std::int32_t kMappedStripColumns = 512;

// Columns that go equally far.
struct Run {
    std::int32_t first;
    std::int32_t end;
    std::int64_t offset;
};

// A strip of columns. The source's rows come in from the top, are sheared as they come, all columns
// at once, and wait in a ring until the destination's rows that take them are assembled.
class Strip {
  public:
    // `block` has BytesFor(columns) bytes.
    Strip(RowCursor& source, RowCursor& destination, const ShearedChannels& channels, std::int32_t columns,
          std::uint8_t* block)
        : source_(source),
          destination_(destination),
          pixelSize_(rows::ChannelCount(channels.set)),
          pack_(rows::PlanMoves(rows::MovesBetween(channels.set, LayoutOf(source.Picture(), channels.set), Packed()))),
          unpack_(rows::PlanMoves(
              rows::MovesBetween(channels.set, Packed(), LayoutOf(destination.Picture(), channels.set)))),
          most_(columns),
          ring_(block) {
        std::memcpy(background_, channels.background, sizeof(background_));
        for (std::int32_t i = 0; i < columns * pixelSize_; ++i) backgrounds_[i] = background_[i % pixelSize_];
    }

    static std::int64_t BytesFor(std::int32_t columns) { return RingRows(columns) * columns * kMostBytes + kPiece; }

    // Shears some columns; gives the position of the column after them.
    double Shear(const rows::Block& columns, double position, double slope) {
        x_ = columns.first;
        count_ = columns.count;
        position = Place(position, slope);
        std::int64_t loaded = 0;
        const RowRange range = destination_.Rows();
        for (std::int32_t y = range.first; y < range.end; ++y) {
            const std::int64_t needed = std::min<std::int64_t>(source_->Height, y - least_ + 1);
            for (; loaded < needed; ++loaded) Load(static_cast<std::int32_t>(loaded));
            if (std::uint8_t* const row = destination_.Row(y)) {
                Assemble(y);
                const std::int32_t width = std::min(count_, destination_->Width - x_);
                rows::MoveRow(unpack_, line_, row + std::int64_t{x_} * destination_->PixelSize, width);
            }
        }
        return position;
    }

  private:
    static constexpr std::int32_t kMostBytes = 4;  // of a packed pixel
    static constexpr std::int32_t kPiece = 16;     // bytes that are put into the assembled row at once

    // Neighbouring columns are at most sin 45° apart; one more row for the fractions.
    static std::int64_t RingRows(std::int32_t columns) {
        return static_cast<std::int64_t>(std::bit_ceil(static_cast<std::uint32_t>(columns * 3 / 4 + 2)));
    }

    rows::PixelLayout Packed() const { return {pixelSize_, {0, 1, 2, 3}}; }

    std::uint8_t* RingRow(std::int64_t row) {
        return ring_ + (row & (RingRows(most_) - 1)) * std::int64_t{most_} * kMostBytes;
    }

    // The columns' distances, runs and what the background leaves.
    double Place(double position, double slope) {
        runs_ = 0;
        for (std::int32_t j = 0; j < count_; ++j, position = position - slope) {
            const Distance distance = DistanceOf(position);
            for (std::int32_t c = 0; c < pixelSize_; ++c) {
                weight_[j * pixelSize_ + c] = distance.weight;
                share_[j * pixelSize_ + c] = rows::ShareOfSkew(distance.weight);
                left_[j * pixelSize_ + c] = rows::LeftOfSkew(distance.weight, background_[c]);
            }
            if (runs_ == 0 || run_[runs_ - 1].offset != distance.offset) run_[runs_++] = {j, j, distance.offset};
            run_[runs_ - 1].end = j + 1;
        }
        least_ = std::min(run_[0].offset, run_[runs_ - 1].offset);
        return position;
    }

    // Takes in a row of the source. One that is not there is marked as such.
    void Load(std::int32_t y) {
        std::uint8_t* const moved = RingRow(y);
        const std::uint8_t* const row = source_.Row(y);
        there_[y & (RingRows(most_) - 1)] = row != nullptr;
        if (!row) return;
        const std::uint8_t* values = row + std::int64_t{x_} * source_->PixelSize;
        if (pack_.copies) {
            values += pack_.from.offset;
        } else {
            rows::MoveRow(pack_, values, line_, count_);
            values = line_;
        }
        skew_(weight_, share_, values, left_, moved, count_ * pixelSize_);
        if (y + 1 < source_->Height) return;
        // The blend of the background stands on the last pixel: intended.
        for (std::int32_t i = 0; i < count_ * pixelSize_; ++i)
            moved[i] = rows::EndOfSkew(weight_[i], background_[i % pixelSize_], left_[i]);
    }

    // Row y of the destination, packed. What the last piece of a run brings too much, the next run covers.
    void Assemble(std::int32_t y) {
        for (std::int32_t i = 0; i < runs_; ++i) {
            const std::int64_t row = y - run_[i].offset;
            const bool moved = row >= 0 && row < source_->Height && there_[row & (RingRows(most_) - 1)];
            const std::uint8_t* const from = moved ? RingRow(row) : backgrounds_;
            for (std::int32_t at = run_[i].first * pixelSize_; at < run_[i].end * pixelSize_; at += kPiece)
                std::memcpy(line_ + at, from + at, kPiece);
        }
    }

    RowCursor& source_;
    RowCursor& destination_;
    std::int32_t pixelSize_;  // bytes of a packed pixel
    rows::MovePlan pack_;
    rows::MovePlan unpack_;
    rows::SkewColumnsFunction* skew_ = rows::kSkewColumns.Chosen();
    std::uint8_t background_[4];
    std::int32_t most_;   // columns that the ring has room for
    std::uint8_t* ring_;  // RingRows rows of most_ pixels
    std::int32_t x_ = 0, count_ = 0;
    std::int64_t least_ = 0;  // offset of the columns
    std::int32_t runs_ = 0;
    Run run_[kMappedStripColumns];
    bool there_[kMappedStripColumns];
    double weight_[kMappedStripColumns * kMostBytes];
    std::uint16_t share_[kMappedStripColumns * kMostBytes];
    std::uint8_t left_[kMappedStripColumns * kMostBytes];
    std::uint8_t backgrounds_[kMappedStripColumns * kMostBytes + kPiece] = {};
    std::uint8_t line_[kMappedStripColumns * kMostBytes + kPiece] = {};
};

// --- Column by column -----------------------------------------------------------------------------

// The definition, one column of pictures that share pixels: filled, and then each pixel read when
// its turn comes.
class ColumnInOrder {
  public:
    ColumnInOrder(RowCursor& source, RowCursor& destination, const ShearedChannels& channels)
        : source_(source),
          destination_(destination),
          count_(rows::ChannelCount(channels.set)),
          from_(LayoutOf(source.Picture(), channels.set)),
          to_(LayoutOf(destination.Picture(), channels.set)) {
        std::memcpy(background_, channels.background, sizeof(background_));
    }

    void Shear(std::int32_t x, const Distance& distance) {
        const RowRange range = destination_.Rows();
        for (std::int32_t y = range.first; y < range.end; ++y) Store(x, y, background_);
        std::uint8_t left[4];
        for (int c = 0; c < count_; ++c) left[c] = rows::LeftOfSkew(distance.weight, background_[c]);
        bool ends = false;
        const RowRange sheared = source_.Rows();
        for (std::int32_t y = sheared.first; y < sheared.end; ++y) {
            const std::uint8_t* const row = source_.Row(y);
            ends = row && y + 1 == source_->Height;
            if (!row) continue;
            std::uint8_t moved[4];
            for (int c = 0; c < count_; ++c) {
                const std::uint8_t value = row[std::int64_t{x} * from_.pixelSize + from_.offset[c]];
                const std::uint8_t leaves = rows::LeftOfSkew(distance.weight, value);
                moved[c] = static_cast<std::uint8_t>(value - (leaves - left[c]));
                left[c] = leaves;
            }
            Store(x, distance.offset + y, moved);
        }
        std::uint8_t end[4];
        for (int c = 0; c < count_; ++c) end[c] = rows::EndOfSkew(distance.weight, background_[c], left[c]);
        if (ends) Store(x, distance.offset + source_->Height - 1, end);
    }

  private:
    void Store(std::int32_t x, std::int64_t y, const std::uint8_t* values) {
        if (x >= destination_->Width || y < 0 || y >= destination_->Height) return;
        std::uint8_t* const row = destination_.Row(static_cast<std::int32_t>(y));
        if (!row) return;
        for (int c = 0; c < count_; ++c) row[std::int64_t{x} * to_.pixelSize + to_.offset[c]] = values[c];
    }

    RowCursor& source_;
    RowCursor& destination_;
    int count_;
    rows::PixelLayout from_;
    rows::PixelLayout to_;
    std::uint8_t background_[4];
};

}  // namespace

bool ShearColumns(RowCursor& source, RowCursor& destination, const ShearedChannels& channels, double start,
                  double slope) {
    double position = start;
    if (RowsMeet(source.Picture(), destination.Picture())) {
        ColumnInOrder column(source, destination, channels);
        for (std::int32_t x = 0; x < source->Width; ++x, position = position - slope)
            column.Shear(x, DistanceOf(position));
        return true;
    }
    const bool mapped = source->IsMapping || destination->IsMapping;
    const std::int32_t columns = mapped ? kMappedStripColumns : kStripColumns;
    const ScratchBytes ring(Strip::BytesFor(columns));
    if (!ring) return false;
    Strip strip(source, destination, channels, columns, ring.data());
    const std::int32_t width = std::min(source->Width, destination->Width);
    for (const rows::Block block : rows::Blocks(width, columns)) position = strip.Shear(block, position, slope);
    return true;
}

}  // namespace tqx
