// Off-screen worlds and their pixel maps, made and taken away.
#include "platform/Worlds.h"

#include <cstdlib>

#include "platform/PixelMemory.h"

namespace platform {

namespace {

// Bytes of a world's pixels, and one more than it may have.
constexpr std::int64_t kSizeLimit = std::int64_t{1} << 31;

// Rows start at multiples of this many bytes.
constexpr std::int64_t kRowAlignment = 16;

constexpr ColorTable MakeGrayRamp() {
    ColorTable table{};
    for (std::uint32_t gray = 0; gray < 256; ++gray) table.colors[gray] = gray << 16 | gray << 8 | gray;
    return table;
}

constexpr ColorTable kGrayRamp = MakeGrayRamp();

void FreeWorld(sdk::GWorld* world) {
    FreePixels(world->pixMap.baseAddress);
    std::free(world);
}

}  // namespace

sdk::GWorld* NewGWorld(std::int32_t depth, std::int32_t width, std::int32_t height, const ColorTable* colors) {
    if ((depth != 32 && depth != 24 && depth != 8) || width < 1 || height < 1) return nullptr;
    const std::int64_t used = std::int64_t{width} * (depth / 8);
    const std::int64_t rowBytes = (used + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
    if (rowBytes >= kSizeLimit || rowBytes * height >= kSizeLimit) return nullptr;
    auto* world = static_cast<sdk::GWorld*>(std::calloc(1, sizeof(sdk::GWorld)));
    std::uint8_t* const pixels = AllocatePixelsToFill(rowBytes * height);
    if (!world || !pixels) {
        std::free(world);
        FreePixels(pixels);
        return nullptr;
    }
    world->pixMap = {pixels, static_cast<std::int32_t>(rowBytes), depth, 0, colors};
    world->width = width;
    world->height = height;
    world->dispose = &FreeWorld;
    return world;
}

void DisposeGWorld(sdk::GWorld* world) {
    if (world && world->dispose) world->dispose(world);
}

PixMap* GetGWorldPixMap(sdk::GWorld* world) { return world ? &world->pixMap : nullptr; }

PixMap* GetPortPixMap(sdk::GWorld* world) { return GetGWorldPixMap(world); }

bool LockPixels(PixMap* pixMap) {
    if (!pixMap || pixMap->purged) return false;
    ++pixMap->lockCount;
    return true;
}

void UnlockPixels(PixMap* pixMap) {
    if (pixMap) --pixMap->lockCount;
}

std::int32_t GetPixDepth(const PixMap* pixMap) { return pixMap ? pixMap->depth : 0; }

std::int32_t GetPixRowBytes(const PixMap* pixMap) { return pixMap ? pixMap->rowBytes : 0; }

std::uint8_t* GetPixBaseAddr(const PixMap* pixMap) { return pixMap ? pixMap->baseAddress : nullptr; }

const ColorTable* GetCTable(std::int32_t number) { return number == 40 ? &kGrayRamp : nullptr; }

}  // namespace platform
