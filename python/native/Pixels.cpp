// A picture's address, strides and channels, read from its properties.
#include "python/native/Pixels.h"

#include <pybind11/pybind11.h>

#include <algorithm>
#include <string>

#include "host/calls/Call.h"
#include "host/framework/MemoryBlock.h"
#include "host/objects/Class.h"
#include "python/native/Errors.h"

namespace pytqx {

namespace {

using host::Object;
using host::Ref;
using host::Value;

constexpr const char* kRowMethod = "RawRow";

Value Get(Object* picture, std::string_view name) {
    const host::Property* const property = picture->type->FindProperty(name);
    return property && property->readable() ? host::GetProperty(*property, picture) : Value();
}

std::int64_t Number(Object* picture, std::string_view name) { return Get(picture, name).ToInt64(); }

// By format code: how many items of a pixel show, by which channel their place is known, and which of the
// items that channel is.
struct FormatRow {
    int channels;
    const char* channel;  // its offset's property
    int place;
};

constexpr FormatRow kFormats[] = {
    {0, "", 0},           {3, "RedOffset", 0},  // RGB
    {4, "RedOffset", 0},                        // RGBA
    {4, "RedOffset", 0},                        // RGBX
    {4, "RedOffset", 1},                        // ARGB
    {4, "RedOffset", 1},                        // XRGB
    {3, "BlueOffset", 0},                       // BGR
    {4, "BlueOffset", 0},                       // BGRA
    {4, "BlueOffset", 0},                       // BGRX
    {4, "BlueOffset", 1},                       // ABGR
    {4, "BlueOffset", 1},                       // XBGR
    {1, "GrayOffset", 0},                       // G
    {2, "GrayOffset", 0},                       // GA
    {2, "GrayOffset", 1},                       // AG
    {4, "RedOffset", 0},                        // Scaling: floats
};
constexpr std::int64_t kScaling = 14;
constexpr std::int64_t kLastFormat = 21;  // from 15 on one byte of several
constexpr FormatRow kOneByte = {1, "GrayOffset", 0};

[[noreturn]] void Refuse(const std::string& why) { throw py::buffer_error(why); }

}  // namespace

bool IsPicture(const Object* object) {
    return object && !object->destroyed && object->type->FindProperty("ImageFormat") &&
           object->type->FindProperty("PixelSize") && !object->type->FindMethods(kRowMethod).empty();
}

Pixels PixelsOf(Object* picture) {
    const std::int64_t format = Number(picture, "ImageFormat");
    if (!Get(picture, "Valid").ToBoolean()) Refuse("the picture is not valid: it has no pixels");
    if (format < 1 || format > kLastFormat) Refuse("the picture is of an unknown format");
    const FormatRow& row = format <= kScaling ? kFormats[format] : kOneByte;
    Pixels pixels{std::max<std::int64_t>(Number(picture, "Height"), 0),
                  std::max<std::int64_t>(Number(picture, "Width"), 0),
                  row.channels,
                  format == kScaling ? 4 : 1,
                  Number(picture, row.channel) - row.place,
                  Number(picture, "PixelSize"),
                  Get(picture, "IsMapping").ToBoolean()};
    if (pixels.first < 0) Refuse("this view's channels do not lie together");
    return pixels;
}

std::uint8_t* RowAddress(Object* picture, std::int64_t row) {
    const auto methods = picture->type->FindMethods(kRowMethod);
    Value index(static_cast<std::int32_t>(row));
    const Value block = Guarded([&] { return host::Invoke(*methods.front(), picture, {&index, 1}); });
    std::uint8_t* const address = host::PinMemoryBlock(block.object());
    if (!address) Refuse("the picture's rows can't be had: it was closed, or its storage lacks them");
    return address;
}

Ref<Object> ParentOf(Object* picture) { return Ref<Object>::Share(Get(picture, "Parent").object()); }
Ref<Object> BlockOf(Object* picture) { return Ref<Object>::Share(Get(picture, "MemoryTarget").object()); }

}  // namespace pytqx
