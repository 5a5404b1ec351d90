// Histograms of columns, sliding down the picture, and their sum sliding along rows.
#include "plugin/filters/OilColumns.h"

#include <algorithm>
#include <cstring>

#include "plugin/buffer/Scratch.h"
#include "plugin/filters/PackedRows.h"

namespace tqx {

namespace {

constexpr std::int32_t kLargestRange = 127;  // 255 × 255 samples

// Columns are painted in strips whose histograms stay in the second cache.
constexpr std::int64_t kHistogramBytes = 512 << 10;
constexpr std::int32_t kFewestColumns = 64;

std::int32_t BinOf(std::int32_t levels, std::uint8_t value) { return levels * value >> 8; }

// Columns first .. last - 1 of a picture, of which `first` and `last` may reach past what is painted.
struct Span {
    std::int32_t first, last;

    std::int32_t Count() const { return last - first; }
};

// Histograms side by side: one for each column and channel, then those of the neighbourhood, then an
// empty one. Sums only where a bin has several values.
class Histograms {
  public:
    Histograms(std::int32_t levels, int channels, std::int32_t columns)
        : levels_(levels),
          bins_((levels + rows::kBinsAtOnce - 1) / rows::kBinsAtOnce * rows::kBinsAtOnce),
          channels_(channels),
          columns_(columns),
          total_((columns + 1) * std::int64_t{channels} + 1),
          counts_(total_, bins_),
          sums_(HasSums() ? total_ : 0, bins_) {}

    explicit operator bool() const { return counts_ && sums_; }

    // How many columns' histograms take kHistogramBytes.
    static std::int32_t ColumnsThatStay(std::int32_t levels, int channels) {
        const std::int64_t bytes = std::int64_t{levels} * channels * (levels < 256 ? 6 : 2);
        return static_cast<std::int32_t>(kHistogramBytes / bytes);
    }

    void Empty() {
        std::memset(counts_.data(), 0, static_cast<std::size_t>(total_ * bins_) * sizeof(std::uint16_t));
        if (HasSums()) std::memset(sums_.data(), 0, static_cast<std::size_t>(total_ * bins_) * sizeof(std::uint32_t));
    }

    void EmptyNeighbourhood() {
        std::fill_n(Counts(columns_, 0), channels_ * bins_, std::uint16_t{0});
        if (HasSums()) std::fill_n(Sums(columns_, 0), channels_ * bins_, 0U);
    }

    // A row of samples comes in (times 1) or goes out (times -1).
    void AddRow(const std::uint8_t* row, std::int32_t columns, int times) {
        for (std::int32_t column = 0; column < columns; ++column)
            for (int channel = 0; channel < channels_; ++channel) {
                const std::uint8_t value = row[std::int64_t{column} * channels_ + channel];
                const std::int32_t bin = BinOf(levels_, value);
                std::uint16_t& count = Counts(column, channel)[bin];
                count = static_cast<std::uint16_t>(count + times);
                if (HasSums()) Sums(column, channel)[bin] += static_cast<std::uint32_t>(times * value);
            }
    }

    // Column `entering` joins the neighbourhood and `leaving` leaves it; below 0: none. Stores the
    // means of the fullest bins.
    void Slide(std::int32_t entering, std::int32_t leaving, std::uint8_t* means) {
        for (int channel = 0; channel < channels_; ++channel) {
            std::uint16_t* const counts = Counts(columns_, channel);
            const std::int32_t fullest =
                slideCounts_(counts, CountsOrNone(entering, channel), CountsOrNone(leaving, channel), bins_);
            if (!HasSums()) {
                means[channel] = static_cast<std::uint8_t>(counts[fullest] ? fullest : 0);
                continue;
            }
            std::uint32_t* const sums = Sums(columns_, channel);
            slideSums_(sums, SumsOrNone(entering, channel), SumsOrNone(leaving, channel), bins_);
            means[channel] = static_cast<std::uint8_t>(counts[fullest] ? sums[fullest] / counts[fullest] : 0);
        }
    }

    // Copies a channel's neighbourhood; bins past the levels keep what they held.
    void CopyTo(int channel, rows::OilHistogram* histogram) {
        std::copy_n(Counts(columns_, channel), levels_, histogram->count);
        for (std::int32_t bin = 0; bin < levels_; ++bin)
            histogram->sum[bin] =
                HasSums() ? Sums(columns_, channel)[bin] : histogram->count[bin] * static_cast<std::uint32_t>(bin);
    }

  private:
    bool HasSums() const { return levels_ < 256; }

    std::int64_t IndexOf(std::int32_t column, int channel) const {
        return (std::int64_t{column} * channels_ + channel) * bins_;
    }
    std::uint16_t* Counts(std::int32_t column, int channel) { return counts_.data() + IndexOf(column, channel); }
    std::uint32_t* Sums(std::int32_t column, int channel) { return sums_.data() + IndexOf(column, channel); }
    const std::uint16_t* CountsOrNone(std::int32_t column, int channel) {
        return column < 0 ? Counts(columns_ + 1, 0) : Counts(column, channel);
    }
    const std::uint32_t* SumsOrNone(std::int32_t column, int channel) {
        return column < 0 ? Sums(columns_ + 1, 0) : Sums(column, channel);
    }

    rows::SlideCountsFunction* slideCounts_ = rows::kSlideCounts.Chosen();
    rows::SlideSumsFunction* slideSums_ = rows::kSlideSums.Chosen();
    std::int32_t levels_;
    std::int32_t bins_;
    int channels_;
    std::int32_t columns_;
    std::int64_t total_;
    Scratch<std::uint16_t> counts_;
    Scratch<std::uint32_t> sums_;
};

// Paints strips of a picture.
class ColumnPainter {
  public:
    ColumnPainter(Operation& operation, std::int32_t levels, std::int32_t range)
        : rows_(operation, PackedOrder::OfTheSet),
          range_(range),
          strip_(std::min(rows_.Width(), std::max(Histograms::ColumnsThatStay(levels, rows_.Channels()) - 2 * range,
                                                  std::max(kFewestColumns, 2 * range)))),
          histograms_(levels, rows_.Channels(), std::min(rows_.Width(), strip_ + 2 * range)),
          row_(rows_.BytesOf(std::int64_t{strip_} + 2 * range)),
          result_(rows_.BytesOf(strip_)) {}

    explicit operator bool() const { return histograms_ && row_ && result_; }

    void Paint(rows::OilHistogram* blue) {
        for (const rows::Block strip : rows::Blocks(rows_.Width(), strip_))
            PaintStrip({strip.first, strip.End()}, blue);
    }

  private:
    void PaintStrip(const Span& painted, rows::OilHistogram* blue) {
        const Span seen{std::max(painted.first - range_, 0), UpTo(painted.last, rows_.Width())};
        const RowRange present = rows_.SourceRows();
        histograms_.Empty();
        for (std::int32_t y = present.first; y < UpTo(present.first, present.end); ++y) AddRow(y, seen, 1);
        for (std::int32_t y = present.first; y < present.end; ++y) {
            if (y - range_ > present.first) AddRow(y - range_ - 1, seen, -1);
            if (present.end - y > range_) AddRow(y + range_, seen, 1);
            if (!rows_.HasSource(y)) continue;
            PaintRow(painted, seen);
            rows_.Write(y, painted.first, painted.Count(), result_.data());
            if (painted.last == rows_.Width() && rows_.Channels() == 3) histograms_.CopyTo(2, blue);
        }
    }

    // The place a range further on, or the end.
    std::int32_t UpTo(std::int32_t at, std::int32_t end) const { return end - at > range_ ? at + range_ : end; }

    void AddRow(std::int32_t y, const Span& seen, int times) {
        if (const std::uint8_t* const row = rows_.Packed(y, seen.first, seen.Count(), row_.data()))
            histograms_.AddRow(row, seen.Count(), times);
    }

    void PaintRow(const Span& painted, const Span& seen) {
        std::uint8_t* means = result_.data();
        histograms_.EmptyNeighbourhood();
        for (std::int32_t x = seen.first; x < UpTo(painted.first, seen.last); ++x)
            histograms_.Slide(x - seen.first, -1, means);
        for (std::int32_t x = painted.first; x < painted.last; ++x, means += rows_.Channels()) {
            const std::int32_t entering = seen.last - x > range_ ? x + range_ - seen.first : -1;
            const std::int32_t leaving = x - range_ > seen.first ? x - range_ - 1 - seen.first : -1;
            histograms_.Slide(entering, x == painted.first ? -1 : leaving, means);
        }
    }

    PackedRows rows_;
    std::int32_t range_;
    std::int32_t strip_;  // columns painted at once
    Histograms histograms_;
    ScratchBytes row_;     // where the picture's own isn't packed
    ScratchBytes result_;  // of a strip
};

}  // namespace

bool PaintByColumns(Operation& operation, std::int32_t levels, std::int32_t range, rows::OilHistogram* blue) {
    if (range < 0 || range > kLargestRange || rows::SetHasAlpha(operation.channels)) return false;
    if (operation.source->IsMapping || operation.destination->IsMapping || operation.source->Width < 1) return false;
    ColumnPainter painter(operation, levels, range);
    if (!painter) return false;
    painter.Paint(blue);
    return true;
}

}  // namespace tqx
