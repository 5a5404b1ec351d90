// The constructors, Clone and Close.
#include "plugin/buffer/Picture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/PixelMemory.h"
#include "plugin/buffer/ImageFormat.h"
#include "plugin/buffer/MappedStorage.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

constexpr std::int64_t kRowAlignment = 64;
constexpr std::int64_t kSizeLimit = std::int64_t{1} << 31;

void ReleaseStorage(PixelBuffer& buffer) {
    if (buffer.ownsMemory) platform::FreePixels(buffer.data);
    ReleaseMapping(buffer);
    buffer.data = nullptr;
    buffer.ownsMemory = false;
    buffer.rowAddress = nullptr;
}

void ReleaseReferences(PixelBuffer& buffer) {
    DropObject(buffer.Parent);
    DropObject(buffer.MemoryTarget);
    DropObject(buffer.mappingFile);
    DropObject(buffer.Target);
    DropObject(buffer.Factory);
}

// How far the pixels of the last row reach past RowSize bytes: the rows of a memory block may be
// closer together than they are long.
std::int64_t RowOverhang(const PixelBuffer& buffer) {
    if (buffer.Width < 1) return 0;
    const std::int64_t lastPixel = (std::int64_t{buffer.Width} - 1) * buffer.PixelSize;
    const std::int32_t lastOffset = std::max({buffer.RedOffset, buffer.GreenOffset, buffer.BlueOffset,
                                              buffer.GrayOffset, buffer.AlphaOffset, buffer.PixelSize - 1});
    return std::max<std::int64_t>(lastPixel + lastOffset + 1 - buffer.RowSize, 0);
}

void CopyDescription(const PixelBuffer& from, PixelBuffer& to) {
    CopyGeometry(from, to);
    to.RedOffset = from.RedOffset;
    to.GreenOffset = from.GreenOffset;
    to.BlueOffset = from.BlueOffset;
    to.GrayOffset = from.GrayOffset;
    to.AlphaOffset = from.AlphaOffset;
    to.ImageFormat = from.ImageFormat;
    to.IsGray = from.IsGray;
    to.IsRGB = from.IsRGB;
    to.HasGreen = from.HasGreen;
    to.HasRed = from.HasRed;
    to.HasBlue = from.HasBlue;
    to.HasGray = from.HasGray;
    to.HasAlpha = from.HasAlpha;
    to.rowAddress = from.rowAddress;
}

// A picture whose pixels come from `allocate`.
template <class Allocate>
void Construct(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format,
               const Allocate& allocate) {
    PixelBuffer& buffer = StartConstruction(self);
    if (!SetUpDescriptor(&buffer, width, height, format) || width < 0 || height < 0) return;
    const std::int64_t used = std::int64_t{width} * buffer.PixelSize;
    const std::int64_t rowSize = (used + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
    if (rowSize >= kSizeLimit || rowSize * height >= kSizeLimit) return;
    const std::int64_t size = rowSize * height;
    buffer.data = allocate(size);
    if (!buffer.data) return;
    buffer.RowSize = static_cast<std::int32_t>(rowSize);
    buffer.windowRows = buffer.storageRows = height;
    buffer.TotalSize = size;
    buffer.ownsMemory = true;
    buffer.rowAddress = &MemoryRowAddress;
    buffer.Valid = true;
}

}  // namespace

void ConstructMemoryPicture(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format) {
    Construct(self, width, height, format, &platform::AllocatePixels);
}

void ConstructUntouchedPicture(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format) {
    Construct(self, width, height, format, &platform::AllocatePixelsUntouched);
}

void ConstructPictureInTheMaking(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format) {
    bool isZero = true;
    Construct(self, width, height, format,
              [&](std::int64_t size) { return platform::AllocatePixelsToFill(size, &isZero); });
    if (!isZero) BufferOf(self)->rowAddress = &ClearingRowAddress;
}

void ConstructMemoryBlockPicture(sdk::Object* self, sdk::Object* block, std::int32_t width, std::int32_t height,
                                 std::int32_t format, std::int32_t rowSize) {
    PixelBuffer& buffer = StartConstruction(self);
    if (!block || !SetUpDescriptor(&buffer, width, height, format)) return;
    const std::int64_t size = std::int64_t{rowSize} * height;
    // Only the upper word is tested, on purpose: from 2^31 to 2^32 - 1 bytes pass, and so does a
    // negative row size.
    if ((size >> 32) > 0) return;
    std::uint8_t* const bytes = host.memoryBlockGetPtr(block);
    if (!bytes) return;
    KeepObject(buffer.MemoryTarget, block);
    buffer.data = bytes;
    buffer.windowRows = buffer.storageRows = height;
    buffer.RowSize = rowSize;
    buffer.TotalSize = size;
    buffer.rowAddress = &MemoryRowAddress;
    buffer.Valid = true;
}

PixelBuffer& StartConstruction(sdk::Object* self) {
    PixelBuffer& buffer = *BufferOf(self);
    Close(self);
    const std::uint32_t generation = buffer.generation;
    buffer = PixelBuffer{};
    buffer.generation = generation;
    buffer.firstMappedRow = buffer.lastMappedRow = -1;
    return buffer;
}

void Close(sdk::Object* self) {
    PixelBuffer& buffer = *BufferOf(self);
    ++buffer.generation;
    ReleaseStorage(buffer);
    ReleaseReferences(buffer);
    std::free(buffer.mappingPath);
    buffer.mappingPath = nullptr;
}

sdk::Object* Clone(sdk::Object* self) {
    const PixelBuffer& source = *BufferOf(self);
    if (source.IsMapping || !source.Valid || !source.data || !StorageStands(source)) return nullptr;
    OwnedObject clone(NewPictureInstance());
    if (!clone) return nullptr;
    const std::int64_t size = std::int64_t{source.RowSize} * source.Height;
    if (size < 0) return nullptr;
    // A part of a picture of negative size may claim more rows than the storage has.
    const std::int32_t rows = std::min(source.Height, source.storageRows);
    std::uint8_t* const copy = platform::AllocatePixels(size + (rows > 0 ? RowOverhang(source) : 0));
    if (!copy) return nullptr;
    // From the storage's base, also for a clip, whose rows may then lie past the copy: intended.
    if (rows > 0) std::memcpy(copy, source.data, static_cast<std::size_t>(std::int64_t{source.RowSize} * rows));
    PixelBuffer& buffer = *BufferOf(clone.Get());
    CopyDescription(source, buffer);
    buffer.data = copy;
    buffer.ownsMemory = true;
    buffer.windowRows = source.Height;
    buffer.storageRows = rows;
    return clone.Give();
}

sdk::Object* NewPictureInstance() { return host.PluginNewInstance(pictureClass.name); }

sdk::Object* GetMemory(sdk::Object* self) {
    const PixelBuffer& buffer = *BufferOf(self);
    return buffer.data && StorageStands(buffer) ? host.PtrToMemoryBlock(buffer.data) : nullptr;
}

std::int64_t GetTotalSize(sdk::Object* self) { return BufferOf(self)->TotalSize; }

}  // namespace tqx
