// The members of Graphics over lines, shapes and pictures.
#include "host/framework/Graphics.h"

#include <algorithm>

#include "host/framework/Drawing.h"
#include "host/framework/Font.h"
#include "host/framework/GraphicsText.h"
#include "host/framework/Picture.h"
#include "host/framework/Support.h"

namespace host {

namespace {

struct GraphicsData {
    Object* picture;  // holds one reference; nil in an instance that a script made by itself
};

sdk::ClassDefinition definition{.name = "Graphics", .instanceDataSize = sizeof(GraphicsData)};

Object* PictureOf(sdk::Object* graphics) { return DataOf<GraphicsData>(graphics, definition).picture; }

// The pixels to draw into; raises when there is no picture.
PictureStorage& Target(sdk::Object* graphics) {
    PictureStorage* storage = StorageOf(PictureOf(graphics));
    if (!storage) Fail(kPicturesRaise.noPictureOfGraphics());
    return *storage;
}

DrawingState& State(sdk::Object* graphics) {
    Target(graphics);
    return DrawingStateOf(PictureOf(graphics));
}

RgbColor Color(sdk::Object* graphics) { return State(graphics).color; }

void Destroy(sdk::Object* graphics) { Release(PictureOf(graphics)); }

// --- Properties -----------------------------------------------------------------------------

std::int32_t Width(sdk::Object* graphics) { return Target(graphics).width; }
std::int32_t Height(sdk::Object* graphics) { return Target(graphics).height; }

sdk::Color ForeColor(sdk::Object* graphics) { return static_cast<sdk::Color>(Color(graphics)); }

void SetForeColor(sdk::Object* graphics, sdk::Color color) {
    State(graphics).color = static_cast<RgbColor>(color) & kWhite;
}

template <std::int32_t Pen::*Side>
std::int32_t PenSide(sdk::Object* graphics) {
    return State(graphics).pen.*Side;
}

// Below 0 counts as 0.
template <std::int32_t Pen::*Side>
void SetPenSide(sdk::Object* graphics, std::int32_t pixels) {
    State(graphics).pen.*Side = std::max(pixels, 0);
}

template <bool TextStyle::*Style>
bool HasStyle(sdk::Object* graphics) {
    return State(graphics).text.*Style;
}

template <bool TextStyle::*Style>
void SetStyle(sdk::Object* graphics, bool value) {
    State(graphics).text.*Style = value;
}

sdk::String* TextFont(sdk::Object* graphics) { return GiveString(State(graphics).text.font); }
void SetTextFont(sdk::Object* graphics, sdk::String* name) { State(graphics).text.font = Bytes(name); }

std::int32_t TextSize(sdk::Object* graphics) { return State(graphics).text.size; }

void SetTextSize(sdk::Object* graphics, std::int32_t size) {
    if (size < 0 || size > kMostTextSize) Fail(kPicturesRaise.textSize(size));
    State(graphics).text.size = size;
}

// --- Shapes ---------------------------------------------------------------------------------

using FillShape = void (*)(PictureStorage&, const Rectangle&, RgbColor);
using FrameShape = void (*)(PictureStorage&, const Rectangle&, const Pen&, RgbColor);

template <FillShape Draw>
void Fill(sdk::Object* graphics, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    Draw(Target(graphics), {x, y, width, height}, Color(graphics));
}

template <FrameShape Draw>
void Frame(sdk::Object* graphics, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    Draw(Target(graphics), {x, y, width, height}, State(graphics).pen, Color(graphics));
}

void FillRound(sdk::Object* graphics, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
               std::int32_t cornerWidth, std::int32_t cornerHeight) {
    FillRoundRectangle(Target(graphics), {x, y, width, height}, {cornerWidth, cornerHeight}, Color(graphics));
}

void FrameRound(sdk::Object* graphics, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                std::int32_t cornerWidth, std::int32_t cornerHeight) {
    FrameRoundRectangle(Target(graphics), {x, y, width, height}, {cornerWidth, cornerHeight}, State(graphics).pen,
                        Color(graphics));
}

// White, whatever the colour.
void ClearRect(sdk::Object* graphics, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    FillRectangle(Target(graphics), {x, y, width, height}, kWhite);
}

void Line(sdk::Object* graphics, std::int32_t x1, std::int32_t y1, std::int32_t x2, std::int32_t y2) {
    DrawLine(Target(graphics), {x1, y1}, {x2, y2}, State(graphics).pen, Color(graphics));
}

// Columns and rows by turns, from element 1 on; a last one without its other is left out.
std::vector<Point> PointsOf(sdk::Array* numbers) {
    const Array* const array = FromPlugin(numbers);
    if (!array) Fail(kPicturesRaise.noPoints());
    std::vector<Point> points;
    for (std::size_t i = 1; i + 1 < array->values.size(); i += 2)
        points.push_back({array->values[i].ToInt64(), array->values[i + 1].ToInt64()});
    return points;
}

void DrawPolygon(sdk::Object* graphics, sdk::Array* points) {
    FramePolygon(Target(graphics), PointsOf(points), State(graphics).pen, Color(graphics));
}

void FillPolygonOf(sdk::Object* graphics, sdk::Array* points) {
    FillPolygon(Target(graphics), PointsOf(points), Color(graphics));
}

// --- Text -----------------------------------------------------------------------------------

// Sound UTF-8.
std::string Utf8(sdk::String* text) {
    return SoundUtf8(Bytes(ConvertEncoding(Ref<String>::Share(FromPlugin(text)), sdk::Encoding::Utf8)));
}

void DrawWrapped(sdk::Object* graphics, sdk::String* text, std::int32_t x, std::int32_t y, std::int32_t width) {
    DrawText(Target(graphics), State(graphics), Utf8(text), {x, y}, width);
}

void DrawString(sdk::Object* graphics, sdk::String* text, std::int32_t x, std::int32_t y) {
    DrawWrapped(graphics, text, x, y, 0);
}

std::int32_t StringWidth(sdk::Object* graphics, sdk::String* text) {
    return TextWidth(State(graphics).text, Utf8(text));
}

std::int32_t TextAscent(sdk::Object* graphics) { return MeasuresOf(State(graphics).text).ascent; }
std::int32_t TextHeight(sdk::Object* graphics) { return MeasuresOf(State(graphics).text).height; }

std::int32_t StringHeight(sdk::Object* graphics, sdk::String* text, std::int32_t width) {
    const auto lines = static_cast<std::int64_t>(LinesOf(State(graphics).text, Utf8(text), width).size());
    return static_cast<std::int32_t>(std::min<std::int64_t>(lines * TextHeight(graphics), INT32_MAX));
}

// --- Pixels: outside the picture there is black, and nothing to set ---------------------------

sdk::Color GetPixel(sdk::Object* graphics, std::int32_t x, std::int32_t y) {
    RgbColor color = kBlack;
    if (Contains(Target(graphics), x, y)) LoadColors(Target(graphics), x, y, 1, &color);
    return static_cast<sdk::Color>(color);
}

void SetPixel(sdk::Object* graphics, std::int32_t x, std::int32_t y, sdk::Color color) {
    const auto rgb = static_cast<RgbColor>(color);
    if (Contains(Target(graphics), x, y)) StoreColors(Target(graphics), x, y, 1, &rgb);
}

// --- Pictures -------------------------------------------------------------------------------

PictureStorage& SourceOf(sdk::Object* picture) {
    PictureStorage* storage = StorageOf(picture);
    if (!storage) Fail(kPicturesRaise.nothingToDraw());
    return *storage;
}

void Draw9(sdk::Object* graphics, sdk::Object* p, std::int32_t x, std::int32_t y, std::int32_t dw, std::int32_t dh,
           std::int32_t sx, std::int32_t sy, std::int32_t sw, std::int32_t sh) {
    const PictureStorage& source = SourceOf(p);
    DrawStorage(Target(graphics), {x, y, dw, dh}, source, {sx, sy, sw, sh}, StorageOf(MaskOf(p)));
}

// The shorter forms: what is left out is the picture's own size and its top left corner.
void Draw8(sdk::Object* graphics, sdk::Object* p, std::int32_t x, std::int32_t y, std::int32_t dw, std::int32_t dh,
           std::int32_t sx, std::int32_t sy, std::int32_t sw) {
    Draw9(graphics, p, x, y, dw, dh, sx, sy, sw, SourceOf(p).height);
}

void Draw7(sdk::Object* graphics, sdk::Object* p, std::int32_t x, std::int32_t y, std::int32_t dw, std::int32_t dh,
           std::int32_t sx, std::int32_t sy) {
    Draw8(graphics, p, x, y, dw, dh, sx, sy, SourceOf(p).width);
}

void Draw6(sdk::Object* graphics, sdk::Object* p, std::int32_t x, std::int32_t y, std::int32_t dw, std::int32_t dh,
           std::int32_t sx) {
    Draw7(graphics, p, x, y, dw, dh, sx, 0);
}

void Draw5(sdk::Object* graphics, sdk::Object* p, std::int32_t x, std::int32_t y, std::int32_t dw, std::int32_t dh) {
    Draw6(graphics, p, x, y, dw, dh, 0);
}

void Draw4(sdk::Object* graphics, sdk::Object* p, std::int32_t x, std::int32_t y, std::int32_t dw) {
    Draw5(graphics, p, x, y, dw, SourceOf(p).height);
}

void Draw3(sdk::Object* graphics, sdk::Object* p, std::int32_t x, std::int32_t y) {
    Draw4(graphics, p, x, y, SourceOf(p).width);
}

}  // namespace

Ref<Object> NewGraphics(sdk::Object* picture) {
    Ref<Object> graphics = NewInstanceOf(definition);
    DataOf<GraphicsData>(graphics.get(), definition).picture = Ref<Object>::Share(FromPlugin(picture)).Detach();
    return graphics;
}

void RegisterGraphics(Runtime& runtime) {
    static const sdk::MethodRecord methods[] = {
        // Plug-ins look the longest form up by this very text.
        sdk::Method<"DrawPicture( p as Picture, x as Integer, y as Integer, dw as Integer, dh as Integer, "
                    "sx as Integer, sy as Integer, sw as Integer, sh as Integer )",
                    Guarded<&Draw9>>(0),
        sdk::Method<"DrawPicture(p as Picture, x as Integer, y as Integer, dw as Integer, dh as Integer, "
                    "sx as Integer, sy as Integer, sw as Integer)",
                    Guarded<&Draw8>>(0),
        sdk::Method<"DrawPicture(p as Picture, x as Integer, y as Integer, dw as Integer, dh as Integer, "
                    "sx as Integer, sy as Integer)",
                    Guarded<&Draw7>>(0),
        sdk::Method<"DrawPicture(p as Picture, x as Integer, y as Integer, dw as Integer, dh as Integer, "
                    "sx as Integer)",
                    Guarded<&Draw6>>(0),
        sdk::Method<"DrawPicture(p as Picture, x as Integer, y as Integer, dw as Integer, dh as Integer)",
                    Guarded<&Draw5>>(0),
        sdk::Method<"DrawPicture(p as Picture, x as Integer, y as Integer, dw as Integer)", Guarded<&Draw4>>(0),
        sdk::Method<"DrawPicture(p as Picture, x as Integer, y as Integer)", Guarded<&Draw3>>(0),
        sdk::Method<"FillRect(x as Integer, y as Integer, width as Integer, height as Integer)",
                    Guarded<&Fill<&FillRectangle>>>(0),
        sdk::Method<"DrawRect(x as Integer, y as Integer, width as Integer, height as Integer)",
                    Guarded<&Frame<&FrameRectangle>>>(0),
        sdk::Method<"ClearRect(x as Integer, y as Integer, width as Integer, height as Integer)", Guarded<&ClearRect>>(
            0),
        sdk::Method<"FillOval(x as Integer, y as Integer, width as Integer, height as Integer)",
                    Guarded<&Fill<&FillEllipse>>>(0),
        sdk::Method<"DrawOval(x as Integer, y as Integer, width as Integer, height as Integer)",
                    Guarded<&Frame<&FrameEllipse>>>(0),
        sdk::Method<"DrawLine(x1 as Integer, y1 as Integer, x2 as Integer, y2 as Integer)", Guarded<&Line>>(0),
        sdk::Method<"FillRoundRect(x as Integer, y as Integer, width as Integer, height as Integer, "
                    "cornerWidth as Integer, cornerHeight as Integer)",
                    Guarded<&FillRound>>(0),
        sdk::Method<"DrawRoundRect(x as Integer, y as Integer, width as Integer, height as Integer, "
                    "cornerWidth as Integer, cornerHeight as Integer)",
                    Guarded<&FrameRound>>(0),
        sdk::Method<"DrawPolygon(points() as Integer)", Guarded<&DrawPolygon>>(0),
        sdk::Method<"FillPolygon(points() as Integer)", Guarded<&FillPolygonOf>>(0),
        sdk::Method<"DrawString(text as String, x as Integer, y as Integer)", Guarded<&DrawString>>(0),
        sdk::Method<"DrawString(text as String, x as Integer, y as Integer, width as Integer)", Guarded<&DrawWrapped>>(
            0),
        sdk::Method<"StringWidth(text as String) as Integer", Guarded<&StringWidth>>(0),
        sdk::Method<"StringHeight(text as String, width as Integer) as Integer", Guarded<&StringHeight>>(0),
        sdk::AssignableMethod<"Pixel(x as Integer, y as Integer) as Color", Guarded<&GetPixel>, Guarded<&SetPixel>>(0),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadOnly<"Integer", &Width>("Width"),
        ReadOnly<"Integer", &Height>("Height"),
        ReadWrite<"Color", &ForeColor, &SetForeColor>("ForeColor"),
        ReadWrite<"Integer", &PenSide<&Pen::width>, &SetPenSide<&Pen::width>>("PenWidth"),
        ReadWrite<"Integer", &PenSide<&Pen::height>, &SetPenSide<&Pen::height>>("PenHeight"),
        ReadWrite<"String", &TextFont, &SetTextFont>("TextFont"),
        ReadWrite<"Integer", &TextSize, &SetTextSize>("TextSize"),
        ReadWrite<"Boolean", &HasStyle<&TextStyle::bold>, &SetStyle<&TextStyle::bold>>("Bold"),
        ReadWrite<"Boolean", &HasStyle<&TextStyle::italic>, &SetStyle<&TextStyle::italic>>("Italic"),
        ReadWrite<"Boolean", &HasStyle<&TextStyle::underline>, &SetStyle<&TextStyle::underline>>("Underline"),
        ReadOnly<"Integer", &TextAscent>("TextAscent"),
        ReadOnly<"Integer", &TextHeight>("TextHeight"),
    };
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
}

}  // namespace host
