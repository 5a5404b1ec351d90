// The wider form of a convolution, for Convolve.cpp alone.
#pragma once

#include "plugin/rows/Convolve.h"
#include "plugin/rows/X86.h"

namespace rows {

#ifdef ROWS_X86
// Convolves `count` bytes (32 or more) whose neighbours all lie within the rows: row[i] + at is
// where those straight above and below the first one lie, and the weights have 16 bits.
void ConvolveAvx512(const Kernel& kernel, const KernelRows& rows, std::int64_t at, std::int64_t count,
                    std::uint8_t* result);
#endif

}  // namespace rows
