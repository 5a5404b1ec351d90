// The chunks of a PNG file, walked before its pixels are read.
#pragma once

#include "host/images/Codec.h"

namespace host::codec {

// Goes from chunk to chunk for the orientation, which may stand behind the pixels: in Exif data of
// their own chunk or among the texts, else in XMP data, else as a text by itself; 1 where nobody
// says. A file that doesn't reach its end fails, as cut short. The stream is left at its start.
std::int32_t WalkPngChunks(const Input& input);

}  // namespace host::codec
