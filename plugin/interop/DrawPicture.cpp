// The draws: host picture and mask locked, cut to both pictures, drawn row by row.
#include "plugin/interop/DrawPicture.h"

#include <algorithm>

#include "plugin/buffer/CopyRectangle.h"
#include "plugin/buffer/Operation.h"
#include "plugin/interop/LockedPicture.h"
#include "plugin/rows/Convert.h"
#include "plugin/rows/HostPixels.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

// A host picture, and its mask if one is drawn with it, both locked.
struct LockedSource {
    LockedPicture picture;
    LockedPicture mask;
    bool masked;

    // What both have.
    std::int32_t Width() const { return masked ? std::min(picture.width, mask.width) : picture.width; }
    std::int32_t Height() const { return masked ? std::min(picture.height, mask.height) : picture.height; }
};

bool LockSource(sdk::Object* picture, sdk::Object* mask, LockedSource* source) {
    source->masked = mask != nullptr;
    if (!LockPicture(picture, true, &source->picture)) return false;
    if (!mask || LockPicture(mask, true, &source->mask)) return true;
    UnlockPicture(&source->picture);
    return false;
}

void UnlockSource(LockedSource* source) {
    if (source->masked) UnlockPicture(&source->mask);
    UnlockPicture(&source->picture);
}

// The first host pixel of a drawn row, and the mask's; null without a mask.
struct HostPixels {
    const std::uint8_t* picture;
    const std::uint8_t* mask;
};

HostPixels PixelsAt(const LockedSource& source, std::int32_t x, std::int32_t y) {
    const auto pixel = [&](const LockedPicture& locked) {
        return HostRow(locked, y) + std::int64_t{x} * locked.bytesPerPixel;
    };
    return {pixel(source.picture), source.masked ? pixel(source.mask) : nullptr};
}

// Draws what the cut leaves: drawRow(host pixels, first pixel in the picture's row, width).
template <class DrawRow>
void DrawRows(RowCursor& to, const LockedSource& source, const CopyRectangle& area, DrawRow&& drawRow) {
    if (!to.Yield() || area.IsEmpty()) return;
    for (std::int32_t j = 0; j < area.height; ++j) {
        if (std::uint8_t* const row = to.Row(area.destY + j))
            drawRow(PixelsAt(source, area.sourceX, area.sourceY + j), row + std::int64_t{area.destX} * to->PixelSize,
                    area.width);
        if (!to.Yield()) return;
    }
}

// What all draws have in common; `mask` may be nil.
template <class DrawRow>
void Draw(PixelBuffer& buffer, sdk::Object* picture, sdk::Object* mask, const CopyRectangle& wanted,
          DrawRow&& drawRow) {
    RowCursor to(buffer);
    LockedSource source;
    if (!Begin({&to}) || !LockSource(picture, mask, &source)) return;
    const CopyRectangle area = ClipCopy(wanted, buffer.Width, buffer.Height, source.Width(), source.Height());
    DrawRows(to, source, area, drawRow);
    UnlockSource(&source);
    to.Yield();
}

// The whole host picture, drawn at a place.
CopyRectangle WholePicture(sdk::Object* picture, std::int32_t destX, std::int32_t destY) {
    return {destX, destY, ReadIntegerProperty(picture, "Width"), ReadIntegerProperty(picture, "Height"), 0, 0};
}

// Channels of the host picture into the picture's channels of a set.
void DrawChannels(PixelBuffer& buffer, sdk::Object* picture, const CopyRectangle& wanted, rows::ChannelSet set,
                  const rows::PixelLayout& hostLayout) {
    const rows::ConversionPlan conversion =
        rows::PlanConversion({set, set, hostLayout, LayoutOf(buffer, set), rows::AlphaRule::Leave});
    Draw(buffer, picture, nullptr, wanted, [&](const HostPixels& from, std::uint8_t* row, std::int32_t width) {
        rows::ConvertRow(conversion, from.picture, row, width);
    });
}

void DrawColors(sdk::Object* self, sdk::Object* picture, const CopyRectangle& wanted) {
    PixelBuffer& buffer = *BufferOf(self);
    if (HasColors(buffer)) DrawChannels(buffer, picture, wanted, rows::ChannelSet::Rgb, kHostColors);
}

// The host's red is color 0, green 1, blue 2.
void DrawToGray(sdk::Object* self, sdk::Object* picture, int color, const CopyRectangle& wanted) {
    PixelBuffer& buffer = *BufferOf(self);
    const rows::PixelLayout hostColor{kHostColors.pixelSize, {kHostColors.offset[color]}};
    if (buffer.HasGray) DrawChannels(buffer, picture, wanted, rows::ChannelSet::Gray, hostColor);
}

// The host picture's mask, as it has it; empty for none.
OwnedObject MaskOf(sdk::Object* picture) {
    return OwnedObject(picture ? host.REALGetPictureMask(picture, false, 0, 0) : nullptr);
}

void DrawMasked(sdk::Object* self, sdk::Object* picture, bool invert, const CopyRectangle& wanted) {
    PixelBuffer& buffer = *BufferOf(self);
    if (!HasColors(buffer)) return;
    const OwnedObject mask = MaskOf(picture);
    const rows::MaskedPlan plan = rows::PlanMaskedDraw(LayoutOf(buffer, rows::ChannelSet::RgbAlpha), invert);
    Draw(buffer, picture, mask.Get(), wanted, [&](const HostPixels& from, std::uint8_t* row, std::int32_t width) {
        rows::DrawMaskedRow(plan, from.picture, from.mask, row, width);
    });
}

void DrawBlended(sdk::Object* self, sdk::Object* picture, bool invert, const CopyRectangle& wanted) {
    PixelBuffer& buffer = *BufferOf(self);
    if (!HasColors(buffer)) return;
    const OwnedObject mask = MaskOf(picture);
    if (!mask) return;
    const rows::MaskedPlan plan = rows::PlanMaskedBlend(LayoutOf(buffer, rows::ChannelSet::Rgb), invert);
    Draw(buffer, picture, mask.Get(), wanted, [&](const HostPixels& from, std::uint8_t* row, std::int32_t width) {
        rows::BlendMaskedRow(plan, from.picture, from.mask, row, width);
    });
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

void DrawPictureRedToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                 std::int32_t destWidth, std::int32_t destHeight) {
    DrawToGray(self, picture, 0, {destX, destY, destWidth, destHeight, 0, 0});
}

void DrawPictureRedToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                 std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX,
                                 std::int32_t sourceY) {
    DrawToGray(self, picture, 0, {destX, destY, destWidth, destHeight, sourceX, sourceY});
}

void DrawPictureGreenToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                   std::int32_t destWidth, std::int32_t destHeight) {
    DrawToGray(self, picture, 1, {destX, destY, destWidth, destHeight, 0, 0});
}

void DrawPictureGreenToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                   std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX,
                                   std::int32_t sourceY) {
    DrawToGray(self, picture, 1, {destX, destY, destWidth, destHeight, sourceX, sourceY});
}

void DrawPictureBlueToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                  std::int32_t destWidth, std::int32_t destHeight) {
    DrawToGray(self, picture, 2, {destX, destY, destWidth, destHeight, 0, 0});
}

void DrawPictureBlueToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                  std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX,
                                  std::int32_t sourceY) {
    DrawToGray(self, picture, 2, {destX, destY, destWidth, destHeight, sourceX, sourceY});
}

void DrawMaskedPictureRGB(sdk::Object* self, sdk::Object* picture, bool invertMask) {
    DrawMasked(self, picture, invertMask, WholePicture(picture, 0, 0));
}

void DrawMaskedPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                          bool invertMask) {
    DrawMasked(self, picture, invertMask, WholePicture(picture, destX, destY));
}

void DrawMaskedPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                          std::int32_t destWidth, std::int32_t destHeight, bool invertMask) {
    DrawMasked(self, picture, invertMask, {destX, destY, destWidth, destHeight, 0, 0});
}

void DrawMaskedPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                          std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX, std::int32_t sourceY,
                          bool invertMask) {
    DrawMasked(self, picture, invertMask, {destX, destY, destWidth, destHeight, sourceX, sourceY});
}

void DrawMaskedPictureApplyMaskRGB(sdk::Object* self, sdk::Object* picture, bool invertMask) {
    DrawBlended(self, picture, invertMask, WholePicture(picture, 0, 0));
}

void DrawMaskedPictureApplyMaskRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                   bool invertMask) {
    DrawBlended(self, picture, invertMask, WholePicture(picture, destX, destY));
}

void DrawMaskedPictureApplyMaskRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                   std::int32_t destWidth, std::int32_t destHeight, bool invertMask) {
    DrawBlended(self, picture, invertMask, {destX, destY, destWidth, destHeight, 0, 0});
}

void DrawMaskedPictureApplyMaskRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                   std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX,
                                   std::int32_t sourceY, bool invertMask) {
    DrawBlended(self, picture, invertMask, {destX, destY, destWidth, destHeight, sourceX, sourceY});
}

}  // namespace tqx
