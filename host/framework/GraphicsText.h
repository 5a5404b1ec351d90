// Text in pictures: lines of UTF-8 text in one style and colour, clipped to the picture.
#pragma once

#include <string_view>
#include <vector>

#include "host/framework/DrawingState.h"

namespace host {

// The lines of a text, parted at its ends of lines and, where `width` is above 0, also between words where
// a line would be wider. A word that is too wide stands on a line of its own.
std::vector<std::string_view> LinesOf(const TextStyle& style, std::string_view text, std::int32_t width);

// The first line's baseline begins at the point.
void DrawText(PictureStorage& target, const DrawingState& state, std::string_view text, Point baseline,
              std::int32_t width);

// The width of the widest line, rounded up.
std::int32_t TextWidth(const TextStyle& style, std::string_view text);

}  // namespace host
