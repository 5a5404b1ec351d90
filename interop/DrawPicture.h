// Host pictures drawn into a picture.
//
// Host pixel (SourceX + i, SourceY + j) lands on pixel (DestX + i, DestY + j); a negative source
// offset moves the destination left or up instead. Without a source it is 0, 0; without a size it
// is the host picture's Width and Height; without a destination that is 0, 0. What reaches past
// either picture is cut off. Nothing is drawn from a picture that can't be locked or converted.
// Yields before the lock, after the cut, after every row and once after the unlock.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Red, green and blue; needs all three. Alpha and unused bytes stay.
void DrawPictureRGB(sdk::Object* self, sdk::Object* picture);
void DrawPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY);
void DrawPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                    std::int32_t destWidth, std::int32_t destHeight);
void DrawPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                    std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX, std::int32_t sourceY);

}  // namespace tqx
