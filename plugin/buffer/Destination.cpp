#include "plugin/buffer/Destination.h"

#include <algorithm>

#include "plugin/buffer/Picture.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

using NewPictureHandler = sdk::Object* (*)(sdk::Object* factory, std::int32_t width, std::int32_t height,
                                           std::int32_t format);

sdk::Object* globalFactory = nullptr;

// What a factory's event gives, if it is a valid picture; otherwise nil.
sdk::Object* AskFactory(sdk::Object* factory, std::int32_t width, std::int32_t height, std::int32_t format) {
    if (!factory) return nullptr;
    const OwnedObject kept = OwnedObject::Retain(factory);  // its handler may replace it
    const auto handler =
        reinterpret_cast<NewPictureHandler>(host.GetEventInstancePPC(factory, factoryClass.events[0].hostNumber));
    if (!handler) return nullptr;
    OwnedObject picture(handler(factory, width, height, format));
    if (!picture || !BufferOf(picture.Get())->Valid) return nullptr;
    return picture.Give();
}

using Constructor = void (*)(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format);

sdk::Object* MakePicture(Constructor construct, std::int32_t width, std::int32_t height, std::int32_t format) {
    OwnedObject picture(NewPictureInstance());
    if (!picture) return nullptr;
    construct(picture.Get(), width, height, format);
    return BufferOf(picture.Get())->Valid ? picture.Give() : nullptr;
}

// Yields for a picture; false when script code took its storage meanwhile.
bool YieldAndKeep(PixelBuffer& buffer) { return YieldAndKeep(buffer, StorageWatch(buffer)) && IsUsable(buffer); }

}  // namespace

sdk::Object* MakeDestination(sdk::Object* owner, std::int32_t width, std::int32_t height, std::int32_t format) {
    sdk::Object* picture = owner ? AskFactory(BufferOf(owner)->Factory, width, height, format) : nullptr;
    if (!picture) picture = AskFactory(globalFactory, width, height, format);
    if (!picture) picture = MakePicture(&ConstructMemoryPicture, width, height, format);
    return picture;
}

bool HasFactory(sdk::Object* owner) { return globalFactory || (owner && BufferOf(owner)->Factory); }

sdk::Object* MakeUntouchedPicture(std::int32_t width, std::int32_t height, std::int32_t format) {
    return MakePicture(&ConstructUntouchedPicture, width, height, format);
}

void SetFactory(sdk::Object* factory) {
    const OwnedObject kept = OwnedObject::Retain(factory);  // it may be the one about to be released
    DropObject(globalFactory);
    KeepObject(globalFactory, factory);
}

sdk::Object* CreatePictureTQXShared(std::int32_t width, std::int32_t height, std::int32_t format) {
    return MakeDestination(nullptr, width, height, format);
}

sdk::Object* CreatePictureTQX(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format) {
    return MakeDestination(self, width, height, format);
}

std::int32_t Operation::CommonWidth() const { return std::min(source->Width, destination->Width); }

std::int32_t Operation::CommonHeight() const { return std::min(source->Height, destination->Height); }

bool ChooseChannels(const PixelBuffer& buffer, rows::ChannelSet* channels) {
    using rows::ChannelSet;
    if (!buffer.IsGray && !buffer.IsRGB) return false;
    if (buffer.HasAlpha)
        *channels = buffer.IsGray ? ChannelSet::GrayAlpha : ChannelSet::RgbAlpha;
    else
        *channels = buffer.IsGray ? ChannelSet::Gray : ChannelSet::Rgb;
    return true;
}

Operation BeginOperation(sdk::Object* self, sdk::Object* dest, std::int32_t width, std::int32_t height) {
    Operation operation;
    PixelBuffer& source = *BufferOf(self);
    if (!IsUsable(source) || !YieldAndKeep(source)) return operation;
    const StorageWatch sourceWatch(source);
    OwnedObject result =
        dest ? OwnedObject::Retain(dest) : OwnedObject(MakeDestination(self, width, height, source.ImageFormat));
    if (!result || !IsUsable(*BufferOf(result.Get()))) return operation;
    operation.source = &source;
    operation.destination = BufferOf(result.Get());
    operation.result = result.Give();
    const bool stands = YieldAndKeep(*operation.destination) && sourceWatch.Holds();
    operation.ready =
        ChooseChannels(source, &operation.channels) && stands && source.Width > 0 && !RowsOf(source).IsEmpty();
    return operation;
}

Operation BeginOperation(sdk::Object* self, sdk::Object* dest) {
    const PixelBuffer& source = *BufferOf(self);
    return BeginOperation(self, dest, source.Width, source.Height);
}

bool BeginInPlace(PixelBuffer& buffer) {
    return IsUsable(buffer) && YieldAndKeep(buffer) && buffer.Width > 0 && buffer.Height > 0;
}

}  // namespace tqx
