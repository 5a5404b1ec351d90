// The wider form of a blur along a row, for BoxBlur.cpp alone.
#pragma once

#include <cstdint>

#include "plugin/rows/X86.h"

namespace rows {

// Windows that slide along a stretch of a row: at each step the sums lose one pixel and gain one.
struct WindowStretch {
    const std::uint8_t* leaving;
    const std::uint8_t* entering;
    std::int64_t count;  // bytes, whole pixels
    std::uint8_t* result;
};

#ifdef ROWS_X86
// Stores the means of a stretch and leaves the sums of `channels` channels as they are behind it.
// The size of the windows is at most kLargestSingleMean.
void BlurStretchAvx512(const WindowStretch& stretch, int channels, std::int32_t size, std::int32_t* sums);

// The same with 32 lanes of 16 bits, for sizes that WordMean serves.
void BlurStretchWordsAvx512(const WindowStretch& stretch, int channels, std::int32_t size, std::int32_t* sums);
#endif

}  // namespace rows
