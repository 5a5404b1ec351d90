// The wider form of three-tap averages, for FractionalBlur.cpp alone.
#pragma once

#include "plugin/rows/FractionalBlur.h"
#include "plugin/rows/X86.h"

namespace rows {

// The averages themselves, in doubles: of `count` samples with their two neighbours.
void MixByDoubles(const ThreeTaps& taps, const std::uint8_t* first, const std::uint8_t* row, const std::uint8_t* second,
                  std::int64_t count, std::uint8_t* result);

#ifdef ROWS_X86
// Finds the whole form; false when it doesn't give the same for all samples and neighbours.
bool FindWholeTaps(const ThreeTaps& taps, WholeTaps* whole);

void MixAvx512(const WholeTaps& taps, const std::uint8_t* first, const std::uint8_t* row, const std::uint8_t* second,
               std::int64_t count, std::uint8_t* result);
#endif

}  // namespace rows
