// The wider form of engraving, for Engrave.cpp alone.
#pragma once

#include <cstdint>

#include "plugin/rows/X86.h"

namespace rows {

#ifdef ROWS_X86
void EngraveAvx512(const std::uint8_t* pixels, const std::uint8_t* others, std::int64_t count, std::uint8_t* result);
#endif

}  // namespace rows
