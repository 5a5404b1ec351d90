// The members Invert.
#include "plugin/ops/Invert.h"

#include "plugin/buffer/Channels.h"
#include "plugin/ops/PatternRows.h"
#include "plugin/rows/Fill.h"

namespace tqx {

namespace {

rows::PixelPattern InvertPatternOf(const PixelBuffer& buffer, rows::ChannelSet set) {
    // With alpha, green is complemented twice and alpha not at all: intended. Gray with alpha has
    // both complemented: intended as well.
    if (set == rows::ChannelSet::RgbAlpha)
        return rows::InvertPattern({buffer.PixelSize, {buffer.RedOffset, buffer.BlueOffset}}, 2);
    return rows::InvertPattern(LayoutOf(buffer, set), rows::ChannelCount(set));
}

}  // namespace

void Invert(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    PixelBuffer& buffer = *BufferOf(self);
    rows::ChannelSet set;
    if (!ChooseChannels(buffer, &set)) return;
    ApplyInPlace(buffer, ClipTo(buffer, x, y, width, height), InvertPatternOf(buffer, set));
}

void Invert(sdk::Object* self) {
    const PixelBuffer& buffer = *BufferOf(self);
    Invert(self, 0, 0, buffer.Width, buffer.Height);
}

}  // namespace tqx
