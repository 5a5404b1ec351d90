// L*a*b* to XYZ as seen by D50, to linear red, green and blue of D65, to bytes.
#include "host/images/LabColor.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace host::codec {

namespace {

constexpr double kWhite[3] = {0.96422, 1, 0.82521};  // D50

// XYZ of D50 to linear red, green and blue of D65, with the adaptation.
constexpr double kToScreen[3][3] = {
    {3.1338561, -1.6168667, -0.4906146}, {-0.9787684, 1.9161415, 0.0334540}, {0.0719453, -0.2289914, 1.4052427}};

// The inverse of the curve by which L*, a* and b* are made of XYZ: a cube, and a line near black.
double FromLabCurve(double value) {
    constexpr double start = 6.0 / 29;
    return value > start ? value * value * value : 3 * start * start * (value - 4.0 / 29);
}

double ToLinear(double encoded) {
    return encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
}

// From which linear value on a byte is the nearest, for the bytes from 1 on.
std::array<double, 255> Thresholds() {
    std::array<double, 255> thresholds;
    for (std::size_t i = 0; i < thresholds.size(); ++i) thresholds[i] = ToLinear((static_cast<double>(i) + 0.5) / 255);
    return thresholds;
}

std::uint8_t Encode(double linear) {
    static const std::array<double, 255> thresholds = Thresholds();
    return static_cast<std::uint8_t>(std::upper_bound(thresholds.begin(), thresholds.end(), linear) -
                                     thresholds.begin());
}

}  // namespace

void StoreLab(const LabColor& color, std::uint8_t* pixel) {
    const double y = (color.lightness + 16) / 116;
    const double curve[3] = {y + color.a / 500, y, y - color.b / 200};
    double xyz[3];
    for (int i = 0; i < 3; ++i) xyz[i] = kWhite[i] * FromLabCurve(curve[i]);
    for (int i = 0; i < 3; ++i)
        pixel[i] = Encode(kToScreen[i][0] * xyz[0] + kToScreen[i][1] * xyz[1] + kToScreen[i][2] * xyz[2]);
}

}  // namespace host::codec
