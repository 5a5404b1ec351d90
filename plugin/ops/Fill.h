// Clearing and filling rectangles of a picture, in place.
//
// Rectangles are cut to the picture (Rectangle.h). Of a value the low byte is stored. Everything
// that can't be done is silently left: an empty rectangle, a picture that can't be used, channels
// that the picture lacks. All yield for the picture before the first row and after each.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {

// Every byte of every row becomes 0, padding included; of a view, that of the parent's rows.
void ClearRect(sdk::Object* self);

// Every byte of the rectangle's pixels becomes 0, whatever channel it belongs to. Columns count
// from the first byte of the storage's rows, which for a clip is left of its own column 0.
void ClearRect(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

// Sets bytes without regard to channels. Layouts whose pixels are nothing but their channels get
// RowSize bytes from column x of each row on, counted as ClearRect does: past the rectangle's
// right edge and, for x above 0, on into the storage's next row, up to the storage's end. Alpha
// is set too. In the others (a filler byte, one channel of a wider pixel) only the channels of
// the rectangle's pixels are set.
void FillRect(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
              std::int32_t value);
void FillRect(sdk::Object* self, std::int32_t value);

// Sets red, green and blue; alpha and filler bytes stay. Gray pictures and RGBChannels views are
// left alone.
void FillRectRGB(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                 std::int32_t red, std::int32_t green, std::int32_t blue);
void FillRectRGB(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                 sdk::Color color);
void FillRectRGB(sdk::Object* self, std::int32_t red, std::int32_t green, std::int32_t blue);
void FillRectRGB(sdk::Object* self, sdk::Color color);

// Sets alpha as well; for a picture without alpha it does not count.
void FillRectRGB(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                 std::int32_t red, std::int32_t green, std::int32_t blue, std::int32_t alpha);
void FillRectRGB(sdk::Object* self, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                 sdk::Color color, std::int32_t alpha);
void FillRectRGB(sdk::Object* self, std::int32_t red, std::int32_t green, std::int32_t blue, std::int32_t alpha);
void FillRectRGB(sdk::Object* self, sdk::Color color, std::int32_t alpha);

}  // namespace tqx
