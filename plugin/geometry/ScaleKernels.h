// The reconstruction kernels of filtered scaling.
#pragma once

#include <cstdint>

namespace tqx {

// The modes of Scale, the class's constants of the same names.
enum ScaleMode : std::int32_t {
    ScaleTriangle = 1,
    ScaleBox = 2,
    ScaleLanczos3 = 3,
    ScaleLanczos8 = 4,
    ScaleMitchell = 5,
    ScalePoly3 = 6,
    ScaleCubic = 7,
};

// A kernel is even, 1 around 0 and not scaled: whoever uses it divides by the sum of the weights.
struct ScaleKernel {
    double support;              // how far samples are looked for, in samples; the kernel may end sooner
    double (*weight)(double x);  // at a distance in samples
    bool costly;                 // takes sines
};

// The kernel of a mode; null for any other number.
const ScaleKernel* KernelOfMode(std::int32_t mode);

}  // namespace tqx
