// The blur, and then the table that makes two colours of it.
#include "plugin/filters/Stamp.h"

#include <cstdint>

#include "plugin/buffer/Operation.h"
#include "plugin/buffer/Saturate.h"
#include "plugin/filters/Blur.h"
#include "plugin/filters/LookUp.h"
#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

// The share of white at a level. The limits may come in any order, or be no numbers.
double ShareOfWhite(int level, double low, double high) {
    if (level < low) return 0;
    if (level < high) {
        const double u = (level - low) / (high - low);
        return u * u * (3 - 2 * u);
    }
    return 1;
}

int Component(sdk::Color color, int shift) {
    return static_cast<int>(static_cast<std::uint32_t>(color) >> shift & 255);
}

struct StampLimits {
    double low;
    double high;
};

rows::Table StampTable(const StampLimits& limits, int black, int white) {
    rows::Table table;
    for (int i = 0; i < 256; ++i)
        table.entry[i] = TruncateToByte(ShareOfWhite(i, limits.low, limits.high) * (white - black) + black);
    return table;
}

sdk::Object* Stamp(sdk::Object* self, const StampLimits& limits, sdk::Color black, sdk::Color white) {
    Operation operation(self, nullptr);
    if (!operation) return operation.Give();
    rows::Table tables[3];
    for (int i = 0; i < 3; ++i) {
        const int shift = 16 - 8 * i;
        tables[i] = StampTable(limits, Component(black, shift), Component(white, shift));
    }
    // Gray goes by green: intended.
    LookUpPicture(operation, {&tables[0], &tables[1], &tables[2], &tables[1], nullptr});
    return operation.Give();
}

}  // namespace

sdk::Object* StampFilter(sdk::Object* self, sdk::Object* dest, double radius, double threshold, double softness,
                         sdk::Color black, sdk::Color white) {
    const OwnedObject blurred(BoxBlurFilter(self, dest, radius / 3.0, 3));
    if (!blurred) return nullptr;
    const StampLimits limits{(threshold - 0.5 * softness) * 255, (threshold + 0.5 * softness) * 255};
    return Stamp(blurred.Get(), limits, black, white);
}

}  // namespace tqx
