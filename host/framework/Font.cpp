// Finds font files, shapes texts through HarfBuzz and draws outlines through FreeType.
#include "host/framework/Font.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H
#include <hb-ft.h>
#include <hb.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>

#include "host/framework/Support.h"

namespace host {

namespace {

constexpr FT_Int32 kLoadFlags = FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP;
constexpr FT_Matrix kSlant = {0x10000, 0x3333, 0, 0x10000};  // a fifth to the right for each step up
constexpr double kUnit = 64;                                 // of positions

constexpr const char* kFolders[] = {"/usr/share/fonts/truetype/dejavu", "/usr/share/fonts/dejavu",
                                    "/usr/share/fonts/dejavu-sans-fonts", "/usr/share/fonts/TTF"};

struct FamilyRow {
    std::string_view name;
    const char* file;
};

constexpr const char* kSans = "DejaVuSans";
constexpr const char* kSerif = "DejaVuSerif";
constexpr const char* kMono = "DejaVuSansMono";

constexpr FamilyRow kFamilies[] = {{"DejaVu Serif", kSerif},    {"Times", kSerif},   {"Times New Roman", kSerif},
                                   {"New York", kSerif},        {"Georgia", kSerif}, {"Palatino", kSerif},
                                   {"DejaVu Sans Mono", kMono}, {"Courier", kMono},  {"Courier New", kMono},
                                   {"Monaco", kMono},           {"Menlo", kMono},    {"Andale Mono", kMono}};

std::string FileNameOf(const TextStyle& style) {
    std::string name = kSans;
    for (const FamilyRow& row : kFamilies)
        if (SameName(row.name, style.font)) name = row.file;
    return name + (style.bold ? "-Bold.ttf" : ".ttf");
}

std::string PathOfFont(const std::string& name) {
    const char* const own = std::getenv("TQX_FONTS");
    std::vector<std::string> folders(std::begin(kFolders), std::end(kFolders));
    if (own) folders.insert(folders.begin(), own);
    for (const std::string& folder : folders)
        if (std::string path = folder + '/' + name; access(path.c_str(), R_OK) == 0) return path;
    Fail(kPicturesRaise.noFontFile(name));
}

template <auto Free>
struct Freeing {
    void operator()(auto* held) const { Free(held); }
};

using Face = std::unique_ptr<FT_FaceRec_, Freeing<&FT_Done_Face>>;
using Buffer = std::unique_ptr<hb_buffer_t, Freeing<&hb_buffer_destroy>>;
using ShapingFont = std::unique_ptr<hb_font_t, Freeing<&hb_font_destroy>>;

struct FontFiles {
    FT_Library library = nullptr;
    std::map<std::string, Face> faces;  // by file name

    FontFiles() {
        if (FT_Init_FreeType(&library) != 0) throw std::bad_alloc();
    }
    ~FontFiles() {
        faces.clear();
        FT_Done_FreeType(library);
    }
};

FT_Face LoadFace(const std::string& name) {
    static FontFiles files;
    Face& face = files.faces[name];
    if (face) return face.get();
    FT_Face loaded = nullptr;
    const std::string path = PathOfFont(name);
    if (FT_New_Face(files.library, path.c_str(), 0, &loaded) != 0) Fail(kPicturesRaise.noFont(path));
    face.reset(loaded);
    return loaded;
}

FT_Face FaceFor(const TextStyle& style) {
    const FT_Face face = LoadFace(FileNameOf(style));
    const std::int32_t size = style.size > 0 ? style.size : kDefaultTextSize;
    if (FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(size)) != 0) throw std::bad_alloc();
    return face;
}

// A line's glyphs in the order in which they are drawn, with their advances.
Buffer Shape(FT_Face face, std::string_view line) {
    Buffer buffer(hb_buffer_create());
    const ShapingFont font(hb_ft_font_create_referenced(face));
    hb_ft_font_set_load_flags(font.get(), kLoadFlags);
    hb_buffer_add_utf8(buffer.get(), line.data(), static_cast<int>(line.size()), 0, -1);
    hb_buffer_guess_segment_properties(buffer.get());
    hb_buffer_set_language(buffer.get(), hb_language_from_string("en", -1));  // not the machine's
    hb_shape(font.get(), buffer.get(), nullptr, 0);
    if (!hb_buffer_allocation_successful(buffer.get())) throw std::bad_alloc();
    return buffer;
}

std::span<const hb_glyph_info_t> GlyphsOf(const Buffer& buffer) {
    unsigned count = 0;
    const hb_glyph_info_t* const glyphs = hb_buffer_get_glyph_infos(buffer.get(), &count);
    return {glyphs, count};
}

std::span<const hb_glyph_position_t> PositionsOf(const Buffer& buffer) {
    unsigned count = 0;
    const hb_glyph_position_t* const positions = hb_buffer_get_glyph_positions(buffer.get(), &count);
    return {positions, count};
}

std::int32_t RoundedUp(FT_Pos units) {
    return static_cast<std::int32_t>(std::ceil(static_cast<double>(units) / kUnit));
}

// A position in units of the font, scaled.
FT_Pos Scaled(FT_Face face, FT_Short units) { return FT_MulFix(units, face->size->metrics.y_scale); }

// Loads a glyph's outline moved by fractions of a pixel.
bool LoadOutline(FT_Face face, FT_UInt glyph, bool italic, FT_Pos x, FT_Pos y) {
    if (FT_Load_Glyph(face, glyph, kLoadFlags) != 0 || face->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return false;
    if (italic) FT_Outline_Transform(&face->glyph->outline, &kSlant);
    FT_Outline_Translate(&face->glyph->outline, x, y);
    return face->glyph->outline.n_contours > 0;
}

bool MayBeSeen(FT_Face face, Point origin, const Rectangle& visible) {
    FT_BBox box;
    FT_Outline_Get_CBox(&face->glyph->outline, &box);
    const std::int64_t left = origin.x + (box.xMin >> 6), right = origin.x + (box.xMax >> 6) + 1;
    const std::int64_t top = origin.y - (box.yMax >> 6) - 1, bottom = origin.y - (box.yMin >> 6);
    return right >= visible.x && left < visible.x + visible.width && bottom >= visible.y &&
           top < visible.y + visible.height;
}

}  // namespace

FontMeasures MeasuresOf(const TextStyle& style) {
    const FT_Face face = FaceFor(style);
    const FT_Pos ascent = Scaled(face, face->ascender), height = Scaled(face, face->height);
    const FT_Pos middle = -Scaled(face, face->underline_position), thickness = Scaled(face, face->underline_thickness);
    return {RoundedUp(ascent), RoundedUp(height), std::max(RoundedUp(middle - thickness / 2), 1),
            std::max(RoundedUp(thickness - 32), 1)};
}

double WidthOf(const TextStyle& style, std::string_view line) {
    if (line.empty()) return 0;
    const Buffer buffer = Shape(FaceFor(style), line);
    std::int64_t width = 0;
    for (const hb_glyph_position_t& position : PositionsOf(buffer)) width += position.x_advance;
    return static_cast<double>(width) / kUnit;
}

void DrawGlyphs(const TextStyle& style, std::string_view line, Point baseline, const Rectangle& visible,
                const std::function<void(const GlyphBitmap&)>& draw) {
    if (line.empty()) return;
    const FT_Face face = FaceFor(style);
    const Buffer buffer = Shape(face, line);
    const auto glyphs = GlyphsOf(buffer);
    const auto positions = PositionsOf(buffer);
    std::int64_t x = 0, y = 0;  // in units, from the baseline's beginning
    for (std::size_t i = 0; i < glyphs.size(); ++i) {
        const std::int64_t left = x + positions[i].x_offset, up = y + positions[i].y_offset;
        const Point origin{baseline.x + (left >> 6), baseline.y - (up >> 6)};
        x += positions[i].x_advance;
        y += positions[i].y_advance;
        if (!LoadOutline(face, glyphs[i].codepoint, style.italic, left & 63, up & 63)) continue;
        if (!MayBeSeen(face, origin, visible)) continue;
        if (FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL) != 0) throw std::bad_alloc();
        const FT_GlyphSlot slot = face->glyph;
        draw({origin.x + slot->bitmap_left, origin.y - slot->bitmap_top, static_cast<std::int32_t>(slot->bitmap.width),
              static_cast<std::int32_t>(slot->bitmap.rows), slot->bitmap.pitch, slot->bitmap.buffer});
    }
}

}  // namespace host
