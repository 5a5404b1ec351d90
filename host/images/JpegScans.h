// The scans of a JPEG file, counted before any is decoded.
#pragma once

#include "host/images/Codec.h"
#include "host/images/JpegLibrary.h"

namespace host::codec {

struct JpegScans {
    int count = 0;
    std::int64_t blocks = 0;  // that all scans together go through
    bool ended = false;       // by the end marker
};

// Walks the file from marker to marker, stopping after `most` scans; the stream's position stays.
// `jpeg` has read its head.
JpegScans CountScans(std::FILE* stream, const jpeg_decompress_struct& jpeg, int most);

}  // namespace host::codec
