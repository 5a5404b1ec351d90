// The columns and rows that are picked, and the rows moved or converted.
#include "plugin/geometry/ScaleFast.h"

#include <algorithm>
#include <optional>

#include "plugin/buffer/FormatConversion.h"
#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Saturate.h"
#include "plugin/geometry/WholePicks.h"
#include "plugin/rows/Blocks.h"
#include "plugin/rows/Convert.h"
#include "plugin/rows/Nearest.h"
#include "plugin/rows/Streaming.h"

namespace tqx {

namespace {

// The conversion from the source's pixels. Gray with alpha leaves the alpha of colours: intended.
std::optional<rows::Conversion> ChooseScaling(const PixelBuffer& source, const PixelBuffer& destination) {
    auto conversion = ChooseConversion(source, destination);
    if (conversion && !source.IsRGB && destination.IsRGB) conversion->alpha = rows::AlphaRule::Leave;
    return conversion;
}

// Picks and converts the pixels of rows, some at a time through packed pixels. The columns of the
// first of them are kept, which for most pictures are all.
class RowScaler {
  public:
    // `height` is how many rows will be made; `enlarges`: some of them of one row of the source.
    RowScaler(const rows::Conversion& conversion, std::int32_t sourceWidth, std::int32_t width, std::int32_t height,
              bool enlarges)
        : whole_(rows::PlanConversion(conversion)),
          step_(static_cast<double>(sourceWidth) / width),
          sourceWidth_(sourceWidth),
          width_(width) {
        picks_ = whole_.from.IsCompact() && whole_.from.size <= 4;
        const std::int64_t bytes = rows::BytesToWrite(width, height, conversion.to.pixelSize);
        picksWhole_ = picks_ && wholePicks_.Prepare(whole_, sourceWidth, width);
        if (picksWhole_ && (enlarges || bytes >= rows::kBytesToStream)) picksWhole_ = wholePicks_.MakeApart(bytes);
        if (picks_ && !picksWhole_) packed_ = rows::PlanConversion(Packed(conversion), bytes);
    }

    // `again`: the source row is that of the call before, and as it was.
    void Scale(const std::uint8_t* source, bool again, std::uint8_t* destination) {
        const std::int32_t extent = std::max(sourceWidth_, width_);
        const bool apart = picks_ && rows::AreDisjoint(whole_.from, source, whole_.to, destination, extent);
        if (apart && picksWhole_)
            wholePicks_.Pick(source, again && keptApart_, destination);
        else if (apart)
            ScalePicked(source, destination);
        else
            ScaleInOrder(source, destination);
        keptApart_ = apart;
    }

  private:
    static constexpr std::int32_t kPixelsATime = 512;
    static constexpr std::int32_t kColumnsKept = 8192;

    // The definition: each pixel is read when its turn comes.
    void ScaleInOrder(const std::uint8_t* source, std::uint8_t* destination) const {
        for (std::int32_t x = 0; x < width_; ++x)
            rows::ConvertRow(whole_, source + std::int64_t{ColumnOf(x)} * whole_.from.pixelSize,
                             destination + std::int64_t{x} * whole_.to.pixelSize, 1);
    }

    void ScalePicked(const std::uint8_t* source, std::uint8_t* destination) {
        alignas(64) std::uint8_t picked[kPixelsATime * 4];
        for (const rows::Block part : rows::Blocks(width_, kPixelsATime)) {
            pick_(whole_.from, source, sourceWidth_, Columns(part), part.count, picked);
            rows::ConvertRow(packed_, picked, destination + std::int64_t{part.first} * whole_.to.pixelSize, part.count);
        }
    }

    std::int32_t ColumnOf(std::int32_t x) const { return SourceOf(step_, x); }

    // The source columns of some pixels. The last place serves those that are not kept.
    const std::int32_t* Columns(const rows::Block& part) {
        if (part.End() <= known_) return columns_ + part.first;
        const bool keeps = part.End() <= kColumnsKept;
        std::int32_t* const to = columns_ + (keeps ? part.first : kColumnsKept);
        for (std::int32_t i = 0; i < part.count; ++i) to[i] = ColumnOf(part.first + i);
        if (keeps) known_ = part.End();
        return to;
    }

    static rows::Conversion Packed(rows::Conversion conversion) {
        const rows::PixelSpan span =
            rows::SpanOf(conversion.from.pixelSize, conversion.from.offset, rows::ChannelCount(conversion.fromSet));
        for (int i = 0; i < rows::ChannelCount(conversion.fromSet); ++i) conversion.from.offset[i] -= span.offset;
        conversion.from.pixelSize = rows::PickedPixelSize(span);
        return conversion;
    }

    rows::ConversionPlan whole_;
    rows::PickPixelsFunction* pick_ = rows::kPickPixels.Chosen();
    rows::ConversionPlan packed_{};  // from picked pixels
    WholePicks wholePicks_;
    bool picksWhole_ = false;
    bool keptApart_ = false;  // the row before was disjoint from its source
    double step_;
    std::int32_t sourceWidth_;
    std::int32_t width_;
    bool picks_ = false;
    std::int32_t known_ = 0;  // columns kept so far
    std::int32_t columns_[kColumnsKept + kPixelsATime];
};

void ScaleRows(RowCursor& source, RowCursor& destination, const rows::Conversion& conversion, std::int32_t width,
               std::int32_t height) {
    const rows::StreamsEnd end;
    RowScaler scaler(conversion, source->Width, width, height, source->Height < height);
    RowPairs pairs(source, destination);
    const double step = static_cast<double>(source->Height) / height;
    const RowRange range = CommonRows(destination.Rows(), {0, height});
    std::int32_t latest = -1;  // row of the source that was scaled, unless script code may change it
    for (std::int32_t y = range.first; y < range.end; ++y) {
        const std::int32_t row = Truncate(step * y);
        const RowPair pair = pairs.At(row, y);
        if (pair) scaler.Scale(pair.source, row == latest, pair.destination);
        latest = pair && destination->YieldTicks <= 0 ? row : -1;
        if (!destination.Yield() || !source.Stands()) return;
    }
}

}  // namespace

bool ScaleFast(sdk::Object* self, sdk::Object* sourceObject, std::int32_t width, std::int32_t height) {
    if (!sourceObject) return false;
    RowCursor source(*BufferOf(sourceObject)), destination(*BufferOf(self));
    if (!destination->Valid || !source->Valid) return false;
    width = std::min(width, destination->Width);
    height = std::min(height, destination->Height);
    const auto conversion = ChooseScaling(source.Picture(), destination.Picture());
    if (width <= 0 || height <= 0 || !conversion) return false;
    if (!IsUsable(destination.Picture()) || !Begin({&source, &destination})) return false;
    if (source->Width > 0 && source->Height > 0) ScaleRows(source, destination, *conversion, width, height);
    return true;
}

}  // namespace tqx
