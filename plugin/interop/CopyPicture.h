// Host pictures made from a picture.
//
// Every result is a copy, owned by the caller, and every failure gives nil. The rectangle is cut
// to the picture first; nothing left gives nil. Yields before and after the host picture's pixels
// are made, and after every row; if script code closes the picture meanwhile, the rows not yet
// copied stay black.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// The colours, of depth 32; gray as red = green = blue. Alpha does not count.
sdk::Object* CopyPicture(sdk::Object* self);
sdk::Object* CopyPicture(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

// Alpha as a gray picture of depth 32, white where the picture is opaque; nil without alpha.
// DrawMaskedPictureRGB without InvertMask reads it back.
sdk::Object* CopyMask(sdk::Object* self);
sdk::Object* CopyMask(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

// The colours, and alpha, where the picture has it, as their mask. The mask is width × height as
// called, not as cut: intended. Where CopyMask gives nil, without alpha or for any other reason, the
// picture comes without a mask; a mask that can't be attached, or would take 2^31 bytes
// or more, gives nil.
sdk::Object* CopyPictureWithMask(sdk::Object* self);
sdk::Object* CopyPictureWithMask(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width,
                                 std::int32_t height);

// The property DebugPicture: the top left 512 × 512 pixels with their mask, for a look while a
// script runs; nil unless DebugPictureEnabled.
sdk::Object* GetDebugPicture(sdk::Object* self);

}  // namespace tqx
