// Box blurs by running sums, any number of passes, and the fractional blur.
#include "plugin/filters/Blur.h"

#include <algorithm>
#include <cmath>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Saturate.h"
#include "plugin/buffer/Scratch.h"
#include "plugin/filters/PackedRows.h"
#include "plugin/rows/BoxBlur.h"
#include "plugin/rows/FractionalBlur.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

// 255 × (2 radius + 1) must fit into 32 bits.
constexpr std::int32_t kLargestRadius = (2147483647 / 255 - 1) / 2;

// Rows of a picture blurred in place are kept until they have left every sum. For large radii
// that is the whole picture, so the columns are then worked on in strips of about this many bytes.
constexpr std::int64_t kKeptBytes = 16 << 20;

// What both directions of a blur work on: the size that both pictures have.
struct BlurWork {
    Operation& operation;
    std::int32_t width;
    std::int32_t height;
    RowRange rows;  // of that size, those that the source's storage has
    Sharing sharing;

    explicit BlurWork(Operation& begun)
        : operation(begun),
          width(begun.CommonWidth()),
          height(begun.CommonHeight()),
          rows(CommonRows(begun.source.Rows(), {0, height})),
          sharing(begun.Sharing()) {}

    bool IsEmpty() const { return width < 1 || rows.IsEmpty(); }

    // Whether a row may go along the row before it is stored: what is stored would be read back.
    bool CanFuse() const { return HasBytesOfItsOwn(operation.destination.Picture(), operation.channels); }
};

// Rows as the picture had them before the blur began, whatever was written meanwhile.
class OriginalRows {
  public:
    // `kept`: how many rows above the current one are asked for again, when the pictures share
    // their pixels. For `width` columns at most.
    OriginalRows(const BlurWork& work, const PackedRows& rows, std::int64_t kept, std::int32_t width)
        : work_(work),
          rows_(rows),
          live_(work.sharing == Sharing::Apart),
          everyRowKept_(work.sharing == Sharing::Overlapping),
          ring_(rows,
                live_           ? 1
                : everyRowKept_ ? work.height
                                : kept + 1,
                width),
          scratch_(2 * rows.BytesOf(width)) {}

    explicit operator bool() const { return ring_ && scratch_; }

    // Begins with columns `first` to `first + count - 1`.
    void Start(std::int32_t first, std::int32_t count) {
        first_ = first;
        count_ = count;
        ring_.Restart(first, count);
        for (std::int32_t y = work_.rows.first; everyRowKept_ && y < work_.rows.end; ++y) ring_.Row(y);
    }

    // A row at or below the one that is about to be written. Good until the next call.
    const std::uint8_t* Coming(std::int32_t y) {
        return everyRowKept_ ? ring_.Row(y) : rows_.Packed(y, first_, count_, scratch_.data());
    }

    // A row at or above the one that was written last. Good until the next call.
    const std::uint8_t* Past(std::int32_t y) {
        if (!live_) return ring_.Row(y);
        return rows_.Packed(y, first_, count_, scratch_.data() + rows_.BytesOf(count_));
    }

    // Keeps row y, about to be written. False when the picture has no such row.
    bool Keep(std::int32_t y) { return live_ ? rows_.Have(y) : ring_.Row(y) != nullptr; }

  private:
    const BlurWork& work_;
    const PackedRows& rows_;
    bool live_;
    bool everyRowKept_;
    std::int32_t first_ = 0;
    std::int32_t count_ = 0;
    RowRing ring_;
    ScratchBytes scratch_;
};

// The running sums of a box blur's columns.
template <class Sum>
class ColumnSums {
  public:
    // For rows of `bytes` bytes at most.
    ColumnSums(OriginalRows& rows, std::int32_t radius, const BlurWork& work, std::int64_t bytes)
        : rows_(rows),
          blur_(rows::PlanColumnBlur<Sum>(2 * radius + 1)),
          radius_(radius),
          height_(work.height),
          present_(work.rows),
          sums_(bytes) {}

    explicit operator bool() const { return static_cast<bool>(sums_); }

    // Sums the rows up to `radius` away from the first one that is there: the picture's first row
    // for those above it, the last for those below. Rows that aren't there count nothing.
    void Prime(std::int64_t bytes) {
        const std::int64_t reach = std::int64_t{present_.first} + radius_;
        const auto end = static_cast<std::int32_t>(std::min<std::int64_t>(reach + 1, present_.end));
        count_ = static_cast<std::int32_t>(bytes);
        std::fill_n(sums_.data(), count_, Sum{0});
        for (std::int32_t y = present_.first; y < end; ++y) Add(y, 1);
        if (present_.first == 0) Add(0, radius_);
        if (present_.end == height_) Add(height_ - 1, static_cast<std::int32_t>(reach - (height_ - 1)));
    }

    // Stores row y's means and moves on to the next row.
    void Slide(std::int32_t y, std::uint8_t* result) {
        const bool last = y == height_ - 1;
        const auto next = static_cast<std::int32_t>(std::min(std::int64_t{y} + radius_ + 1, std::int64_t{height_} - 1));
        const std::uint8_t* const leaving = last ? nullptr : rows_.Past(std::max(y - radius_, 0));
        const std::uint8_t* const entering = last ? nullptr : rows_.Coming(next);
        rows::SlideRow(blur_, sums_.data(), leaving, entering, count_, result);
    }

  private:
    void Add(std::int32_t y, std::int32_t times) {
        if (times < 1) return;
        if (const std::uint8_t* const row = rows_.Coming(y)) rows::AddRow(blur_, row, times, count_, sums_.data());
    }

    OriginalRows& rows_;
    rows::ColumnBlur<Sum> blur_;
    std::int32_t radius_;
    std::int32_t height_;
    RowRange present_;
    std::int32_t count_ = 0;  // bytes of a row
    Scratch<Sum> sums_;
};

// Two packed rows of the work's width.
struct PackedPair {
    ScratchBytes row;
    ScratchBytes result;

    explicit PackedPair(std::int64_t bytes) : row(bytes), result(bytes) {}
    explicit operator bool() const { return row && result; }
};

// Blurs along the rows of the destination, which it reads by its own layout. Rows that `source`
// lacks were not written and stay.
template <class AlongRow>
void BlurDestinationRows(const BlurWork& work, const PackedRows& source, PackedPair& pair, const AlongRow& alongRow) {
    const PackedRows rows(work.operation.destination, work.operation.destination, work.operation.channels);
    for (std::int32_t y = work.rows.first; y < work.rows.end; ++y) {
        if (!source.Have(y) || !rows.Read(y, 0, work.width, pair.row.data())) continue;
        alongRow(pair.row.data(), pair.result.data());
        rows.Write(y, 0, work.width, pair.result.data());
    }
}

// Stores row y of the destination, whole, blurred along the row.
template <class AlongRow>
void WriteBlurredRow(const PackedRows& rows, std::int32_t y, std::int32_t width, PackedPair& pair,
                     const AlongRow& alongRow) {
    std::uint8_t* const direct = rows.PackedInPlace(y, 0, width);
    alongRow(pair.row.data(), direct ? direct : pair.result.data());
    if (!direct) rows.Write(y, 0, width, pair.result.data());
}

// How many columns to work on at once.
std::int32_t StripWidth(const BlurWork& work, const PackedRows& rows, std::int32_t radius) {
    if (work.sharing != Sharing::SamePixels) return work.width;
    const std::int64_t kept = std::min<std::int64_t>(std::int64_t{radius} + 1, work.height);
    const std::int64_t columns = kKeptBytes / (kept * rows.Channels());
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(columns, 1, work.width));
}

template <class Sum>
void BoxBlurWith(const BlurWork& work, std::int32_t radius) {
    const PackedRows rows(work.operation);
    const std::int32_t strip = StripWidth(work, rows, radius);
    OriginalRows originals(work, rows, radius, strip);
    ColumnSums<Sum> sums(originals, radius, work, rows.BytesOf(strip));
    PackedPair pair(rows.BytesOf(work.width));
    if (!originals || !sums || !pair) return;
    const rows::RowBlur rowBlur = rows::PlanRowBlur(radius);
    const auto alongRow = [&](const std::uint8_t* row, std::uint8_t* result) {
        rows::BlurRow(rowBlur, row, rows.Channels(), work.width, result);
    };
    const bool fused = strip == work.width && work.CanFuse();
    for (const rows::Block columns : rows::Blocks(work.width, strip)) {
        originals.Start(columns.first, columns.count);
        sums.Prime(rows.BytesOf(columns.count));
        for (std::int32_t y = work.rows.first; y < work.rows.end; ++y) {
            const bool present = originals.Keep(y);
            sums.Slide(y, pair.row.data());
            if (!present) continue;
            if (fused)
                WriteBlurredRow(rows, y, work.width, pair, alongRow);
            else
                rows.Write(y, columns.first, columns.count, pair.row.data());
        }
    }
    if (!fused) BlurDestinationRows(work, rows, pair, alongRow);
}

void BoxBlur(const BlurWork& work, std::int32_t radius) {
    if (rows::FitsWords(2 * radius + 1))
        BoxBlurWith<std::uint16_t>(work, radius);
    else
        BoxBlurWith<std::int32_t>(work, radius);
}

// Mixes rows y - 1, y and y + 1.
template <class RowAt>
void MixColumns(const rows::ThreeTapsPlan& plan, const RowAt& rowAt, std::int32_t y, std::int32_t height,
                std::int32_t bytes, std::uint8_t* result) {
    const bool first = y == 0, last = y == height - 1;
    rows::MixRows(plan, rowAt(first ? y : y - 1), rowAt(y), rowAt(first || last ? y : y + 1), bytes, result);
}

void FractionalBlur(const BlurWork& work, const rows::ThreeTaps& taps) {
    const PackedRows rows(work.operation);
    const auto bytes = static_cast<std::int32_t>(rows.BytesOf(work.width));
    const rows::ThreeTapsPlan plan = rows::PlanThreeTaps(taps, std::int64_t{bytes} * work.height);
    const bool overlapping = work.sharing == Sharing::Overlapping;
    RowRing ring(rows, overlapping ? work.height : 3, work.width);
    PackedPair pair(bytes);
    if (!ring || !pair) return;
    for (std::int32_t y = work.rows.first; overlapping && y < work.rows.end; ++y) ring.Row(y);
    const bool apart = work.sharing == Sharing::Apart;
    const auto rowAt = [&](std::int32_t y) { return apart ? ring.Unchanged(y) : ring.Row(y); };
    const auto alongRow = [&](const std::uint8_t* row, std::uint8_t* result) {
        rows::MixAlongRow(plan, row, rows.Channels(), work.width, result);
    };
    const bool fused = work.CanFuse();
    for (std::int32_t y = work.rows.first; y < work.rows.end; ++y) {
        if (y + 1 < work.height) rowAt(y + 1);  // while it is what it was
        if (!rowAt(y)) continue;
        MixColumns(plan, rowAt, y, work.height, bytes, pair.row.data());
        if (fused)
            WriteBlurredRow(rows, y, work.width, pair, alongRow);
        else
            rows.Write(y, 0, work.width, pair.row.data());
    }
    if (!fused) BlurDestinationRows(work, rows, pair, alongRow);
}

}  // namespace

sdk::Object* BoxBlurFilter(sdk::Object* self, sdk::Object* dest, double radius) {
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    const BlurWork work(operation);
    const std::int32_t whole = std::max(Truncate(radius), 0);
    if (!work.IsEmpty() && whole <= kLargestRadius) BoxBlur(work, whole);
    return operation.Give();
}

sdk::Object* BoxBlurFilter(sdk::Object* self, sdk::Object* dest, double radius, std::int32_t iterations) {
    OwnedObject picture = OwnedObject::Retain(self);
    for (std::int32_t i = 0; i < iterations && picture; ++i)
        picture = OwnedObject(BoxBlurFilter(picture.Get(), i == 0 ? dest : nullptr, radius));
    return picture.Give();
}

sdk::Object* BoxBlurFractionalFilter(sdk::Object* self, sdk::Object* dest, double radius) {
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    const BlurWork work(operation);
    const double fraction = std::isfinite(radius) ? radius - std::floor(radius) : 0;
    if (!work.IsEmpty()) FractionalBlur(work, {fraction, 1 / (2 * fraction + 1)});
    return operation.Give();
}

}  // namespace tqx
