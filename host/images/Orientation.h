// The eight ways in which a camera may have been held, by the Exif numbering: 1 upright, 2
// mirrored left to right, 3 half turn, 4 mirrored top to bottom, 5 transposed, 6 wants a quarter
// turn clockwise, 7 transposed about the other diagonal, 8 wants a quarter turn the other way.
#pragma once

#include <string_view>

#include "host/images/Codec.h"

namespace host::codec {

constexpr bool SwapsSides(std::int32_t orientation) { return orientation >= 5; }

// The orientation in a block of Exif data (a TIFF structure, with or without the leading
// "Exif\0\0"); none when it says nothing that makes sense.
std::optional<std::int32_t> ExifOrientation(const std::uint8_t* data, std::size_t length);

// The same in XMP data: tiff:Orientation as an attribute or an element, under the prefix that
// everybody gives its name space.
std::optional<std::int32_t> XmpOrientation(std::string_view text);

// A text that is one digit from 1 to 8, with or without spaces around it.
std::optional<std::int32_t> OrientationDigit(std::string_view text);

// A decoder of the upright image. Orientation 1 gives the source itself, 2 mirrors rows as they
// come, the others hold the image.
DecoderPointer Upright(DecoderPointer source);

}  // namespace host::codec
