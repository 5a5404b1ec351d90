// Turning a block of packed pixels about its diagonal.
#pragma once

#include <cstdint>

#include "plugin/rows/Forms.h"

namespace rows {

// Column y of row x of the destination becomes pixel x of row y of the source, for x below width
// and y below height. Rows are sourceStride and destinationStride bytes apart. The blocks must not
// overlap.
using TransposeFunction = void(const std::uint8_t* source, std::int64_t sourceStride, std::uint8_t* destination,
                               std::int64_t destinationStride, std::int32_t width, std::int32_t height);

// For pixels of 1 to 4 bytes.
const Forms<TransposeFunction>& TransposeFormsFor(std::int32_t pixelSize);

}  // namespace rows
