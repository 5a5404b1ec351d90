#include "host/framework/Graphics.h"

#include "host/framework/Drawing.h"
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
    if (!storage) Fail("NilObjectException", "This graphics belongs to no picture.");
    return *storage;
}

RgbColor& Color(sdk::Object* graphics) {
    Target(graphics);
    return ForeColorOf(PictureOf(graphics));
}

void Destroy(sdk::Object* graphics) { Release(PictureOf(graphics)); }

// --- Properties -----------------------------------------------------------------------------

std::int32_t Width(sdk::Object* graphics) { return Target(graphics).width; }
std::int32_t Height(sdk::Object* graphics) { return Target(graphics).height; }

sdk::Color ForeColor(sdk::Object* graphics) { return static_cast<sdk::Color>(Color(graphics)); }

void SetForeColor(sdk::Object* graphics, sdk::Color color) { Color(graphics) = static_cast<RgbColor>(color) & kWhite; }

// --- Shapes ---------------------------------------------------------------------------------

using Shape = void (*)(PictureStorage&, const Rectangle&, RgbColor);

template <Shape Draw>
void DrawShape(sdk::Object* graphics, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    Draw(Target(graphics), {x, y, width, height}, Color(graphics));
}

// White, whatever the colour.
void ClearRect(sdk::Object* graphics, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    FillRectangle(Target(graphics), {x, y, width, height}, kWhite);
}

void Line(sdk::Object* graphics, std::int32_t x1, std::int32_t y1, std::int32_t x2, std::int32_t y2) {
    DrawLine(Target(graphics), x1, y1, x2, y2, Color(graphics));
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
    if (!storage) Fail("NilObjectException", "There is no picture to draw.");
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
                    Guarded<&DrawShape<&FillRectangle>>>(0),
        sdk::Method<"DrawRect(x as Integer, y as Integer, width as Integer, height as Integer)",
                    Guarded<&DrawShape<&FrameRectangle>>>(0),
        sdk::Method<"ClearRect(x as Integer, y as Integer, width as Integer, height as Integer)", Guarded<&ClearRect>>(
            0),
        sdk::Method<"FillOval(x as Integer, y as Integer, width as Integer, height as Integer)",
                    Guarded<&DrawShape<&FillEllipse>>>(0),
        sdk::Method<"DrawOval(x as Integer, y as Integer, width as Integer, height as Integer)",
                    Guarded<&DrawShape<&FrameEllipse>>>(0),
        sdk::Method<"DrawLine(x1 as Integer, y1 as Integer, x2 as Integer, y2 as Integer)", Guarded<&Line>>(0),
        sdk::AssignableMethod<"Pixel(x as Integer, y as Integer) as Color", Guarded<&GetPixel>, Guarded<&SetPixel>>(0),
    };
    static const sdk::PropertyRecord properties[] = {
        ReadOnly<"Integer", &Width>("Width"),
        ReadOnly<"Integer", &Height>("Height"),
        ReadWrite<"Color", &ForeColor, &SetForeColor>("ForeColor"),
    };
    definition.destructor = &Destroy;
    SetMethods(definition, methods);
    SetProperties(definition, properties);
    RegisterOrAbort(runtime, definition);
}

}  // namespace host
