// Colours from parts that are fractions of 1, and these parts of a colour.
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

// --- Parts of a colour ------------------------------------------------------------------------

struct Parts {
    double red, green, blue;

    double Most() const { return std::max({red, green, blue}); }
    double Range() const { return Most() - std::min({red, green, blue}); }
};

Parts PartsOf(sdk::Color color) {
    const auto bits = static_cast<std::uint32_t>(color);
    return {(bits >> 16 & 0xFF) / 255.0, (bits >> 8 & 0xFF) / 255.0, (bits & 0xFF) / 255.0};
}

// Sixths of a turn; 0 of a gray.
double SixthsOf(const Parts& parts) {
    const double range = parts.Range();
    if (range == 0) return 0;
    if (parts.Most() == parts.red) return (parts.green - parts.blue) / range + (parts.green < parts.blue ? 6 : 0);
    if (parts.Most() == parts.green) return (parts.blue - parts.red) / range + 2;
    return (parts.red - parts.green) / range + 4;
}

double Hue(sdk::Color color) { return SixthsOf(PartsOf(color)) / 6; }

double Saturation(sdk::Color color) {
    const Parts parts = PartsOf(color);
    return parts.Most() == 0 ? 0 : parts.Range() / parts.Most();
}

double HsvValue(sdk::Color color) { return PartsOf(color).Most(); }
double Cyan(sdk::Color color) { return 1 - PartsOf(color).red; }
double Magenta(sdk::Color color) { return 1 - PartsOf(color).green; }
double Yellow(sdk::Color color) { return 1 - PartsOf(color).blue; }

}  // namespace

void RegisterColorFunctions(Runtime& runtime) {
    static const sdk::MethodRecord functions[] = {
        sdk::SharedMethod<"HSV(hue as double, saturation as double, value as double) as color", Guarded<&Hsv>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"CMY(cyan as double, magenta as double, yellow as double) as color", Guarded<&Cmy>>(
            sdk::kMemberPortable),
        sdk::SharedMethod<"Hue(extends c as color) as double", Guarded<&Hue>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Saturation(extends c as color) as double", Guarded<&Saturation>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Value(extends c as color) as double", Guarded<&HsvValue>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Cyan(extends c as color) as double", Guarded<&Cyan>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Magenta(extends c as color) as double", Guarded<&Magenta>>(sdk::kMemberPortable),
        sdk::SharedMethod<"Yellow(extends c as color) as double", Guarded<&Yellow>>(sdk::kMemberPortable),
    };
    runtime.RegisterFunctions(functions);
}

}  // namespace host
