// Typefaces: the measures of texts in them, and their glyphs as coverage.
//
// Outlines are shaped and scaled without hints, so that a text looks and measures the same wherever
// the same font file is. Fonts are those of the DejaVu family: the sans-serif one stands for every name that is
// not known.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "host/framework/DrawingState.h"

namespace host {

inline constexpr std::int32_t kDefaultTextSize = 12;
inline constexpr std::int32_t kMostTextSize = 1000;

// Pixels, rounded up.
struct FontMeasures {
    std::int32_t ascent;           // above the baseline
    std::int32_t height;           // from one line to the next
    std::int32_t underlineOffset;  // below the baseline, to the line's top
    std::int32_t underlineThickness;
};

// A glyph's bitmap, its first row at the top.
struct GlyphBitmap {
    std::int64_t x, y;  // of its top left pixel
    std::int32_t width, height;
    std::int32_t rowBytes;
    const std::uint8_t* coverage;  // 0 to 255
};

// Each raises UnsupportedFormatException where the font's file is missing.
FontMeasures MeasuresOf(const TextStyle& style);

// The width of one line of UTF-8 text in pixels, with its fraction.
double WidthOf(const TextStyle& style, std::string_view line);

// Calls `draw` for each glyph of a line whose baseline begins at a point, those outside of the area left
// out.
void DrawGlyphs(const TextStyle& style, std::string_view line, Point baseline, const Rectangle& visible,
                const std::function<void(const GlyphBitmap&)>& draw);

}  // namespace host
