// Opening and closing a host picture's pixels, and what is read of their description.
#include "plugin/interop/LockedPicture.h"

#include <cstring>

#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

constexpr std::int32_t kDepth = 32;
constexpr std::int32_t kBytesPerPixel = 4;

constexpr const char* kDrawPicture =
    "DrawPicture( p as Picture, x as Integer, y as Integer, dw as Integer, dh as Integer, sx as Integer, "
    "sy as Integer, sw as Integer, sh as Integer )";
using DrawPictureMethod = void (*)(sdk::Object* graphics, sdk::Object* picture, std::int32_t x, std::int32_t y,
                                   std::int32_t dw, std::int32_t dh, std::int32_t sx, std::int32_t sy, std::int32_t sw,
                                   std::int32_t sh);

// The locked pixel map of a described world of depth 32; null, with nothing locked, for any other
// picture.
platform::PixMap* LockPixelsOf(const sdk::PictureDescription& description) {
    if (description.kind != sdk::kPictureKindWorld) return nullptr;
    platform::PixMap* const pixMap = platform::GetGWorldPixMap(description.world);
    if (!pixMap || platform::GetPixDepth(pixMap) != kDepth || !platform::LockPixels(pixMap)) return nullptr;
    if (platform::GetPixBaseAddr(pixMap)) return pixMap;
    platform::UnlockPixels(pixMap);
    return nullptr;
}

bool LockDirectly(sdk::Object* picture, LockedPicture* locked) {
    *locked = {};
    if (!picture) return false;
    host.lockPictureDescription(picture, &locked->description);
    locked->pixMap = LockPixelsOf(locked->description);
    if (!locked->pixMap) {
        host.unlockPictureDescription(picture);
        return false;
    }
    locked->rowBytes = platform::GetPixRowBytes(locked->pixMap);
    locked->baseAddress = platform::GetPixBaseAddr(locked->pixMap);
    locked->width = locked->description.width;
    locked->height = locked->description.height;
    locked->bytesPerPixel = kBytesPerPixel;
    locked->picture = picture;
    KeepObject(locked->retainedPicture, picture);
    return true;
}

// A new picture of depth 32 that looks like this one; empty when the host can't.
OwnedObject ConvertPicture(sdk::Object* picture) {
    const std::int32_t width = ReadIntegerProperty(picture, "Width");
    const std::int32_t height = ReadIntegerProperty(picture, "Height");
    if (width < 1 || height < 1) return {};
    OwnedObject converted(host.newPicture(width, height, kDepth));
    if (!converted || !DrawOntoPicture(converted.Get(), picture, width, height)) return {};
    return converted;
}

}  // namespace

bool LockPicture(sdk::Object* picture, bool mayConvert, LockedPicture* locked) {
    if (LockDirectly(picture, locked)) return true;
    if (!picture || !mayConvert) return false;
    const OwnedObject converted = ConvertPicture(picture);
    return LockDirectly(converted.Get(), locked);  // which keeps the new picture alive
}

void UnlockPicture(LockedPicture* locked) {
    if (locked->pixMap) platform::UnlockPixels(locked->pixMap);
    locked->pixMap = nullptr;
    if (locked->picture) host.unlockPictureDescription(locked->picture);
    locked->picture = nullptr;
    DropObject(locked->retainedPicture);
}

std::int32_t ReadIntegerProperty(sdk::Object* object, const char* name) {
    std::int32_t value = 0;
    return object && host.REALGetPropValueInt(object, name, &value) ? value : 0;
}

bool DrawOntoPicture(sdk::Object* target, sdk::Object* picture, std::int32_t width, std::int32_t height) {
    const OwnedObject graphics(host.pluginPictureGraphicsGetter(target));
    if (!graphics) return false;
    const auto drawPicture =
        reinterpret_cast<DrawPictureMethod>(host.REALLoadObjectMethod(graphics.Get(), kDrawPicture));
    if (!drawPicture) return false;
    drawPicture(graphics.Get(), picture, 0, 0, width, height, 0, 0, width, height);
    return true;
}

bool LockWorld(sdk::GWorld* world, LockedWorld* locked) {
    *locked = {};
    platform::PixMap* const pixMap = platform::GetGWorldPixMap(world);
    if (pixMap && platform::LockPixels(pixMap)) {
        if (std::uint8_t* const base = platform::GetPixBaseAddr(pixMap)) {
            *locked = {platform::GetPixRowBytes(pixMap),  base,  world->width, world->height,
                       platform::GetPixDepth(pixMap) / 8, world, pixMap};
            return true;
        }
        platform::UnlockPixels(pixMap);
    }
    platform::DisposeGWorld(world);
    return false;
}

void ClearHostRow(const LockedWorld& locked, std::int32_t y) {
    std::memset(HostRow(locked, y), 0, static_cast<std::size_t>(locked.rowBytes));
}

}  // namespace tqx
