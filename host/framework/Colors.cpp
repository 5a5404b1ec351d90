// Colours from parts that are fractions of 1.
#include <algorithm>
#include <cmath>

#include "host/framework/NumberFunctions.h"
#include "host/framework/Support.h"

namespace host {

namespace {

// Not-a-number counts as 0.
double Fraction(double part) { return part > 0 ? std::min(part, 1.0) : 0; }

std::uint32_t Byte(double fraction) { return static_cast<std::uint32_t>(fraction * 255 + 0.5); }

sdk::Color Mixed(double red, double green, double blue) {
    return static_cast<sdk::Color>(Byte(red) << 16 | Byte(green) << 8 | Byte(blue));
}

// A turn of the hue goes through red, yellow, green, cyan, blue, magenta; whole turns don't count.
sdk::Color Hsv(double hue, double saturation, double value) {
    const double turn = std::isfinite(hue) ? hue - std::floor(hue) : 0;
    const double most = Fraction(value), least = most * (1 - Fraction(saturation));
    const int sixth = std::min(static_cast<int>(turn * 6), 5);
    const double up = least + (most - least) * (turn * 6 - sixth), down = most + least - up;
    switch (sixth) {
        case 0:
            return Mixed(most, up, least);
        case 1:
            return Mixed(down, most, least);
        case 2:
            return Mixed(least, most, up);
        case 3:
            return Mixed(least, down, most);
        case 4:
            return Mixed(up, least, most);
        default:
            return Mixed(most, least, down);
    }
}

sdk::Color Cmy(double cyan, double magenta, double yellow) {
    return Mixed(1 - Fraction(cyan), 1 - Fraction(magenta), 1 - Fraction(yellow));
}

}  // namespace

void RegisterColorFunctions(Runtime& runtime) {
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"HSV(hue as double, saturation as double, value as double) as color", Guarded<&Hsv>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"CMY(cyan as double, magenta as double, yellow as double) as color", Guarded<&Cmy>>(
            sdk::kMemberPortable),
    };
    runtime.RegisterFunctions(functions);
}

}  // namespace host
