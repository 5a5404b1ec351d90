// The constructor around a host picture.
#include "plugin/interop/HostPicture.h"

#include "platform/Worlds.h"
#include "plugin/buffer/ImageFormat.h"
#include "plugin/buffer/Picture.h"
#include "plugin/buffer/PixelBuffer.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

sdk::PictureDescription Describe(sdk::Object* picture) {
    sdk::PictureDescription description{};
    host.lockPictureDescription(picture, &description);
    host.unlockPictureDescription(picture);
    return description;
}

// The format of a pixel map's pixels; ImageFormatUnknown for a depth that can't be shared.
std::int32_t FormatOf(std::int32_t depth, bool useAlpha) {
    if (depth == 32) return useAlpha ? ImageFormatARGB : ImageFormatXRGB;
    return depth == 24 ? ImageFormatRGB : ImageFormatUnknown;
}

}  // namespace

void ConstructHostPicture(sdk::Object* self, sdk::Object* picture, bool useAlpha) {
    PixelBuffer& buffer = StartConstruction(self);
    if (!picture) return;
    const sdk::PictureDescription description = Describe(picture);
    if (description.kind != sdk::kPictureKindWorld) return;
    const platform::PixMap* const pixMap = platform::GetPortPixMap(description.world);
    std::uint8_t* const base = platform::GetPixBaseAddr(pixMap);
    const std::int32_t format = FormatOf(platform::GetPixDepth(pixMap), useAlpha);
    if (!base || format == ImageFormatUnknown) return;
    SetUpDescriptor(&buffer, description.width, description.height, format);
    buffer.RowSize = platform::GetPixRowBytes(pixMap);
    // The low 32 bits of the product: intended.
    buffer.TotalSize = static_cast<std::uint32_t>(std::int64_t{buffer.RowSize} * buffer.Height);
    buffer.windowRows = buffer.storageRows = buffer.Height;
    buffer.data = base;
    buffer.rowAddress = &MemoryRowAddress;
    KeepObject(buffer.Target, picture);
    buffer.Valid = true;
}

}  // namespace tqx
