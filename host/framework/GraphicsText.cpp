// Lines parted to a width, and glyphs laid over the picture by their coverage.
#include "host/framework/GraphicsText.h"

#include <cmath>

#include "host/framework/Drawing.h"
#include "host/framework/Font.h"

namespace host {

namespace {

void DrawBitmap(PictureStorage& target, RgbColor color, const GlyphBitmap& glyph) {
    const Span columns = Clip(glyph.x, glyph.width, target.width), rows = Clip(glyph.y, glyph.height, target.height);
    if (columns.Count() == 0) return;
    std::vector<RgbColor> row(static_cast<std::size_t>(columns.Count()));
    const auto x = static_cast<std::int32_t>(columns.first), count = static_cast<std::int32_t>(row.size());
    for (std::int64_t y = rows.first; y < rows.end; ++y) {
        const std::uint8_t* const coverage = glyph.coverage + (y - glyph.y) * glyph.rowBytes + (x - glyph.x);
        LoadColors(target, x, static_cast<std::int32_t>(y), count, row.data());
        for (std::size_t i = 0; i < row.size(); ++i) row[i] = Blend(row[i], color, (255u - coverage[i]) * 0x010101u);
        StoreColors(target, x, static_cast<std::int32_t>(y), count, row.data());
    }
}

void Underline(PictureStorage& target, const DrawingState& state, std::string_view line, Point baseline) {
    const FontMeasures measures = MeasuresOf(state.text);
    const auto width = static_cast<std::int64_t>(std::ceil(WidthOf(state.text, line)));
    FillRectangle(target, {baseline.x, baseline.y + measures.underlineOffset, width, measures.underlineThickness},
                  state.color);
}

// Where a line that begins a text has to end so that it is not too wide: before a blank, or at the end.
// Words are measured one by one.
std::size_t BreakIn(const TextStyle& style, std::string_view line, std::int32_t width) {
    const double blank = WidthOf(style, " ");
    double used = 0;
    for (std::size_t at = 0;;) {
        const std::size_t end = std::min(line.find(' ', at), line.size());
        used += WidthOf(style, line.substr(at, end - at));
        if (used > width && at > 0) return at - 1;
        if (end == line.size()) return end;
        used += blank;
        at = end + 1;
    }
}

}  // namespace

std::vector<std::string_view> LinesOf(const TextStyle& style, std::string_view text, std::int32_t width) {
    std::vector<std::string_view> lines;
    for (;;) {
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        std::string_view line = text.substr(0, end);
        while (width > 0 && !line.empty()) {
            const std::size_t part = BreakIn(style, line, width);
            if (part == line.size()) break;
            lines.push_back(line.substr(0, part));
            line.remove_prefix(std::min(line.find_first_not_of(' ', part), line.size()));
        }
        lines.push_back(line);
        if (end == text.size()) return lines;
        text.remove_prefix(end + (text.substr(end, 2) == "\r\n" ? 2 : 1));
    }
}

void DrawText(PictureStorage& target, const DrawingState& state, std::string_view text, Point baseline,
              std::int32_t width) {
    const std::int32_t height = MeasuresOf(state.text).height;
    for (const std::string_view line : LinesOf(state.text, text, width)) {
        DrawGlyphs(state.text, line, baseline, {0, 0, target.width, target.height},
                   [&](const GlyphBitmap& glyph) { DrawBitmap(target, state.color, glyph); });
        if (state.text.underline) Underline(target, state, line, baseline);
        baseline.y += height;
    }
}

std::int32_t TextWidth(const TextStyle& style, std::string_view text) {
    double widest = 0;
    for (const std::string_view line : LinesOf(style, text, 0)) widest = std::max(widest, WidthOf(style, line));
    return static_cast<std::int32_t>(std::min(std::ceil(widest), 2147483647.0));
}

}  // namespace host
