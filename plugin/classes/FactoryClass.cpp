// The class PictureFactoryTQX: a script's subclass of it makes destination pictures.
#include <iterator>

#include "plugin/buffer/Destination.h"
#include "sdk/Declare.h"

namespace tqx {

namespace {

sdk::EventRecord events[] = {
    {"NewPictureTQX(Width as integer, Height as integer, ImageFormat as integer) as PictureTQX", 0},
};

const sdk::MethodRecord sharedMethods[] = {
    sdk::SharedMethod<"SetFactory(factory as PictureFactoryTQX)", &SetFactory>(0),
};

}  // namespace

sdk::ClassDefinition factoryClass = {
    .version = sdk::kInterfaceVersion,
    .name = "PictureFactoryTQX",
    .superclass = nullptr,
    .instanceDataSize = 0,
    .instanceDataOffset = 0,
    .constructor = nullptr,
    .destructor = nullptr,
    .properties = nullptr,
    .propertyCount = 0,
    .methods = nullptr,
    .methodCount = 0,
    .events = events,
    .eventCount = std::size(events),
    .constants = nullptr,
    .constantCount = 0,
    .flags = 4,
    .sharedMethods = sharedMethods,
    .sharedMethodCount = std::size(sharedMethods),
};

}  // namespace tqx
