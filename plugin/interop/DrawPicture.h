// Host pictures drawn into a picture.
//
// Host pixel (sourceX + i, sourceY + j) lands on pixel (destX + i, destY + j); a negative source
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

// One of the host picture's colours into gray; needs gray. Alpha stays.
void DrawPictureRedToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                 std::int32_t destWidth, std::int32_t destHeight);
void DrawPictureRedToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                 std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX,
                                 std::int32_t sourceY);
void DrawPictureGreenToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                   std::int32_t destWidth, std::int32_t destHeight);
void DrawPictureGreenToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                   std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX,
                                   std::int32_t sourceY);
void DrawPictureBlueToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                  std::int32_t destWidth, std::int32_t destHeight);
void DrawPictureBlueToGrayChannel(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                  std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX,
                                  std::int32_t sourceY);

// Alpha from the red of the host picture's mask, or 255 less it with invertMask; then red, green
// and blue; needs all three colours. A picture without a mask is opaque: alpha 255, inverted 0.
// Nothing is drawn when the mask can't be locked; a mask smaller than its picture cuts the area.
//
// Alpha is written at AlphaOffset whether the layout has alpha or not: in ImageFormatXRGB and
// ImageFormatXBGR the unused first byte takes it, elsewhere the colour in byte 0 replaces it:
// intended.
void DrawMaskedPictureRGB(sdk::Object* self, sdk::Object* picture, bool invertMask);
void DrawMaskedPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                          bool invertMask);
void DrawMaskedPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                          std::int32_t destWidth, std::int32_t destHeight, bool invertMask);
void DrawMaskedPictureRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                          std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX, std::int32_t sourceY,
                          bool invertMask);

// Blends the host picture over the colours through its mask, each colour by the mask's channel of
// the same name: black takes the host picture's, white keeps the picture's, the other way round
// with invertMask. Needs all three colours; alpha stays. A host picture without a mask, or whose
// mask can't be locked, draws nothing.
void DrawMaskedPictureApplyMaskRGB(sdk::Object* self, sdk::Object* picture, bool invertMask);
void DrawMaskedPictureApplyMaskRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                   bool invertMask);
void DrawMaskedPictureApplyMaskRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                   std::int32_t destWidth, std::int32_t destHeight, bool invertMask);
void DrawMaskedPictureApplyMaskRGB(sdk::Object* self, sdk::Object* picture, std::int32_t destX, std::int32_t destY,
                                   std::int32_t destWidth, std::int32_t destHeight, std::int32_t sourceX,
                                   std::int32_t sourceY, bool invertMask);

}  // namespace tqx
