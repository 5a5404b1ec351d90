// The wider forms of the oil filter's histograms, for OilHistogram.cpp alone.
#pragma once

#include "plugin/rows/OilHistogram.h"
#include "plugin/rows/X86.h"

namespace rows {

#ifdef ROWS_X86
std::int32_t FullestBinAvx512(const OilHistogram& histogram, std::int32_t levels);

std::int32_t SlideCountsAvx512(std::uint16_t* counts, const std::uint16_t* entering, const std::uint16_t* leaving,
                               std::int32_t bins);
#endif

}  // namespace rows
