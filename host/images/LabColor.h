// CIE L*a*b* colours as the red, green and blue of a screen.
#pragma once

#include <cstdint>

namespace host::codec {

// L* from 0 to 100, a* and b* about -128 to 127, relative to the white of a print (D50).
struct LabColor {
    double lightness, a, b;
};

// Stores red, green and blue of sRGB, rounded; what a screen can't show is brought to the nearest
// that it can, channel by channel. White becomes white and grays gray: the colours are adapted to
// the screen's white (D65) by the Bradford method. Formulas: CIE 15, IEC 61966-2-1.
void StoreLab(const LabColor& color, std::uint8_t* pixel);

}  // namespace host::codec
