// Sharpening against a blurred copy.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Moves every channel, alpha included, away from what it is in `reference`: where the difference
// is at least `threshold` it becomes 4 × amount + 1 times as large. In place. False, and nothing
// changed, when the reference is nil or of another size or format, or when either picture can't
// be used.
bool UnsharpFilter(sdk::Object* self, sdk::Object* reference, double amount, std::int32_t threshold);

}  // namespace tqx
