// The wider forms of masked rows, for HostPixels.cpp alone. Each takes the address of the first
// written byte, works on as many pixels from the left as it can, and gives their number.
#pragma once

#include <cstdint>

#include "plugin/rows/HostPixels.h"
#include "plugin/rows/X86.h"

namespace rows {

#ifdef ROWS_X86
std::int32_t DrawMaskedAvx2(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                            std::uint8_t* destination, std::int32_t width);
std::int32_t DrawMaskedAvx512(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                              std::uint8_t* destination, std::int32_t width);
std::int32_t BlendMaskedAvx2(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                             std::uint8_t* destination, std::int32_t width);
std::int32_t BlendMaskedAvx512(const MaskedPlan& plan, const std::uint8_t* picture, const std::uint8_t* mask,
                               std::uint8_t* destination, std::int32_t width);
#endif

}  // namespace rows
