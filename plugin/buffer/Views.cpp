// Clips, single channels, the RGB part and mirrored views.
#include "plugin/buffer/Views.h"

#include "plugin/buffer/ImageFormat.h"
#include "plugin/buffer/MappedStorage.h"
#include "plugin/buffer/Picture.h"
#include "plugin/buffer/PixelBuffer.h"
#include "plugin/buffer/Saturate.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

// Gives a described view its parent's storage, of which it may reach the first `rows` rows; for
// mapped storage a window of its own.
void ShareStorage(sdk::Object* parentObject, PixelBuffer& view, std::int32_t rows) {
    const PixelBuffer& parent = *BufferOf(parentObject);
    KeepObject(view.Parent, parentObject);
    KeepObject(view.Target, parent.Target);
    view.parentGeneration = parent.generation;
    view.rowAddress = parent.rowAddress;
    view.windowRows = parent.windowRows;
    view.storageRows = rows;
    view.firstMappedRow = view.lastMappedRow = -1;
    if (parent.IsMapping)
        ShareMapping(parent, view);
    else
        view.data = parent.data;
}

// One axis of a clip rectangle.
struct ClipSpan {
    std::int32_t start;
    std::int32_t size;
};

// Cuts one axis to a picture of `extent` pixels. A span that begins past the end gets the
// negative size extent - start, one that lies wholly before the picture covers all of it, and a
// picture of negative size cuts nothing: all intended, they come of comparing sizes as unsigned
// numbers.
ClipSpan ClipAxis(std::int64_t start, std::int64_t size, std::int32_t extent) {
    if (size < 0) {
        start += size;
        size = -size;
    }
    if (start < 0) {
        size += start;
        start = 0;
    }
    const std::int64_t end = static_cast<std::uint32_t>(extent);
    if (end <= start) size = 0;
    if (static_cast<std::uint32_t>(size) > end - start) size = extent - start;
    return {Saturate(start), Saturate(size)};
}

void ClipChannel(bool present, std::int32_t offset, std::int64_t shift, std::int32_t& viewOffset, bool& viewHas) {
    if (!present) return;
    viewOffset = Saturate(offset + shift);
    viewHas = true;
}

// The view's offsets are the picture's, moved right by `shift` bytes; absent channels stay at 0.
void ClipChannels(const PixelBuffer& parent, std::int64_t shift, PixelBuffer& view) {
    ClipChannel(parent.HasRed, parent.RedOffset, shift, view.RedOffset, view.HasRed);
    ClipChannel(parent.HasGreen, parent.GreenOffset, shift, view.GreenOffset, view.HasGreen);
    ClipChannel(parent.HasBlue, parent.BlueOffset, shift, view.BlueOffset, view.HasBlue);
    ClipChannel(parent.HasGray, parent.GrayOffset, shift, view.GrayOffset, view.HasGray);
    ClipChannel(parent.HasAlpha, parent.AlphaOffset, shift, view.AlphaOffset, view.HasAlpha);
}

sdk::Object* ChannelView(sdk::Object* self, bool present, std::int32_t offset) {
    if (!present) return nullptr;
    OwnedObject instance(NewPictureInstance());
    if (!instance) return nullptr;
    PixelBuffer& view = *BufferOf(instance.Get());
    CopyGeometry(*BufferOf(self), view);
    view.ImageFormat = ImageFormatG;
    view.GrayOffset = offset;
    view.IsGray = view.HasGray = true;
    ShareStorage(self, view, BufferOf(self)->storageRows);
    return instance.Give();
}

RowAddressOperation Mirrored(RowAddressOperation operation) {
    if (operation == &MemoryRowAddress) return &MirroredMemoryRowAddress;
    if (operation == &MirroredMemoryRowAddress) return &MemoryRowAddress;
    if (operation == &MappedRowAddress) return &MirroredMappedRowAddress;
    if (operation == &MirroredMappedRowAddress) return &MappedRowAddress;
    return nullptr;  // a closed picture has none
}

}  // namespace

sdk::Object* ClipImage(sdk::Object* self) {
    const PixelBuffer& parent = *BufferOf(self);
    return ClipImage(self, 0, 0, parent.Width, parent.Height);
}

sdk::Object* ClipImage(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    const PixelBuffer& parent = *BufferOf(self);
    const ClipSpan columns = ClipAxis(x, width, parent.Width);
    const ClipSpan lines = ClipAxis(y, height, parent.Height);
    OwnedObject instance(NewPictureInstance());
    if (!instance) return nullptr;
    PixelBuffer& view = *BufferOf(instance.Get());
    CopyGeometry(parent, view);
    ClipChannels(parent, std::int64_t{columns.start} * parent.PixelSize, view);
    view.Width = columns.size;
    view.Height = lines.size;
    view.RowOffset = Saturate(std::int64_t{lines.start} + parent.RowOffset);
    view.ImageFormat = parent.ImageFormat;
    view.IsGray = parent.IsGray;
    view.IsRGB = parent.IsRGB;
    KeepObject(view.MemoryTarget, parent.MemoryTarget);
    // Columns of a picture that has none lie anywhere: no row of theirs is given out.
    const bool hidden = parent.Width < 0 && view.Width > 0;
    ShareStorage(self, view, hidden ? 0 : parent.storageRows);
    return instance.Give();
}

sdk::Object* RedChannel(sdk::Object* self) {
    return ChannelView(self, BufferOf(self)->HasRed, BufferOf(self)->RedOffset);
}

sdk::Object* GreenChannel(sdk::Object* self) {
    return ChannelView(self, BufferOf(self)->HasGreen, BufferOf(self)->GreenOffset);
}

sdk::Object* BlueChannel(sdk::Object* self) {
    return ChannelView(self, BufferOf(self)->HasBlue, BufferOf(self)->BlueOffset);
}

sdk::Object* GrayChannel(sdk::Object* self) {
    return ChannelView(self, BufferOf(self)->HasGray, BufferOf(self)->GrayOffset);
}

sdk::Object* AlphaChannel(sdk::Object* self) {
    return ChannelView(self, BufferOf(self)->HasAlpha, BufferOf(self)->AlphaOffset);
}

sdk::Object* RGBChannels(sdk::Object* self) {
    const PixelBuffer& parent = *BufferOf(self);
    if (!parent.IsRGB) return nullptr;
    if (parent.ImageFormat < ImageFormatRGB || parent.ImageFormat > ImageFormatXBGR) return nullptr;
    OwnedObject instance(NewPictureInstance());
    if (!instance) return nullptr;
    PixelBuffer& view = *BufferOf(instance.Get());
    CopyGeometry(parent, view);
    view.IsRGB = true;  // the Has flags stay false: intended
    view.ImageFormat = parent.ImageFormat < ImageFormatBGR ? ImageFormatRGB : ImageFormatBGR;
    view.RedOffset = parent.RedOffset;
    view.GreenOffset = parent.GreenOffset;
    view.BlueOffset = parent.BlueOffset;
    ShareStorage(self, view, BufferOf(self)->storageRows);
    return instance.Give();
}

sdk::Object* MirroredView(sdk::Object* self) {
    sdk::Object* const view = ClipImage(self);
    if (!view) return nullptr;
    PixelBuffer& buffer = *BufferOf(view);
    buffer.rowAddress = Mirrored(buffer.rowAddress);
    RowAddress(buffer, 0);  // maps the window of the view's first row
    return view;
}

}  // namespace tqx
