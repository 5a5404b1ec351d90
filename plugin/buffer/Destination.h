// Destination pictures: who makes them.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// The class PictureFactoryTQX; the second word of its event's record is the number by which the
// host finds a factory's handler. The tables of the class fill it.
extern sdk::ClassDefinition factoryClass;

// A picture of the wanted size and format, owned by the caller: from the factory of `owner` (may
// be nil), else from the global factory, else a new picture in memory. A factory without a
// handler, or whose answer is nil or not Valid, is passed over; what it gives is not compared
// with what was asked. Nil when there is none to be had. Script code may run.
sdk::Object* MakeDestination(sdk::Object* owner, std::int32_t width, std::int32_t height, std::int32_t format);

// Whether MakeDestination would ask a factory. Without one, nobody but its caller knows the picture.
bool HasFactory(sdk::Object* owner);

// What MakeDestination gives without a factory; its pixels take no memory until they are touched.
sdk::Object* MakeUntouchedPicture(std::int32_t width, std::int32_t height, std::int32_t format);

// What MakeDestination gives, for an operation that calls FinishPicture before anyone else sees it: without
// a factory a picture whose memory is cleared as its rows are asked for.
sdk::Object* MakeDestinationToFinish(sdk::Object* owner, std::int32_t width, std::int32_t height, std::int32_t format);

// The shared method SetFactory: keeps the global factory until the next call; nil removes it.
void SetFactory(sdk::Object* factory);

// The two forms of CreatePictureTQX: with no owner, and with the picture as owner.
sdk::Object* CreatePictureTQXShared(std::int32_t width, std::int32_t height, std::int32_t format);
sdk::Object* CreatePictureTQX(sdk::Object* self, std::int32_t width, std::int32_t height, std::int32_t format);

}  // namespace tqx
