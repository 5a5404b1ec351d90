// Convolution of packed rows with a kernel of five by five weights.
#pragma once

#include <cstdint>

namespace rows {

// What becomes of the samples around a pixel: trunc(scale × (delta + Σ weight × sample)), clamped
// to 0..255. The sum has 32 bits and wraps; scale is applied in double precision and what isn't a
// number becomes 0. Weights row by row from the top, in each from the left.
struct Kernel {
    std::int32_t weight[25];
    std::int32_t delta;
    double scale;
};

// Five rows of `width` pixels of `channels` bytes, the middle one that of the result. Another row
// may be null and then adds nothing.
struct KernelRows {
    const std::uint8_t* row[5];
    int channels;
    std::int32_t width;
};

// A kernel, and the form that serves its weights; made once an operation.
struct ConvolvePlan {
    Kernel kernel;
    void (*inside)(const Kernel& kernel, const KernelRows& rows, std::int64_t at, std::int64_t count,
                   std::uint8_t* result);
};

ConvolvePlan PlanConvolution(const Kernel& kernel);

// Convolves the pixels `first` to `end` - 1, from left to right. A sample left or right of the row
// is replaced by the one in the pixel's own column. The result may be the middle row itself: then
// a pixel sees what was stored for those to its left.
void ConvolveInOrder(const Kernel& kernel, const KernelRows& rows, std::int32_t first, std::int32_t end,
                     std::uint8_t* result);

// The same for all pixels of a row, with a result that is none of the rows.
void ConvolveRow(const ConvolvePlan& plan, const KernelRows& rows, std::uint8_t* result);

}  // namespace rows
