// Packs and unpacks colours of 1 to 32 bits a pixel.
#include "host/framework/PictureStorage.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>

#include "host/objects/GuardedMemory.h"

namespace host {

namespace {

// Rows start at multiples of this many bytes, as those of any world.
constexpr std::int64_t kRowAlignment = 16;

std::uint8_t Byte(std::uint32_t value) { return static_cast<std::uint8_t>(value & 255); }

constexpr std::uint32_t Pack(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return red << 16 | green << 8 | blue;
}

// --- Depth 8 --------------------------------------------------------------------------------

constexpr std::uint32_t kCubeSide = 6;
constexpr std::uint32_t kCubeColors = kCubeSide * kCubeSide * kCubeSide;
constexpr std::uint32_t kCubeStep = 51;

// A cube of 6 x 6 x 6 colours, then 40 grays between its corners.
constexpr platform::ColorTable MakeSystemColors() {
    platform::ColorTable table{};
    for (std::uint32_t i = 0; i < kCubeColors; ++i)
        table.colors[i] = Pack(i / 36 * kCubeStep, i / kCubeSide % kCubeSide * kCubeStep, i % kCubeSide * kCubeStep);
    for (std::uint32_t i = kCubeColors; i < 256; ++i) {
        const std::uint32_t gray = (i - kCubeColors + 1) * 255 / 41;
        table.colors[i] = Pack(gray, gray, gray);
    }
    return table;
}

constexpr platform::ColorTable kSystemColors = MakeSystemColors();

int Distance(RgbColor a, RgbColor b) {
    int sum = 0;
    for (int shift = 0; shift < 24; shift += 8) {
        const int difference = static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255);
        sum += difference * difference;
    }
    return sum;
}

std::uint8_t NearestIndex(const platform::ColorTable& table, RgbColor color) {
    int best = 0;
    for (int i = 1; i < 256; ++i)
        if (Distance(table.colors[i], color) < Distance(table.colors[best], color)) best = i;
    return static_cast<std::uint8_t>(best);
}

// Neighbours are often of one colour, which is looked for once.
void StoreIndexes(const platform::ColorTable& table, std::uint8_t* indexes, std::int32_t count,
                  const RgbColor* colors) {
    for (std::int32_t i = 0; i < count; ++i)
        indexes[i] = i > 0 && colors[i] == colors[i - 1] ? indexes[i - 1] : NearestIndex(table, colors[i]);
}

const platform::ColorTable& ColorsOf(const PictureStorage& storage) {
    const platform::ColorTable* colors = storage.world->pixMap.colors;
    return colors ? *colors : kSystemColors;
}

// --- One pixel of each depth ------------------------------------------------------------------

RgbColor LoadFive(const std::uint8_t* bytes) {
    const std::uint32_t pixel = bytes[0] | std::uint32_t{bytes[1]} << 8;
    const auto spread = [pixel](int shift) { return ((pixel >> shift & 31) * 255 + 15) / 31; };
    return Pack(spread(10), spread(5), spread(0));
}

void StoreFive(std::uint8_t* bytes, RgbColor color) {
    const auto squeeze = [color](int shift) { return ((color >> shift & 255) * 31 + 127) / 255; };
    const std::uint32_t pixel = squeeze(16) << 10 | squeeze(8) << 5 | squeeze(0);
    bytes[0] = Byte(pixel);
    bytes[1] = Byte(pixel >> 8);
}

RgbColor LoadTriple(const std::uint8_t* bytes) { return Pack(bytes[0], bytes[1], bytes[2]); }

void StoreTriple(std::uint8_t* bytes, RgbColor color) {
    bytes[0] = Byte(color >> 16);
    bytes[1] = Byte(color >> 8);
    bytes[2] = Byte(color);
}

// Depth 1 keeps a byte a pixel, 0 or 255.
std::uint8_t BlackOrWhite(RgbColor color) {
    return 77 * (color >> 16 & 255) + 151 * (color >> 8 & 255) + 28 * (color & 255) >= 128 * 256 ? 255 : 0;
}

int BytesOf(std::int32_t depth) { return depth == 1 ? 1 : depth / 8; }

bool IsWorldDepth(std::int32_t depth) { return depth == 32 || depth == 24 || depth == 8; }

std::size_t TotalBytes(const PictureStorage& storage) {
    return static_cast<std::size_t>(storage.rowBytes) * static_cast<std::size_t>(storage.height);
}

// The storage around its bytes; its world too where the depth has one.
bool MakeWorld(PictureStorage& storage, const platform::ColorTable* colors) {
    if (!IsWorldDepth(storage.depth)) return true;
    storage.world = static_cast<sdk::GWorld*>(std::calloc(1, sizeof(sdk::GWorld)));
    if (!storage.world) return false;
    storage.world->pixMap = {storage.bytes, storage.rowBytes, storage.depth, 0, colors};
    storage.world->width = storage.width;
    storage.world->height = storage.height;
    return true;
}

// Bytes of a picture's pixels, and one more than it may have.
constexpr std::int64_t kSizeLimit = std::int64_t{1} << 31;

// A storage of zero bytes.
bool Allocate(PictureStorage& storage, std::int32_t width, std::int32_t height, std::int32_t depth,
              const platform::ColorTable* colors) {
    if (!IsWorldDepth(depth) && depth != 16 && depth != 1) return false;
    if (width < 1 || height < 1) return false;
    const std::int64_t used = std::int64_t{width} * BytesOf(depth);
    const std::int64_t rowBytes = (used + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
    if (rowBytes >= kSizeLimit || rowBytes * height >= kSizeLimit) return false;
    storage = {nullptr, nullptr, static_cast<std::int32_t>(rowBytes), width, height, depth, PixelOwner::Host};
    storage.bytes = static_cast<std::uint8_t*>(AllocateGuarded(TotalBytes(storage)));
    if (storage.bytes && MakeWorld(storage, colors)) return true;
    DestroyStorage(storage);
    return false;
}

bool IsUsable(const sdk::GWorld& world) {
    return world.pixMap.baseAddress && IsWorldDepth(world.pixMap.depth) && world.width > 0 && world.height > 0;
}

}  // namespace

bool CreateStorage(PictureStorage& storage, std::int32_t width, std::int32_t height, std::int32_t depth) {
    if (!Allocate(storage, width, height, depth, depth == 8 ? &kSystemColors : nullptr)) return false;
    constexpr std::array kWhites = [] {
        std::array<RgbColor, 256> whites{};
        whites.fill(kWhite);
        return whites;
    }();
    constexpr auto kPart = static_cast<std::int32_t>(kWhites.size());
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; x += std::min(kPart, width - x))
            StoreColors(storage, x, y, std::min(kPart, width - x), kWhites.data());
    return true;
}

bool AdoptWorld(PictureStorage& storage, sdk::GWorld* world) {
    if (!world || !IsUsable(*world)) return false;
    const platform::PixMap& map = world->pixMap;
    storage = {world, map.baseAddress, map.rowBytes, world->width, world->height, map.depth, PixelOwner::Platform};
    return true;
}

bool CopyStorage(PictureStorage& storage, const PictureStorage& source) {
    const platform::ColorTable* colors = source.world ? source.world->pixMap.colors : nullptr;
    if (!Allocate(storage, source.width, source.height, source.depth, colors)) return false;
    const std::size_t used = static_cast<std::size_t>(source.width) * static_cast<std::size_t>(BytesOf(source.depth));
    for (std::int32_t y = 0; y < source.height; ++y)
        std::memcpy(storage.bytes + std::int64_t{y} * storage.rowBytes,
                    source.bytes + std::int64_t{y} * source.rowBytes, used);
    return true;
}

bool CopyWorld(PictureStorage& storage, const sdk::GWorld& source) {
    PictureStorage borrowed;
    // Reading does not change the world, and nothing here disposes of it.
    return AdoptWorld(borrowed, const_cast<sdk::GWorld*>(&source)) && CopyStorage(storage, borrowed);
}

void DestroyStorage(PictureStorage& storage) {
    if (storage.owner == PixelOwner::Platform) {
        platform::DisposeGWorld(storage.world);
    } else {
        std::free(storage.world);
        FreeGuarded(storage.bytes);
    }
    storage = {};
}

namespace {

// Runs `step` for each of `count` pixels; the depth is chosen once, outside the loop.
template <class Color, class Step>
void ForEachPixel(std::uint8_t* pixel, int size, Color* colors, std::int32_t count, Step step) {
    for (Color* end = colors + count; colors != end; ++colors, pixel += size) step(pixel, *colors);
}

std::uint8_t* PixelAddress(const PictureStorage& storage, std::int32_t x, std::int32_t y) {
    return storage.bytes + std::int64_t{y} * storage.rowBytes + std::int64_t{x} * BytesOf(storage.depth);
}

}  // namespace

void LoadColors(const PictureStorage& storage, std::int32_t x, std::int32_t y, std::int32_t count, RgbColor* colors) {
    using Bytes = const std::uint8_t*;
    std::uint8_t* first = PixelAddress(storage, x, y);
    switch (storage.depth) {
        case 32:
            return ForEachPixel(first, 4, colors, count,
                                [](Bytes pixel, RgbColor& color) { color = LoadTriple(pixel + 1); });
        case 24:
            return ForEachPixel(first, 3, colors, count,
                                [](Bytes pixel, RgbColor& color) { color = LoadTriple(pixel); });
        case 16:
            return ForEachPixel(first, 2, colors, count, [](Bytes pixel, RgbColor& color) { color = LoadFive(pixel); });
        case 8:
            return ForEachPixel(
                first, 1, colors, count,
                [table = ColorsOf(storage).colors](Bytes pixel, RgbColor& color) { color = table[*pixel]; });
        default:
            return ForEachPixel(first, 1, colors, count,
                                [](Bytes pixel, RgbColor& color) { color = *pixel ? kWhite : kBlack; });
    }
}

void StoreColors(PictureStorage& storage, std::int32_t x, std::int32_t y, std::int32_t count, const RgbColor* colors) {
    std::uint8_t* first = PixelAddress(storage, x, y);
    switch (storage.depth) {
        case 32:
            return ForEachPixel(first, 4, colors, count,
                                [](std::uint8_t* pixel, RgbColor color) { StoreTriple(pixel + 1, color); });
        case 24:
            return ForEachPixel(first, 3, colors, count,
                                [](std::uint8_t* pixel, RgbColor color) { StoreTriple(pixel, color); });
        case 16:
            return ForEachPixel(first, 2, colors, count,
                                [](std::uint8_t* pixel, RgbColor color) { StoreFive(pixel, color); });
        case 8:
            return StoreIndexes(ColorsOf(storage), first, count, colors);
        default:
            return ForEachPixel(first, 1, colors, count,
                                [](std::uint8_t* pixel, RgbColor color) { *pixel = BlackOrWhite(color); });
    }
}

}  // namespace host
