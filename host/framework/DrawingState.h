// What a picture's Graphics draws with.
#pragma once

#include <string>

#include "host/framework/Shapes.h"

namespace host {

struct TextStyle {
    std::string font;       // empty for the system's
    std::int32_t size = 0;  // pixels; 0 for the system's
    bool bold = false, italic = false, underline = false;
};

struct DrawingState {
    RgbColor color = kBlack;
    Pen pen;
    TextStyle text;
};

}  // namespace host
