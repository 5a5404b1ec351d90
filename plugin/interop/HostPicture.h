// Pictures whose pixels are a host picture's own.
#pragma once

#include "sdk/PluginInterface.h"

namespace tqx {

// The constructor of a picture around a host picture's pixel memory, which is shared and not
// copied: changes show in the host picture at once. The host picture is retained as Target. Depth
// 32 becomes ImageFormatARGB with useAlpha, else ImageFormatXRGB; depth 24 ImageFormatRGB. Invalid
// for nil, any other depth, and a picture without pixel memory.
void ConstructHostPicture(sdk::Object* self, sdk::Object* picture, bool useAlpha);

}  // namespace tqx
