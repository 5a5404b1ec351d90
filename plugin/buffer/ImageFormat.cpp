// The table of formats, a row each, and the descriptor made from a row.
#include "plugin/buffer/ImageFormat.h"

#include <cstring>

#include "plugin/buffer/PixelBuffer.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

constexpr ImageFormatRow Nothing(const char* name, std::int32_t pixelSize) {
    ImageFormatRow row{};
    row.pixelSize = pixelSize;
    row.name = name;
    return row;
}

constexpr ImageFormatRow Colour(const char* name, std::int32_t pixelSize, std::int32_t red, std::int32_t green,
                                std::int32_t blue) {
    ImageFormatRow row = Nothing(name, pixelSize);
    row.red = red;
    row.green = green;
    row.blue = blue;
    row.isRGB = row.hasRed = row.hasGreen = row.hasBlue = true;
    return row;
}

constexpr ImageFormatRow Gray(const char* name, std::int32_t pixelSize, std::int32_t gray) {
    ImageFormatRow row = Nothing(name, pixelSize);
    row.gray = gray;
    row.isGray = row.hasGray = true;
    return row;
}

constexpr ImageFormatRow WithAlpha(ImageFormatRow row, std::int32_t alpha) {
    row.alpha = alpha;
    row.hasAlpha = true;
    return row;
}

}  // namespace

constexpr ImageFormatRow kImageFormats[] = {
    Nothing("Unknown", 0),
    Colour("RGB", 3, 0, 1, 2),
    WithAlpha(Colour("RBBA", 4, 0, 1, 2), 3),  // "RBBA" on purpose: scripts know it by this name
    Colour("RGBX", 4, 0, 1, 2),
    WithAlpha(Colour("ARGB", 4, 1, 2, 3), 0),
    Colour("XRGB", 4, 1, 2, 3),
    Colour("BGR", 3, 2, 1, 0),
    WithAlpha(Colour("BGRA", 4, 2, 1, 0), 3),
    Colour("BGRX", 4, 2, 1, 0),
    WithAlpha(Colour("ABGR", 4, 3, 2, 1), 0),
    Colour("XBGR", 4, 3, 2, 1),
    Gray("G", 1, 0),
    WithAlpha(Gray("GA", 2, 0), 1),
    WithAlpha(Gray("AG", 2, 1), 0),
    Nothing("Scaling", 16),
    Gray(nullptr, 3, 0),
    Gray(nullptr, 3, 1),
    Gray(nullptr, 3, 2),
    Gray(nullptr, 4, 0),
    Gray(nullptr, 4, 1),
    Gray(nullptr, 4, 2),
    Gray(nullptr, 4, 3),
};

static_assert(std::size(kImageFormats) == kImageFormatCount, "one row a format code");

sdk::String* GetImageFormatString(sdk::Object* self) {
    const std::int32_t format = BufferOf(self)->ImageFormat;
    if (format < 0 || format >= kImageFormatCount || !kImageFormats[format].name) return nullptr;
    const char* const name = kImageFormats[format].name;
    return BuildHostString(name, static_cast<std::int64_t>(std::strlen(name)), sdk::Encoding::Ascii);
}

}  // namespace tqx
