// Levels from a histogram of luminance, and the curve that stretches between them.
#include "plugin/filters/AutoLevel.h"

#include <cstring>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Rectangle.h"
#include "plugin/buffer/Saturate.h"
#include "plugin/rows/LookUp.h"
#include "plugin/rows/Luminance.h"

namespace tqx {

namespace {

// What a rectangle's pixels are stretched by.
struct Levels {
    std::int32_t low;
    std::int32_t high;
};

// Unlike fills, automatic levels refuse a rectangle that ends before the picture begins.
bool EndsBeforePicture(std::int32_t start, std::int32_t size) {
    return std::max(std::int64_t{start}, std::int64_t{start} + size) <= 0;
}

Rectangle ClipArea(const PixelBuffer& buffer, std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h) {
    if (EndsBeforePicture(x, w) || EndsBeforePicture(y, h)) return {0, 0, 0, 0};
    return ClipTo(buffer, x, y, w, h);
}

// False when script code took the picture's storage in a yield.
bool CountArea(RowCursor& picture, const Rectangle& area, rows::Histogram* histogram) {
    const rows::PixelLayout layout = LayoutOf(picture.Picture(), rows::ChannelSet::Rgb);
    const std::int64_t first = std::int64_t{area.x} * layout.pixelSize;
    rows::CountLuminanceFunction* const count = rows::kCountLuminance.Chosen();
    return ForRowsInPlace(picture, area.Rows(),
                          [&](const std::uint8_t* row) { count(layout, row + first, area.width, histogram); });
}

// The largest level up to which no more than `limit` pixels lie; 0 if there is none.
std::int32_t LastLevelWithin(const std::int32_t (&cumulative)[256], std::int32_t limit) {
    for (std::int32_t level = 255; level >= 0; --level)
        if (cumulative[level] <= limit) return level;
    return 0;
}

// A share of the pixels, in single precision throughout.
std::int32_t ShareOf(std::int32_t total, float share) { return Truncate(static_cast<float>(total) * share); }

Levels FindLevels(const rows::Histogram& histogram) {
    std::int32_t cumulative[256];
    std::uint32_t sum = 0;
    for (int level = 0; level < 256; ++level) {
        sum += histogram.count[level];
        cumulative[level] = static_cast<std::int32_t>(sum);
    }
    const std::int32_t total = cumulative[255];
    return {LastLevelWithin(cumulative, ShareOf(total, 0.005f)), LastLevelWithin(cumulative, ShareOf(total, 0.995f))};
}

rows::Table StretchTable(const Levels& levels) {
    rows::Table table;
    // Infinite where the levels coincide; times 0 that is not a number and stores 0.
    const double scale = 255.0 / (levels.high - levels.low);
    for (std::int32_t value = 0; value < 256; ++value) {
        if (value < levels.low)
            table.entry[value] = 0;
        else if (value > levels.high)
            table.entry[value] = 255;
        else
            table.entry[value] = TruncateToByte(scale * (value - levels.low));
    }
    return table;
}

void StretchArea(RowCursor& picture, const Rectangle& area, const rows::Table& table) {
    const rows::PixelLayout layout = LayoutOf(picture.Picture(), rows::ChannelSet::Rgb);
    const std::int64_t first = std::int64_t{area.x} * layout.pixelSize;
    const rows::LookUpPlan plan = rows::PlanLookUp(rows::ChannelSet::Rgb, {{&table, &table, &table}}, layout, layout);
    const RowRange range = CommonRows(picture.Rows(), area.Rows());
    for (std::int32_t y = range.first; y < range.end; ++y)
        if (std::uint8_t* const row = picture.Row(y)) rows::LookUpRow(plan, row + first, row + first, area.width);
}

}  // namespace

bool AutoLevel(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h) {
    PixelBuffer& buffer = *BufferOf(self);
    if (!buffer.IsRGB || !buffer.Valid) return false;
    const Rectangle area = ClipArea(buffer, x, y, w, h);
    RowCursor picture(buffer);
    if (area.IsEmpty() || !BeginInPlace(picture)) return false;
    rows::Histogram histogram{};
    if (!CountArea(picture, area, &histogram)) return false;
    StretchArea(picture, area, StretchTable(FindLevels(histogram)));
    return true;
}

bool AutoLevel(sdk::Object* self) {
    const PixelBuffer& buffer = *BufferOf(self);
    return AutoLevel(self, 0, 0, buffer.Width, buffer.Height);
}

}  // namespace tqx
