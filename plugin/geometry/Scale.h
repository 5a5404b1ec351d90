// Filtered scaling: a picture resampled to any size, first along rows into an intermediate picture
// of single-precision values, then along columns.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Scales the whole of `source` to width × height pixels at the top left of self; what self does not
// have of them is skipped, and the rest of self stays. `temp` is the intermediate, a picture of
// ImageFormatScaling of width × the source's height, which keeps its values; nil makes one for the
// call. `mode` is one of the Scale constants. Bytes are truncated, not rounded:
// intended.
//
// True when it ran, also for a source without pixels, which writes nothing. False, with nothing
// written, for a nil source, a size below 1, an unknown mode, pictures that can't be used, an
// intermediate that can't be had or is of another format, and pictures neither gray nor RGB. False
// too when script code that ran in a yield closed one of the pictures or built it anew: the rows
// done until then stay.
//
// Each picture whose YieldTicks is above 0 yields at the start, after each list of weights and after
// each row of either pass, the source first, then self, then the intermediate.
bool Scale(sdk::Object* self, sdk::Object* source, sdk::Object* temp, std::int32_t mode, std::int32_t width,
           std::int32_t height);

}  // namespace tqx
