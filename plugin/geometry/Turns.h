// Half and quarter turns into a destination.
//
// Each takes a destination, or nil for a new picture in this one's format (Height × Width for the
// quarter turns), and gives the destination, owned by the caller, or nil when either picture
// can't be used. Only this picture's channels are moved, to the destination's places for them;
// filler bytes stay. What falls outside the destination is skipped; a picture that is neither
// gray nor RGB leaves it untouched. Source and destination may share pixels: each pixel is read
// when its turn comes.
#pragma once

#include "sdk/PluginInterface.h"

namespace tqx {

// Pixel (x, y) goes to (Width - 1 - x, Height - 1 - y); the middle row too.
sdk::Object* Rotate180(sdk::Object* self, sdk::Object* dest);

// Pixel (x, y) goes to column y of row Width - 1 - x: the top right corner becomes the top left.
// The blocked form walks square blocks that both pictures' windows hold, the other one whole rows;
// where the pictures share no pixels the results are the same.
sdk::Object* Rotate90(sdk::Object* self, sdk::Object* dest);
sdk::Object* Rotate90slow(sdk::Object* self, sdk::Object* dest);

// Pixel (x, y) goes to column Height - 1 - y of row x: the bottom left corner becomes the top left.
sdk::Object* Rotate270(sdk::Object* self, sdk::Object* dest);
sdk::Object* Rotate270slow(sdk::Object* self, sdk::Object* dest);

}  // namespace tqx
