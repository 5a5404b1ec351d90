// Copying pixels from one picture to another.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Copies pixels of `source` from (sourceX, sourceY) on to the rectangle of this picture, cut to
// both pictures (CopyRectangle.h). Colour becomes gray by (77 red + 151 green + 28 blue) / 256 and
// gray becomes red = green = blue; alpha is copied where both pictures have it and stays where
// only this one has. The source may be this picture or share its pixels: rows go from the top and
// pixels from the left, so a copy to the right or down reads what it has written.
//
// Does nothing for a nil source or a picture that can't be used. Yields for both pictures first
// and for this one after each row.
void CopyPixels(sdk::Object* self, sdk::Object* source, std::int32_t destX, std::int32_t destY, std::int32_t width,
                std::int32_t height, std::int32_t sourceX, std::int32_t sourceY);

// From the source's top left corner.
void CopyPixels(sdk::Object* self, sdk::Object* source, std::int32_t destX, std::int32_t destY, std::int32_t width,
                std::int32_t height);

// From corner to corner, this picture's size.
void CopyPixels(sdk::Object* self, sdk::Object* source);

}  // namespace tqx
