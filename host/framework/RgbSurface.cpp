// Single pixels, whole pictures through maps of channels, and filling by neighbours.
#include "host/framework/RgbSurface.h"

#include <array>
#include <vector>

#include "host/framework/Picture.h"
#include "host/framework/Support.h"

namespace host {

namespace {

struct SurfaceData {
    Object* picture;  // holds one reference
};

sdk::ClassDefinition definition{.name = "RGBSurface", .instanceDataSize = sizeof(SurfaceData)};

void Destroy(sdk::Object* surface) { Release(DataOf<SurfaceData>(surface, definition).picture); }

PictureStorage& PixelsOf(sdk::Object* surface) {
    PictureStorage* storage = StorageOf(DataOf<SurfaceData>(surface, definition).picture);
    if (!storage) Fail(kPicturesRaise.noPictureOfSurface());
    return *storage;
}

PictureStorage& PixelsWith(sdk::Object* surface, std::int32_t x, std::int32_t y) {
    PictureStorage& storage = PixelsOf(surface);
    if (!Contains(storage, x, y)) Fail(kPicturesRaise.pixel(x, y, storage.width, storage.height));
    return storage;
}

sdk::Color GetPixel(sdk::Object* surface, std::int32_t x, std::int32_t y) {
    RgbColor color;
    LoadColors(PixelsWith(surface, x, y), x, y, 1, &color);
    return static_cast<sdk::Color>(color);
}

void SetPixel(sdk::Object* surface, std::int32_t x, std::int32_t y, sdk::Color color) {
    const auto rgb = static_cast<RgbColor>(color);
    StoreColors(PixelsWith(surface, x, y), x, y, 1, &rgb);
}

// --- Transform ------------------------------------------------------------------------------

using ChannelMap = std::array<std::uint8_t, 256>;

// The low byte of each of 256 numbers.
ChannelMap MapOf(sdk::Array* numbers) {
    const Array* const array = FromPlugin(numbers);
    const std::size_t count = array ? array->values.size() : 0;
    ChannelMap map;
    if (count != map.size()) Fail(kPicturesRaise.mapSize(count));
    for (std::size_t i = 0; i < map.size(); ++i) map[i] = static_cast<std::uint8_t>(array->values[i].ToInt64());
    return map;
}

void TransformEach(sdk::Object* surface, sdk::Array* red, sdk::Array* green, sdk::Array* blue) {
    const ChannelMap reds = MapOf(red), greens = MapOf(green), blues = MapOf(blue);
    PictureStorage& storage = PixelsOf(surface);
    std::vector<RgbColor> row(static_cast<std::size_t>(storage.width));
    for (std::int32_t y = 0; y < storage.height; ++y) {
        LoadColors(storage, 0, y, storage.width, row.data());
        for (RgbColor& color : row)
            color =
                RgbColor{reds[color >> 16 & 255]} << 16 | RgbColor{greens[color >> 8 & 255]} << 8 | blues[color & 255];
        StoreColors(storage, 0, y, storage.width, row.data());
    }
}

void Transform(sdk::Object* surface, sdk::Array* map) { TransformEach(surface, map, map, map); }

// --- FloodFill ------------------------------------------------------------------------------

// All of a picture's colours, to be changed in any order.
class Canvas {
  public:
    explicit Canvas(const PictureStorage& storage) : width_(storage.width), height_(storage.height) {
        colors_.resize(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
        for (std::int32_t y = 0; y < height_; ++y) LoadColors(storage, 0, y, width_, Row(y));
    }

    // Gives the colour to the pixel and to those of its colour that are reached from it by steps to the sides.
    void Flood(std::int32_t x, std::int32_t y, RgbColor color) {
        const RgbColor old = Row(y)[x];
        if (old == color) return;
        std::vector<std::pair<std::int32_t, std::int32_t>> waiting{{x, y}};
        while (!waiting.empty()) {
            const auto [column, line] = waiting.back();
            waiting.pop_back();
            if (Row(line)[column] != old) continue;
            std::int32_t first = column, end = column;
            while (first > 0 && Row(line)[first - 1] == old) --first;
            while (end < width_ && Row(line)[end] == old) ++end;
            std::fill(Row(line) + first, Row(line) + end, color);
            for (const std::int32_t other : {line - 1, line + 1})
                for (std::int32_t at = first; other >= 0 && other < height_ && at < end; ++at)
                    if (Row(other)[at] == old && (at == first || Row(other)[at - 1] != old))
                        waiting.emplace_back(at, other);
        }
    }

    void Store(PictureStorage& storage) {
        for (std::int32_t y = 0; y < height_; ++y) StoreColors(storage, 0, y, width_, Row(y));
    }

  private:
    RgbColor* Row(std::int32_t y) { return colors_.data() + std::ptrdiff_t{y} * width_; }

    std::int32_t width_, height_;
    std::vector<RgbColor> colors_;
};

void FloodFill(sdk::Object* surface, std::int32_t x, std::int32_t y, sdk::Color color) {
    PictureStorage& storage = PixelsWith(surface, x, y);
    Canvas canvas(storage);
    canvas.Flood(x, y, static_cast<RgbColor>(color) & kWhite);
    canvas.Store(storage);
}

}  // namespace

Ref<Object> NewSurface(sdk::Object* picture) {
    Ref<Object> surface = NewInstanceOf(definition);
    DataOf<SurfaceData>(surface.get(), definition).picture = Ref<Object>::Share(FromPlugin(picture)).Detach();
    return surface;
}

void RegisterSurface(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        sdk::AssignableMethod<"Pixel(x as integer, y as integer) as color", Guarded<&GetPixel>, Guarded<&SetPixel>>(0),
        sdk::Method<"Transform(map() as integer)", Guarded<&Transform>>(0),
        sdk::Method<"Transform(red() as integer, green() as integer, blue() as integer)", Guarded<&TransformEach>>(0),
        sdk::Method<"FloodFill(x as integer, y as integer, color as color)", Guarded<&FloodFill>>(0),
    };
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    RegisterOrAbort(runtime, definition);
}

}  // namespace host
