// The wider form of table look-ups, for LookUp.cpp alone.
#pragma once

#include "plugin/rows/LookUp.h"
#include "plugin/rows/X86.h"

namespace rows {

#ifdef ROWS_X86
// Maps `count` bytes, from the first channel byte of a row to the last.
void LookUpAvx512(const LookUpLanes& lanes, const std::uint8_t* source, std::uint8_t* destination, std::int64_t count);
#endif

}  // namespace rows
