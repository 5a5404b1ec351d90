#include "plugin/ops/CopyPixels.h"

#include "plugin/buffer/Destination.h"
#include "plugin/buffer/FormatConversion.h"
#include "plugin/buffer/MappedStorage.h"
#include "plugin/buffer/PixelBuffer.h"
#include "plugin/buffer/RowPairs.h"
#include "plugin/buffer/RowWalk.h"
#include "plugin/ops/CopyRectangle.h"
#include "plugin/rows/Convert.h"

namespace tqx {

namespace {

// The rows that a picture has of `count` from row `first` on, counted from there.
RowRange RowsFrom(const PixelBuffer& buffer, std::int32_t first, std::int32_t count) {
    const RowRange range = CommonRows(RowsOf(buffer), {first, first + count});
    return {range.first - first, range.end - first};
}

void CopyRows(PixelBuffer& source, PixelBuffer& destination, const CopyRectangle& area,
              const rows::ConversionPlan& conversion) {
    const StorageWatch sourceWatch(source), destinationWatch(destination);
    RowPairs pairs(source, destination);
    const RowRange range =
        CommonRows(RowsFrom(source, area.sourceY, area.height), RowsFrom(destination, area.destY, area.height));
    RowWalk sourceWalk(source, {area.sourceY + range.first, area.sourceY + range.end}),
        destinationWalk(destination, {area.destY + range.first, area.destY + range.end});
    const std::int64_t first = std::int64_t{area.sourceX} * source.PixelSize;
    const std::int64_t destinationFirst = std::int64_t{area.destX} * destination.PixelSize;
    for (std::int32_t i = range.first; i < range.end; ++i) {
        sourceWalk.To(area.sourceY + i);
        destinationWalk.To(area.destY + i);
        if (const RowPair pair = pairs.At(area.sourceY + i, area.destY + i))
            rows::ConvertRow(conversion, pair.source + first, pair.destination + destinationFirst, area.width);
        if (!YieldAndKeep(destination, destinationWatch) || !sourceWatch.Holds()) return;
    }
}

// Within a mapped picture rows are read and written far apart.
void CopyWithin(PixelBuffer& buffer, const CopyRectangle& area, const rows::ConversionPlan& conversion) {
    SecondWindow second(buffer);
    CopyRows(second.Picture(), buffer, area, conversion);
}

// The destination's tests and yield come first.
bool Begin(PixelBuffer& source, PixelBuffer& destination) {
    if (!source.Valid) return false;
    const StorageWatch sourceWatch(source);
    if (!BeginInPlace(destination) || !sourceWatch.Holds()) return false;
    const StorageWatch destinationWatch(destination);
    return BeginInPlace(source) && destinationWatch.Holds();
}

}  // namespace

void CopyPixels(sdk::Object* self, sdk::Object* sourceObject, std::int32_t destX, std::int32_t destY,
                std::int32_t width, std::int32_t height, std::int32_t sourceX, std::int32_t sourceY) {
    if (!sourceObject) return;
    PixelBuffer& source = *BufferOf(sourceObject);
    PixelBuffer& destination = *BufferOf(self);
    if (!Begin(source, destination)) return;
    const CopyRectangle area = ClipCopy({destX, destY, width, height, sourceX, sourceY}, destination.Width,
                                        destination.Height, source.Width, source.Height);
    const auto conversion = ChooseConversion(source, destination);
    if (area.IsEmpty() || !conversion) return;
    const rows::ConversionPlan plan = rows::PlanConversion(*conversion);
    if (&source == &destination && source.IsMapping)
        CopyWithin(source, area, plan);
    else
        CopyRows(source, destination, area, plan);
}

void CopyPixels(sdk::Object* self, sdk::Object* source, std::int32_t destX, std::int32_t destY, std::int32_t width,
                std::int32_t height) {
    CopyPixels(self, source, destX, destY, width, height, 0, 0);
}

void CopyPixels(sdk::Object* self, sdk::Object* source) {
    const PixelBuffer& buffer = *BufferOf(self);
    CopyPixels(self, source, 0, 0, buffer.Width, buffer.Height);
}

}  // namespace tqx
