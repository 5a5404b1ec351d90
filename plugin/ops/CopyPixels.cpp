// The members CopyPixels: a cut rectangle, converted row by row.
#include "plugin/ops/CopyPixels.h"

#include "plugin/buffer/CopyRectangle.h"
#include "plugin/buffer/FormatConversion.h"
#include "plugin/buffer/Operation.h"
#include "plugin/rows/Convert.h"
#include "plugin/rows/Streaming.h"

namespace tqx {

namespace {

// The rows that a picture has of `count` from row `first` on, counted from there.
RowRange RowsFrom(const RowCursor& picture, std::int32_t first, std::int32_t count) {
    const RowRange range = CommonRows(picture.Rows(), {first, first + count});
    return {range.first - first, range.end - first};
}

void CopyRows(RowCursor& source, RowCursor& destination, const CopyRectangle& area,
              const rows::ConversionPlan& conversion) {
    const rows::StreamsEnd end;
    RowPairs pairs(source, destination);
    const std::int64_t first = std::int64_t{area.sourceX} * source->PixelSize;
    const std::int64_t destinationFirst = std::int64_t{area.destX} * destination->PixelSize;
    const RowRange range =
        CommonRows(RowsFrom(source, area.sourceY, area.height), RowsFrom(destination, area.destY, area.height));
    for (std::int32_t i = range.first; i < range.end; ++i) {
        if (const RowPair pair = pairs.At(area.sourceY + i, area.destY + i))
            rows::ConvertRow(conversion, pair.source + first, pair.destination + destinationFirst, area.width);
        if (!destination.Yield() || !source.Stands()) return;
    }
}

}  // namespace

void CopyPixels(sdk::Object* self, sdk::Object* sourceObject, std::int32_t destX, std::int32_t destY,
                std::int32_t width, std::int32_t height, std::int32_t sourceX, std::int32_t sourceY) {
    if (!sourceObject) return;
    RowCursor source(*BufferOf(sourceObject)), destination(*BufferOf(self));
    // The destination's tests and yield come first.
    if (!source->Valid || !BeginInPlace(destination) || !Begin({&source}) || !destination.Stands()) return;
    const CopyRectangle area = ClipCopy({destX, destY, width, height, sourceX, sourceY}, destination->Width,
                                        destination->Height, source->Width, source->Height);
    const auto conversion = ChooseConversion(source.Picture(), destination.Picture());
    if (area.IsEmpty() || !conversion) return;
    const std::int64_t bytes = rows::BytesToWrite(area.width, area.height, destination->PixelSize);
    CopyRows(source, destination, area, rows::PlanConversion(*conversion, bytes));
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
