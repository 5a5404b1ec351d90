// Who is asked for a destination, in which order, and what may serve as one.
#include "plugin/buffer/Destination.h"

#include "plugin/buffer/Picture.h"
#include "plugin/buffer/PixelBuffer.h"
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

sdk::Object* MakeDestinationToFinish(sdk::Object* owner, std::int32_t width, std::int32_t height, std::int32_t format) {
    return HasFactory(owner) ? MakeDestination(owner, width, height, format)
                             : MakePicture(&ConstructPictureInTheMaking, width, height, format);
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

}  // namespace tqx
