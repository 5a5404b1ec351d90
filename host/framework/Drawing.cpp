// Rows of a source picked, blended by its mask and stored, any depth to any other.
#include "host/framework/Drawing.h"

#include <algorithm>
#include <new>
#include <vector>

namespace host {

namespace {

// The positions of one side of a drawing: `count` target pixels from `first` on, each with the
// source pixel under its centre.
struct Scaled {
    std::int64_t first = 0;
    std::vector<std::int32_t> source;
};

// floor((2 i + 1) · from / (2 · to)): the source pixel under the centre of pixel i.
std::int64_t PixelUnderCentre(std::int64_t i, std::int64_t from, std::int64_t to) {
    return static_cast<std::int64_t>((static_cast<__int128>(2 * i + 1) * from) / (2 * static_cast<__int128>(to)));
}

Scaled ScaleSide(std::int64_t to, std::int64_t toLength, std::int64_t from, std::int64_t fromLength,
                 std::int64_t targetLimit, std::int64_t sourceLimit) {
    Scaled scaled;
    const Span visible = Clip(to, toLength, targetLimit);
    for (std::int64_t at = visible.first; at < visible.end; ++at) {
        const std::int64_t source = from + PixelUnderCentre(at - to, fromLength, toLength);
        // Positions grow, so those inside the source are one run.
        if (source < 0) continue;
        if (source >= sourceLimit) break;
        if (scaled.source.empty()) scaled.first = at;
        scaled.source.push_back(static_cast<std::int32_t>(source));
    }
    return scaled;
}

// A copy of a storage that goes with its scope.
class TemporaryCopy {
  public:
    explicit TemporaryCopy(const PictureStorage& source) {
        if (!CopyStorage(copy_, source)) throw std::bad_alloc();
    }
    ~TemporaryCopy() { DestroyStorage(copy_); }
    TemporaryCopy(const TemporaryCopy&) = delete;
    TemporaryCopy& operator=(const TemporaryCopy&) = delete;
    const PictureStorage* get() const { return &copy_; }

  private:
    PictureStorage copy_;
};

// One source row, picked into target columns.
void PickRow(const PictureStorage& source, std::int32_t y, const Scaled& columns, std::vector<RgbColor>& whole,
             std::vector<RgbColor>& picked) {
    const std::int32_t first = columns.source.front(), last = columns.source.back();
    whole.resize(static_cast<std::size_t>(last - first) + 1);
    LoadColors(source, first, y, last - first + 1, whole.data());
    picked.resize(columns.source.size());
    for (std::size_t i = 0; i < picked.size(); ++i)
        picked[i] = whole[static_cast<std::size_t>(columns.source[i] - first)];
}

}  // namespace

RgbColor Blend(RgbColor below, RgbColor above, RgbColor mask) {
    RgbColor result = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const std::uint32_t keep = mask >> shift & 255;
        const std::uint32_t sum = keep * (below >> shift & 255) + (255 - keep) * (above >> shift & 255);
        result |= (sum + 127) / 255 << shift;
    }
    return result;
}

void DrawStorage(PictureStorage& target, const Rectangle& to, const PictureStorage& source, const Rectangle& from,
                 const PictureStorage* mask) {
    if (IsEmpty(to) || IsEmpty(from)) return;
    if (source.bytes == target.bytes || (mask && mask->bytes == target.bytes)) {
        TemporaryCopy unchanged(target);
        const PictureStorage* copy = unchanged.get();
        return DrawStorage(target, to, source.bytes == target.bytes ? *copy : source, from,
                           mask && mask->bytes == target.bytes ? copy : mask);
    }
    const std::int64_t right = mask ? std::min(source.width, mask->width) : source.width;
    const std::int64_t bottom = mask ? std::min(source.height, mask->height) : source.height;
    const Scaled columns = ScaleSide(to.x, to.width, from.x, from.width, target.width, right);
    const Scaled rows = ScaleSide(to.y, to.height, from.y, from.height, target.height, bottom);
    if (columns.source.empty()) return;
    const auto x = static_cast<std::int32_t>(columns.first);
    const auto count = static_cast<std::int32_t>(columns.source.size());
    std::vector<RgbColor> whole, colors, opacity, below(columns.source.size());
    for (std::size_t i = 0; i < rows.source.size(); ++i) {
        const auto y = static_cast<std::int32_t>(rows.first + static_cast<std::int64_t>(i));
        PickRow(source, rows.source[i], columns, whole, colors);
        if (mask) {
            PickRow(*mask, rows.source[i], columns, whole, opacity);
            LoadColors(target, x, y, count, below.data());
            for (std::size_t k = 0; k < colors.size(); ++k) colors[k] = Blend(below[k], colors[k], opacity[k]);
        }
        StoreColors(target, x, y, count, colors.data());
    }
}

}  // namespace host
