// Pictures from and to image files.
#pragma once

#include <optional>
#include <string>

#include "host/images/ImageWriter.h"
#include "host/objects/Object.h"

namespace host {

// The picture in a file, of depth 32; alpha becomes the mask (255 - alpha). Throws ImageError.
Ref<Object> ReadPicture(const std::string& path);

// Writes a picture; its mask becomes alpha where the format has it. A mask's channel that counts
// is its red; outside a smaller mask the picture is clear. Throws ImageError.
void WritePicture(sdk::Object* picture, const std::string& path, const ImageWriteOptions& options);

}  // namespace host
