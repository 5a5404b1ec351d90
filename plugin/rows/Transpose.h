// Turning a block of packed pixels about its diagonal.
#pragma once

#include <cstdint>

namespace rows {

// Column y of row x of the destination becomes pixel x of row y of the source, for x below width
// and y below height. Pixels are pixelSize (1, 2 or 4) bytes, rows sourceStride and
// destinationStride bytes apart. The blocks must not overlap.
void TransposePixels(std::int32_t pixelSize, const std::uint8_t* source, std::int64_t sourceStride,
                     std::uint8_t* destination, std::int64_t destinationStride, std::int32_t width,
                     std::int32_t height);

}  // namespace rows
