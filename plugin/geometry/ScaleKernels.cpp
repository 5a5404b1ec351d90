// The seven kernels as functions of a distance.
#include "plugin/geometry/ScaleKernels.h"

#include <cmath>

#include "plugin/rows/Elementary.h"

namespace tqx {

namespace {

constexpr double kPi = 3.141592653589793;

// Linear interpolation.
double Triangle(double x) {
    const double t = std::abs(x);
    return t < 1 ? 1 - t : 0;
}

// Nearest neighbour. Both ends count: half-way between two samples takes both.
double Box(double x) { return std::abs(x) <= 0.5 ? 1 : 0; }

double Sinc(double u) {
    if (u == 0) return 1;
    return rows::Sin(kPi * u) / (kPi * u);
}

// The sinc function under the main lobe of a wider one (Lanczos window; Duchon, Lanczos Filtering
// in One and Two Dimensions, 1979).
double Lanczos3(double x) {
    const double t = std::abs(x);
    return t < 3 ? Sinc(t) * Sinc(t / 3.0) : 0;
}

double Lanczos8(double x) {
    const double t = std::abs(x);
    return t < 8 ? Sinc(t) * Sinc(t * 0.125) : 0;
}

// Mitchell and Netravali, Reconstruction Filters in Computer Graphics, 1988, with B = C = 1/3. The
// division comes last.
double Mitchell(double x) {
    const double t = std::abs(x), t2 = t * t, t3 = t2 * t;
    if (t < 1) return (7.0 * t3 - 12.0 * t2 + 16.0 / 3.0) / 6.0;
    if (t < 2) return (-7.0 / 3.0 * t3 + 12.0 * t2 - 20.0 * t + 32.0 / 3.0) / 6.0;
    return 0;
}

// Keys, Cubic Convolution Interpolation for Digital Image Processing, 1981, with a = -0.75.
double Poly3(double x) {
    const double t = std::abs(x), t2 = t * t, t3 = t2 * t;
    if (t < 1) return 1.25 * t3 - 2.25 * t2 + 1.0;
    if (t < 2) return -0.75 * t3 + 3.75 * t2 - 6.0 * t + 3.0;
    return 0;
}

// The six-point cubic of the same paper, of fourth order.
double Cubic(double x) {
    const double t = std::abs(x), t2 = t * t, t3 = t2 * t;
    if (t <= 1) return 4.0 / 3.0 * t3 - 7.0 / 3.0 * t2 + 1.0;
    if (t <= 2) return -7.0 / 12.0 * t3 + 3.0 * t2 - 59.0 / 12.0 * t + 2.5;
    if (t <= 3) return 1.0 / 12.0 * t3 - 2.0 / 3.0 * t2 + 1.75 * t - 1.5;
    return 0;
}

// In the order of the modes. Poly3 looks twice as far as it reaches: intended, though samples out
// there weigh nothing.
constexpr ScaleKernel kKernels[] = {
    {1.0, &Triangle, false}, {0.5, &Box, false},   {3.0, &Lanczos3, true}, {8.0, &Lanczos8, true},
    {2.0, &Mitchell, false}, {4.0, &Poly3, false}, {3.0, &Cubic, false},
};

}  // namespace

const ScaleKernel* KernelOfMode(std::int32_t mode) {
    if (mode < ScaleTriangle || mode > ScaleCubic) return nullptr;
    return &kKernels[mode - ScaleTriangle];
}

}  // namespace tqx
