// Views: pictures that share another picture's storage and keep that picture alive.
//
// Each gives a new picture owned by the caller, or nil. A view begins with YieldTicks 0, no
// Factory and DebugPictureEnabled false. Closing a parent takes the storage from its views: the
// script must not close a picture whose views are in use.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// The whole picture, or the rectangle cut to the picture's left and top edge and then to its
// size. Negative sizes reach left and up. A rectangle that begins past the right or the bottom
// edge gives a view of negative width or height, which nothing can be read from; such a view cuts
// nothing off a clip of its own, whose size is then the one called for.
sdk::Object* ClipImage(sdk::Object* self);
sdk::Object* ClipImage(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

// One channel as a gray picture whose pixels are the parent's PixelSize apart; nil when the
// picture lacks the channel.
sdk::Object* RedChannel(sdk::Object* self);
sdk::Object* GreenChannel(sdk::Object* self);
sdk::Object* BlueChannel(sdk::Object* self);
sdk::Object* GrayChannel(sdk::Object* self);
sdk::Object* AlphaChannel(sdk::Object* self);

// Red, green and blue without alpha; nil for a picture that is not IsRGB. The view's format code
// is ImageFormatRGB or ImageFormatBGR while PixelSize stays the parent's and all Has flags are
// false: go by offsets and PixelSize.
sdk::Object* RGBChannels(sdk::Object* self);

// The whole picture, upside down; of a mirrored view, upright again.
sdk::Object* MirroredView(sdk::Object* self);

}  // namespace tqx
