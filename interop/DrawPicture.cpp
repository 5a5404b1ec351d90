#include "interop/DrawPicture.h"

#include "buffer/PixelBuffer.h"
#include "interop/LockedPicture.h"
#include "ops/CopyRectangle.h"
#include "rows/Convert.h"

namespace tqx {

namespace {

// The whole host picture, drawn at a place.
CopyRectangle WholePicture(sdk::Object* picture, std::int32_t destX, std::int32_t destY) {
    return {destX, destY, ReadIntegerProperty(picture, "Width"), ReadIntegerProperty(picture, "Height"), 0, 0};
}

bool HasColors(const PixelBuffer& buffer) { return buffer.HasRed && buffer.HasGreen && buffer.HasBlue; }

// Draws what the cut leaves, row by row: drawRow(host row, first pixel of the area in the picture's row).
template <class DrawRow>
void DrawRows(PixelBuffer& buffer, const StorageWatch& watch, const CopyRectangle& area, DrawRow&& drawRow) {
    if (!YieldAndKeep(buffer, watch) || area.IsEmpty()) return;
    for (std::int32_t j = 0; j < area.height; ++j) {
        if (std::uint8_t* const row = RowAddress(buffer, area.destY + j))
            drawRow(area.sourceY + j, row + std::int64_t{area.destX} * buffer.PixelSize);
        if (!YieldAndKeep(buffer, watch)) return;
    }
}

// Copies channels of the host picture into the picture's channels of the same number.
void DrawChannels(sdk::Object* self, sdk::Object* picture, const CopyRectangle& wanted, rows::ChannelSet set,
                  const rows::PixelLayout& hostLayout) {
    PixelBuffer& buffer = *BufferOf(self);
    if (!IsUsable(buffer)) return;
    const StorageWatch watch(buffer);
    LockedPicture locked;
    if (!YieldAndKeep(buffer, watch) || !LockPicture(picture, true, &locked)) return;
    const CopyRectangle area = ClipCopy(wanted, buffer.Width, buffer.Height, locked.width, locked.height);
    const rows::Conversion conversion{set, set, hostLayout, LayoutOf(buffer, set), rows::AlphaRule::Leave};
    DrawRows(buffer, watch, area, [&](std::int32_t y, std::uint8_t* row) {
        const std::uint8_t* const source = HostRow(locked, y) + std::int64_t{area.sourceX} * locked.bytesPerPixel;
        rows::ConvertRow(conversion, source, row, area.width);
    });
    UnlockPicture(&locked);
    YieldAndKeep(buffer, watch);
}

void DrawColors(sdk::Object* self, sdk::Object* picture, const CopyRectangle& wanted) {
    if (HasColors(*BufferOf(self))) DrawChannels(self, picture, wanted, rows::ChannelSet::Rgb, kHostColors);
}

}  // namespace

void DrawPictureRGB(sdk::Object* self, sdk::Object* picture) { DrawColors(self, picture, WholePicture(picture, 0, 0)); }

void DrawPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY) {
    DrawColors(self, picture, WholePicture(picture, destX, destY));
}

void DrawPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                    std::int32_t destWidth, std::int32_t destHeight) {
    DrawColors(self, picture, {destX, destY, destWidth, destHeight, 0, 0});
}

void DrawPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                    std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX, std::int32_t sourceY) {
    DrawColors(self, picture, {destX, destY, destWidth, destHeight, sourceX, sourceY});
}

}  // namespace tqx
