// Host pictures made from a picture.
//
// Every result is a copy, owned by the caller, and every failure gives nil. The rectangle is cut
// to the picture first; nothing left gives nil. Yields before and after the host picture's pixels
// are made, and after every row.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// The colours, of depth 32; gray as red = green = blue. Alpha does not count.
sdk::Object* CopyPicture(sdk::Object* self);
sdk::Object* CopyPicture(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

}  // namespace tqx
