#include "interop/CopyPicture.h"

#include "buffer/PixelBuffer.h"
#include "interop/LockedPicture.h"
#include "ops/Rectangle.h"
#include "platform/Worlds.h"
#include "plugin/HostServices.h"
#include "rows/Convert.h"

namespace tqx {

namespace {

// What of a picture goes into the colours of a host picture.
struct Exported {
    rows::ChannelSet set;
    rows::PixelLayout layout;
};

Rectangle ClipTo(const PixelBuffer& buffer, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    return ClipRectangle(x, y, width, height, buffer.Width, buffer.Height);
}

// The unused byte of each host pixel stays 0, as the new world has it.
void WriteRows(PixelBuffer& buffer, const StorageWatch& watch, const Rectangle& area, const Exported& exported,
               const LockedWorld& world) {
    const rows::Conversion conversion{exported.set, rows::ChannelSet::Rgb, exported.layout, kHostColors,
                                      rows::AlphaRule::Leave};
    for (std::int32_t y = 0; y < area.height; ++y) {
        if (const std::uint8_t* const row = RowAddress(buffer, area.y + y))
            rows::ConvertRow(conversion, row + std::int64_t{area.x} * buffer.PixelSize, HostRow(world, y), area.width);
        if (!YieldAndKeep(buffer, watch)) return;
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
    if (!IsUsable(buffer)) return nullptr;
    const StorageWatch watch(buffer);
    LockedWorld world;
    if (!YieldAndKeep(buffer, watch)) return nullptr;
    if (!LockWorld(platform::NewGWorld(32, area.width, area.height), &world)) return nullptr;
    if (YieldAndKeep(buffer, watch)) WriteRows(buffer, watch, area, exported, world);
    return HandOver(world);
}

}  // namespace

sdk::Object* CopyPicture(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    PixelBuffer& buffer = *BufferOf(self);
    const Rectangle area = ClipTo(buffer, x, y, width, height);
    if (area.IsEmpty() || (!buffer.IsGray && !buffer.IsRGB)) return nullptr;
    const auto set = buffer.IsGray ? rows::ChannelSet::Gray : rows::ChannelSet::Rgb;
    return Export(buffer, area, {set, LayoutOf(buffer, set)});
}

sdk::Object* CopyPicture(sdk::Object* self) {
    const PixelBuffer& buffer = *BufferOf(self);
    return CopyPicture(self, 0, 0, buffer.Width, buffer.Height);
}

}  // namespace tqx
