// New host pictures and masks, filled through their locked pixels.
#include "plugin/interop/CopyPicture.h"

#include "platform/Worlds.h"
#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Rectangle.h"
#include "plugin/interop/LockedPicture.h"
#include "plugin/rows/Convert.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

// What of a picture goes into the colours of a host picture.
struct Exported {
    rows::ChannelSet set;
    rows::PixelLayout layout;
};

// Every byte of the world is written: a new one holds any. Rows that can't be had stay 0.
void WriteRows(RowCursor& from, const Rectangle& area, const Exported& exported, const LockedWorld& world) {
    const rows::ConversionPlan conversion = rows::PlanConversion(
        {exported.set, rows::ChannelSet::Rgb, exported.layout, kHostColors, rows::AlphaRule::Leave});
    bool stands = from.Yield();
    for (std::int32_t y = 0; y < area.height; ++y) {
        ClearHostRow(world, y);
        if (!stands) continue;
        if (const std::uint8_t* const row = from.Row(area.y + y))
            rows::ConvertRow(conversion, row + std::int64_t{area.x} * from->PixelSize, HostRow(world, y), area.width);
        stands = from.Yield();
    }
}

// A picture around the world, which it owns; a world that the host refuses is disposed of.
sdk::Object* HandOver(const LockedWorld& locked) {
    platform::UnlockPixels(locked.pixMap);
    sdk::Object* const picture = host.REALBuildPictureFromGWorld(locked.world, true);
    if (!picture) platform::DisposeGWorld(locked.world);
    return picture;
}

sdk::Object* Export(PixelBuffer& buffer, const Rectangle& area, const Exported& exported) {
    RowCursor from(buffer);
    LockedWorld world;
    if (area.IsEmpty() || !Begin({&from})) return nullptr;
    if (!LockWorld(platform::NewGWorld(32, area.width, area.height), &world)) return nullptr;
    WriteRows(from, area, exported, world);
    return HandOver(world);
}

// Whether the pixels of a host picture would reach 2^31 bytes. The host is not asked to make one.
bool IsTooLarge(std::int32_t width, std::int32_t height) {
    constexpr std::int64_t kSizeLimit = std::int64_t{1} << 31, kHostPixel = 4;
    return width > 0 && std::int64_t{width} * height >= kSizeLimit / kHostPixel;
}

// Gives a picture a mask of width × height with another picture's pixels.
bool AttachMask(sdk::Object* picture, sdk::Object* mask, std::int32_t width, std::int32_t height) {
    if (IsTooLarge(width, height)) return false;
    const OwnedObject hostMask(host.REALGetPictureMask(picture, true, width, height));
    return hostMask && DrawOntoPicture(hostMask.Get(), mask, width, height);
}

constexpr std::int32_t kDebugSize = 512;

}  // namespace

sdk::Object* CopyPicture(sdk::Object* self) {
    const PixelBuffer& buffer = *BufferOf(self);
    return CopyPicture(self, 0, 0, buffer.Width, buffer.Height);
}

sdk::Object* CopyPicture(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    PixelBuffer& buffer = *BufferOf(self);
    if (!buffer.IsGray && !buffer.IsRGB) return nullptr;
    const auto set = buffer.IsGray ? rows::ChannelSet::Gray : rows::ChannelSet::Rgb;
    return Export(buffer, ClipTo(buffer, x, y, width, height), {set, LayoutOf(buffer, set)});
}

sdk::Object* CopyMask(sdk::Object* self) {
    const PixelBuffer& buffer = *BufferOf(self);
    return CopyMask(self, 0, 0, buffer.Width, buffer.Height);
}

sdk::Object* CopyMask(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    PixelBuffer& buffer = *BufferOf(self);
    if (!buffer.HasAlpha) return nullptr;
    const rows::PixelLayout alpha{buffer.PixelSize, {buffer.AlphaOffset}};
    return Export(buffer, ClipTo(buffer, x, y, width, height), {rows::ChannelSet::Gray, alpha});
}

sdk::Object* CopyPictureWithMask(sdk::Object* self) {
    const PixelBuffer& buffer = *BufferOf(self);
    return CopyPictureWithMask(self, 0, 0, buffer.Width, buffer.Height);
}

sdk::Object* CopyPictureWithMask(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width,
                                 std::int32_t height) {
    OwnedObject picture(CopyPicture(self, x, y, width, height));
    if (!picture) return nullptr;
    const OwnedObject mask(CopyMask(self, x, y, width, height));
    if (mask && !AttachMask(picture.Get(), mask.Get(), width, height)) return nullptr;
    return picture.Give();
}

sdk::Object* GetDebugPicture(sdk::Object* self) {
    return BufferOf(self)->DebugPictureEnabled ? CopyPictureWithMask(self, 0, 0, kDebugSize, kDebugSize) : nullptr;
}

}  // namespace tqx
