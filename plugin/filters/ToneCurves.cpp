// Tables for gamma, gain, transfer and solarize, from the arguments of each member.
#include "plugin/filters/ToneCurves.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Saturate.h"
#include "plugin/filters/LookUp.h"
#include "plugin/rows/Elementary.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

// The irregular steps are part of the curve; no formula gives them.
// clang-format off
constexpr rows::Table kSolarizeTable = {{
    255, 253, 251, 249, 247, 245, 243, 241, 239, 237, 235, 233, 231, 229, 227, 225,
    223, 221, 219, 217, 215, 213, 211, 209, 207, 205, 203, 201, 199, 197, 195, 193,
    191, 189, 187, 185, 183, 180, 179, 177, 175, 173, 171, 169, 167, 164, 163, 161,
    159, 157, 155, 153, 151, 148, 147, 145, 143, 141, 139, 137, 135, 132, 131, 129,
    127, 125, 122, 121, 119, 117, 114, 113, 111, 109, 106, 105, 103, 101, 98, 97,
    95, 93, 90, 89, 87, 85, 82, 81, 79, 77, 74, 73, 71, 69, 66, 65,
    63, 61, 58, 56, 55, 53, 50, 48, 47, 45, 42, 40, 39, 37, 34, 32,
    31, 29, 26, 24, 23, 21, 18, 16, 15, 13, 10, 8, 7, 5, 2, 0,
    0, 2, 4, 6, 9, 11, 13, 15, 16, 18, 20, 22, 25, 27, 29, 31,
    32, 34, 36, 38, 41, 43, 45, 47, 48, 50, 52, 54, 57, 59, 61, 63,
    65, 66, 68, 70, 73, 75, 77, 79, 81, 82, 84, 86, 89, 91, 93, 95,
    97, 98, 100, 102, 105, 107, 109, 111, 113, 114, 116, 118, 121, 123, 125, 127,
    129, 131, 132, 134, 137, 139, 141, 143, 145, 147, 148, 150, 153, 155, 157, 159,
    161, 163, 164, 166, 169, 171, 173, 175, 177, 179, 180, 182, 185, 187, 189, 191,
    193, 195, 196, 198, 201, 203, 205, 207, 209, 211, 212, 214, 217, 219, 221, 223,
    225, 227, 228, 230, 233, 235, 237, 239, 241, 243, 244, 246, 249, 251, 253, 255,
}};
// clang-format on

// One table for gray and every colour.
Curves SameCurve(const rows::Table& table, const rows::Table* alpha) { return {&table, &table, &table, &table, alpha}; }

sdk::Object* ApplyCurves(Operation& operation, const Curves& curves) {
    LookUpPicture(operation, curves);
    return operation.Give();
}

rows::Table GammaTable(double gamma) {
    rows::Table table;
    const double exponent = 1.0 / gamma;
    for (int i = 0; i < 256; ++i) table.entry[i] = TruncateToByte(std::fma(rows::Pow(i / 255.0, exponent), 255.0, 0.5));
    return table;
}

// The gamma of a gray picture given three: each loses its fraction first, and so does their mean.
// Intended.
double MixedGamma(double red, double green, double blue) {
    const std::int64_t sum =
        std::int64_t{77} * Truncate(red) + std::int64_t{151} * Truncate(green) + std::int64_t{28} * Truncate(blue);
    return static_cast<double>(sum / 256);
}

sdk::Object* GammaOfThree(sdk::Object* self, sdk::Object* dest, double red, double green, double blue,
                          const rows::Table* alpha) {
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    if (operation.source->IsGray)
        return ApplyCurves(operation, SameCurve(GammaTable(MixedGamma(red, green, blue)), alpha));
    const rows::Table tables[] = {GammaTable(red), GammaTable(green), GammaTable(blue)};
    return ApplyCurves(operation, {&tables[0], &tables[1], &tables[2], nullptr, alpha});
}

// The gain curve at t, and what is left to 1.
struct Gained {
    double x;
    double rest;
};

Gained GainAt(double t, double power) {
    // The guards pin the first and the last entry, whatever the parameters: intended.
    if (t < 0.001) return {0, 1};
    if (t > 0.999) return {1, 0};
    const double x = t < 0.5 ? 0.5 * rows::Pow(2 * t, power) : 1 - 0.5 * rows::Pow(2 * (1 - t), power);
    return {x, 1 - x};
}

rows::Table GainTable(double gain, double bias) {
    rows::Table table;
    const double power = rows::Log(1 - gain) / rows::Log(0.5);
    const double k = 1 / bias - 2;
    for (int i = 0; i < 256; ++i) {
        const Gained gained = GainAt(i / 255.0, power);
        const double product = gained.rest == 0 ? 0 : gained.rest * k;  // k may be infinite
        table.entry[i] = TruncateToByte(gained.x / (product + 1) * 255.0);
    }
    return table;
}

// The low bytes of an array's first 256 elements, 0 where it has none.
rows::Table TransferTable(sdk::Array* array) {
    rows::Table table{};
    if (!array) return table;
    const std::int32_t last = std::min(host.RuntimeUBound(array), 255);
    for (std::int32_t i = 0; i <= last; ++i)
        table.entry[i] = static_cast<std::uint8_t>(host.RuntimeDirectReadIntArray(array, i));
    return table;
}

// An array that may be given, nil included, or not be an argument at all.
using MaybeArray = std::optional<sdk::Array*>;

// Arrays are read when all yields are over, so that what script code puts into them meanwhile counts.
sdk::Object* TransferOfOne(sdk::Object* self, sdk::Object* dest, sdk::Array* gray, MaybeArray alpha) {
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    const rows::Table grayTable = TransferTable(gray), alphaTable = TransferTable(alpha.value_or(nullptr));
    return ApplyCurves(operation, SameCurve(grayTable, alpha ? &alphaTable : nullptr));
}

sdk::Object* TransferOfThree(sdk::Object* self, sdk::Object* dest, sdk::Array* red, sdk::Array* green, sdk::Array* blue,
                             MaybeArray alpha) {
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    const rows::Table tables[] = {TransferTable(red), TransferTable(green), TransferTable(blue),
                                  TransferTable(alpha.value_or(nullptr))};
    // Gray goes by the green array: intended.
    return ApplyCurves(operation, {&tables[0], &tables[1], &tables[2], &tables[1], alpha ? &tables[3] : nullptr});
}

}  // namespace

sdk::Object* GammaFilter(sdk::Object* self, sdk::Object* dest, double gamma) {
    Operation operation(self, dest);
    return operation ? ApplyCurves(operation, SameCurve(GammaTable(gamma), nullptr)) : operation.Give();
}

sdk::Object* GammaFilter(sdk::Object* self, sdk::Object* dest, double gamma, double alphaGamma) {
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    const rows::Table alpha = GammaTable(alphaGamma);
    return ApplyCurves(operation, SameCurve(GammaTable(gamma), &alpha));
}

sdk::Object* GammaFilter(sdk::Object* self, sdk::Object* dest, double redGamma, double greenGamma, double blueGamma) {
    return GammaOfThree(self, dest, redGamma, greenGamma, blueGamma, nullptr);
}

sdk::Object* GammaFilter(sdk::Object* self, sdk::Object* dest, double redGamma, double greenGamma, double blueGamma,
                         double alphaGamma) {
    const rows::Table alpha = GammaTable(alphaGamma);
    return GammaOfThree(self, dest, redGamma, greenGamma, blueGamma, &alpha);
}

sdk::Object* GainFilter(sdk::Object* self, sdk::Object* dest, double gain, double bias) {
    Operation operation(self, dest);
    if (!operation) return operation.Give();
    const rows::Table table = GainTable(gain, bias);
    return ApplyCurves(operation, SameCurve(table, &table));
}

sdk::Object* TransferFilter(sdk::Object* self, sdk::Object* dest, sdk::Array* gray) {
    return TransferOfOne(self, dest, gray, std::nullopt);
}

sdk::Object* TransferFilter(sdk::Object* self, sdk::Object* dest, sdk::Array* gray, sdk::Array* alpha) {
    return TransferOfOne(self, dest, gray, alpha);
}

sdk::Object* TransferFilter(sdk::Object* self, sdk::Object* dest, sdk::Array* red, sdk::Array* green,
                            sdk::Array* blue) {
    return TransferOfThree(self, dest, red, green, blue, std::nullopt);
}

sdk::Object* TransferFilter(sdk::Object* self, sdk::Object* dest, sdk::Array* red, sdk::Array* green, sdk::Array* blue,
                            sdk::Array* alpha) {
    return TransferOfThree(self, dest, red, green, blue, alpha);
}

sdk::Object* SolarizeFilter(sdk::Object* self, sdk::Object* dest) {
    Operation operation(self, dest);
    return operation ? ApplyCurves(operation, SameCurve(kSolarizeTable, &kSolarizeTable)) : operation.Give();
}

}  // namespace tqx
