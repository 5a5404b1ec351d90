// The class PictureTQX as registered with the host: pictureClass, declared where the record it
// describes is (buffer/PixelBuffer.h).
#pragma once

namespace tqx {

// Builds the constants' declarations; must come before the class is registered.
void DeclarePictureConstants();

}  // namespace tqx
