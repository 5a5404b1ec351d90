// The table's rows, each with a usual call.
#include "tests/support/PictureOperations.h"

#include <cstdlib>
#include <ostream>

#include "tests/support/Formats.h"

namespace support {

namespace {

int Width(const Ref<Object>& picture) { return static_cast<int>(GetInt(picture, "Width")); }
int Height(const Ref<Object>& picture) { return static_cast<int>(GetInt(picture, "Height")); }
int FormatOf(const Ref<Object>& picture) { return static_cast<int>(GetInt(picture, "ImageFormat")); }

constexpr int kRGB = 1;
constexpr int kRGBA = 2;
constexpr int kXRGB = 5;
constexpr int kBGRA = 7;

// --- Arguments -------------------------------------------------------------------------------

// A curve that maps every byte to another.
std::vector<int> Curve(int factor) {
    std::vector<int> values(256);
    for (int i = 0; i < 256; ++i) values[static_cast<std::size_t>(i)] = i * factor + 3;
    return values;
}

std::vector<int> Kernel() { return {1, 0, -1, 2, 0, 3, 1, 0, 0, -2, 1, 4, 8, 1, 0, -1, 0, 2, 1, 1, 0, 1, 0, -3, 1}; }

// A host picture of 29 × 17 random pixels with a random mask.
Ref<Object> HostPicture() {
    const auto pixels = New("PictureTQX", 29, 17, kBGRA);
    FillRandom(pixels, 77);
    return CallObject(pixels, "CopyPictureWithMask");
}

// The rows that row members are tried on: first, last and one in the middle.
std::vector<int> SomeRows(const Ref<Object>& picture) {
    const int height = Height(picture);
    return {0, height / 2, height - 1};
}

Bytes FormatBytes(const Ref<Object>& picture, int format, int rows) {
    const auto count =
        static_cast<std::size_t>(Width(picture)) * static_cast<std::size_t>(kFormats[format].pixelSize * rows);
    return Random(5).NextBytes(count);
}

Ref<Object> FormatBlock(const Ref<Object>& picture, int format) { return MakeBlock(FormatBytes(picture, format, 1)); }

// --- Shapes of calls -------------------------------------------------------------------------

// The pictures with self's channels but alpha, which the oil filter gathers over all calls.
Pictures WithoutAlpha(Pictures pictures) {
    if (GetBool(pictures.self, "HasAlpha"))
        pictures.self = CallObject(pictures.self, GetBool(pictures.self, "IsRGB") ? "RGBChannels" : "GrayChannel");
    return pictures;
}

// A method that takes a destination first.
template <class... Arguments>
void Filter(const Pictures& p, Outcome& outcome, const char* method, const Arguments&... arguments) {
    outcome.AddPicture(CallObject(p.self, method, p.destination, arguments...));
}

// Two turns to the destination: the picture itself and a part of it, which begins further right
// and down.
void Turn(const Pictures& p, Outcome& outcome, const char* method) {
    outcome.AddPicture(CallObject(p.self, method, p.destination));
    const auto part = CallObject(p.self, "ClipImage", Width(p.self) / 3, Height(p.self) / 4, 8, Height(p.self));
    if (p.destination.get() != p.self.get()) outcome.AddPicture(CallObject(part, method, p.destination));
}

void Draw(const Pictures& p, const char* method, std::initializer_list<Value> numbers) {
    Values arguments{Value(HostPicture())};
    arguments.insert(arguments.end(), numbers);
    CallWith(p.self, method, arguments);
}

// A smaller part of a picture, to be scaled up.
Ref<Object> Part(const Ref<Object>& picture) {
    return CallObject(picture, "ClipImage", 1, 0, Width(picture) / 2, Height(picture) * 2 / 3 + 1);
}

void AddWorld(const Ref<Object>& world, Outcome& outcome) {
    outcome.Add(static_cast<bool>(world));
    if (!world) return;
    Bytes bytes;
    const std::int64_t rowBytes = GetInt(world, "RowBytes");
    for (std::int64_t y = 0; y < GetInt(world, "Height"); y += 7)
        for (std::int64_t x = 0; x < rowBytes; ++x)
            bytes.push_back(static_cast<std::uint8_t>(Call(world, "Byte", y * rowBytes + x).ToInt32()));
    outcome.Add(bytes);
}

// --- The table -------------------------------------------------------------------------------

// clang-format off
constexpr PictureOperation kOperations[] = {
    // Views
    {"CreatePictureTQX/3", [](auto& p, auto& o) { o.AddPicture(CallObject(p.self, "CreatePictureTQX", Width(p.self), Height(p.self), FormatOf(p.self))); }},
    {"MirroredView/0", [](auto& p, auto& o) { o.AddPicture(CallObject(p.self, "MirroredView")); }},
    {"RedChannel/0", [](auto& p, auto& o) { o.AddPicture(CallObject(p.self, "RedChannel")); }},
    {"GreenChannel/0", [](auto& p, auto& o) { o.AddPicture(CallObject(p.self, "GreenChannel")); }},
    {"BlueChannel/0", [](auto& p, auto& o) { o.AddPicture(CallObject(p.self, "BlueChannel")); }},
    {"GrayChannel/0", [](auto& p, auto& o) { o.AddPicture(CallObject(p.self, "GrayChannel")); }},
    {"AlphaChannel/0", [](auto& p, auto& o) { o.AddPicture(CallObject(p.self, "AlphaChannel")); }},
    {"RGBChannels/0", [](auto& p, auto& o) { o.AddPicture(CallObject(p.self, "RGBChannels")); }},
    {"ClipImage/0", [](auto& p, auto& o) { o.AddPicture(CallObject(p.self, "ClipImage")); }},
    {"ClipImage/4", [](auto& p, auto& o) { o.AddPicture(Part(p.self)); }},

    // Rows
    {"RawRow/1", [](auto& p, auto& o) { o.Add(PixelBytes(p.self)); }},
    {"Row/1", [](auto& p, auto& o) { for (int y : SomeRows(p.self)) o.Add(BlockBytes(CallObject(p.self, "Row", y), FormatBytes(p.self, kRGB, 1).size() / 3)); }},
    {"Row/1=", [](auto& p, auto&) { for (int y : SomeRows(p.self)) Assign(p.self, "Row", {Value(y)}, Value(FormatBlock(p.self, kRGB))); }},
    {"RowInFormat/2", [](auto& p, auto& o) { for (int y : SomeRows(p.self)) o.Add(BlockBytes(CallObject(p.self, "RowInFormat", y, kRGBA))); }},
    {"RowInFormat/2=", [](auto& p, auto&) { for (int y : SomeRows(p.self)) Assign(p.self, "RowInFormat", {Value(y), Value(kRGBA)}, Value(FormatBlock(p.self, kRGBA))); }},
    {"RowInFormat/3", [](auto& p, auto& o) { for (int y : SomeRows(p.self)) o.Add(BlockBytes(CallObject(p.self, "RowInFormat", y, kBGRA, true))); }},
    {"RowInFormat/3=", [](auto& p, auto&) { for (int y : SomeRows(p.self)) Assign(p.self, "RowInFormat", {Value(y), Value(kBGRA), Value(true)}, Value(FormatBlock(p.self, kBGRA))); }},
    {"RowStringInFormat/2", [](auto& p, auto& o) { for (int y : SomeRows(p.self)) o.Add(TextBytes(Call(p.self, "RowStringInFormat", y, kXRGB))); }},
    {"RowStringInFormat/2=", [](auto& p, auto&) { for (int y : SomeRows(p.self)) Assign(p.self, "RowStringInFormat", {Value(y), Value(kXRGB)}, ToValue(FormatBytes(p.self, kXRGB, 1))); }},
    {"DataStringInFormat/1", [](auto& p, auto& o) { o.Add(TextBytes(Call(p.self, "DataStringInFormat", kRGBA))); }},
    {"DataStringInFormat/1=", [](auto& p, auto&) { Assign(p.self, "DataStringInFormat", {Value(kRGBA)}, ToValue(FormatBytes(p.self, kRGBA, Height(p.self)))); }},

    // Fill, clear, invert, copy
    {"ClearRect/0", [](auto& p, auto&) { Call(p.self, "ClearRect"); }},
    {"ClearRect/4", [](auto& p, auto&) { Call(p.self, "ClearRect", 1, 2, 3, Height(p.self)); }},
    {"FillRect/5", [](auto& p, auto&) { Call(p.self, "FillRect", 2, Height(p.self) / 2, 2, Height(p.self) / 3 + 1, 201); }},
    {"FillRect/1", [](auto& p, auto&) { Call(p.self, "FillRect", 99); }},
    {"FillRectRGB/7", [](auto& p, auto&) { Call(p.self, "FillRectRGB", 1, 1, 3, Height(p.self), 10, 20, 30); }},
    {"FillRectRGB/5", [](auto& p, auto&) { Call(p.self, "FillRectRGB", 1, 1, 3, Height(p.self), sdk::Color{0x405060}); }},
    {"FillRectRGB/3", [](auto& p, auto&) { Call(p.self, "FillRectRGB", 11, 22, 33); }},
    {"FillRectRGB/1", [](auto& p, auto&) { Call(p.self, "FillRectRGB", sdk::Color{0x998877}); }},
    {"FillRectRGB/8", [](auto& p, auto&) { Call(p.self, "FillRectRGB", 1, 1, 3, Height(p.self), 10, 20, 30, 40); }},
    {"FillRectRGB/6", [](auto& p, auto&) { Call(p.self, "FillRectRGB", 1, 1, 3, Height(p.self), sdk::Color{0x405060}, 70); }},
    {"FillRectRGB/4", [](auto& p, auto&) { Call(p.self, "FillRectRGB", 11, 22, 33, 44); }},
    {"FillRectRGB/2", [](auto& p, auto&) { Call(p.self, "FillRectRGB", sdk::Color{0x998877}, 66); }},
    {"Invert/4", [](auto& p, auto&) { Call(p.self, "Invert", 1, 0, 3, Height(p.self) - 1); }},
    {"Invert/0", [](auto& p, auto&) { Call(p.self, "Invert"); }},
    {"CopyPixels/7", [](auto& p, auto&) { Call(p.self, "CopyPixels", p.other, 1, 2, 4, Height(p.self), 2, 1); Call(p.self, "CopyPixels", p.self, 2, 0, 3, Height(p.self), 0, 1); }},
    {"CopyPixels/5", [](auto& p, auto&) { Call(p.self, "CopyPixels", p.other, 2, 1, 3, Height(p.self)); Call(p.self, "CopyPixels", p.self, 1, 3, 4, Height(p.self)); }},
    {"CopyPixels/1", [](auto& p, auto&) { Call(p.self, "CopyPixels", p.other); }},

    // Mirrors and turns
    {"HMirror/0", [](auto& p, auto&) { Call(p.self, "HMirror"); }},
    {"VMirror/0", [](auto& p, auto&) { Call(p.self, "VMirror"); }},
    {"Rotate180/0", [](auto& p, auto&) { Call(p.self, "Rotate180"); }},
    {"Rotate180/1", [](auto& p, auto& o) { Turn(p, o, "Rotate180"); }},
    {"Rotate90/1", [](auto& p, auto& o) { Turn(p, o, "Rotate90"); }},
    {"Rotate90slow/1", [](auto& p, auto& o) { Turn(p, o, "Rotate90slow"); }},
    {"Rotate270/1", [](auto& p, auto& o) { Turn(p, o, "Rotate270"); }},
    {"Rotate270slow/1", [](auto& p, auto& o) { Turn(p, o, "Rotate270slow"); }},
    {"Rotate/6", [](auto& p, auto& o) { for (double angle : {11.5, 100.0, 190.0, 345.0}) o.AddPicture(CallObject(p.self, "Rotate", angle, 10, 20, 30, 40, 50)); }},

    // Scaling
    {"Scale/5", [](auto& p, auto& o) {
         const auto whole = p.other;
         const auto part = Part(p.other);
         for (int mode = 1; mode <= 7; ++mode) {
             o.Add(CallBool(p.self, "Scale", whole, mode & 1 ? p.intermediate : Ref<Object>(), mode, Width(p.self), Height(p.self)));
             o.AddPicture(CallObject(p.self, "ClipImage"));
             o.Add(CallBool(p.self, "Scale", part, mode & 1 ? Ref<Object>() : p.intermediate, mode, Width(p.self) - 1, Height(p.self)));
             o.AddPicture(CallObject(p.self, "ClipImage"));
         }
     }},
    {"ScaleFast/3", [](auto& p, auto& o) {
         o.Add(CallBool(p.self, "ScaleFast", p.other, Width(p.self), Height(p.self)));
         o.AddPicture(CallObject(p.self, "ClipImage"));
         o.Add(CallBool(p.self, "ScaleFast", Part(p.other), Width(p.self) - 1, Height(p.self)));
     }},

    // Filters
    {"GammaFilter/2", [](auto& p, auto& o) { Filter(p, o, "GammaFilter", 2.2); }},
    {"GammaFilter/3", [](auto& p, auto& o) { Filter(p, o, "GammaFilter", 2.2, 0.7); }},
    {"GammaFilter/4", [](auto& p, auto& o) { Filter(p, o, "GammaFilter", 2.2, 1.5, 0.7); }},
    {"GammaFilter/5", [](auto& p, auto& o) { Filter(p, o, "GammaFilter", 2.2, 1.5, 0.7, 0.4); }},
    {"GainFilter/3", [](auto& p, auto& o) { Filter(p, o, "GainFilter", 0.6, 0.4); }},
    {"TransferFilter/2", [](auto& p, auto& o) { Filter(p, o, "TransferFilter", Curve(3)); }},
    {"TransferFilter/3", [](auto& p, auto& o) { Filter(p, o, "TransferFilter", Curve(3), Curve(5)); }},
    {"TransferFilter/4", [](auto& p, auto& o) { Filter(p, o, "TransferFilter", Curve(3), Curve(5), Curve(7)); }},
    {"TransferFilter/5", [](auto& p, auto& o) { Filter(p, o, "TransferFilter", Curve(3), Curve(5), Curve(7), Curve(9)); }},
    {"SolarizeFilter/1", [](auto& p, auto& o) { Filter(p, o, "SolarizeFilter"); }},
    {"BoxBlurFilter/2", [](auto& p, auto& o) { Filter(p, o, "BoxBlurFilter", 2.0); }},
    {"BoxBlurFilter/3", [](auto& p, auto& o) { Filter(p, o, "BoxBlurFilter", 3.0, 3); }},
    {"BoxBlurFractionalFilter/2", [](auto& p, auto& o) { Filter(p, o, "BoxBlurFractionalFilter", 0.6); }},
    {"StampFilter/6", [](auto& p, auto& o) { Filter(p, o, "StampFilter", 2.0, 0.4, 0.3, sdk::Color{0x102030}, sdk::Color{0xF0E0D0}); }},
    {"UnsharpFilter/3", [](auto& p, auto& o) { o.Add(CallBool(p.self, "UnsharpFilter", p.other, 1.5, 4)); }},
    {"DitherFilter/3", [](auto& p, auto& o) { for (int matrix = 1; matrix <= 10; ++matrix) { Filter(p, o, "DitherFilter", matrix, 4); o.AddPicture(p.destination ? CallObject(p.destination, "ClipImage") : p.destination); } }},
    {"OilFilter/3", [](auto& p, auto& o) { Filter(WithoutAlpha(p), o, "OilFilter", 16, 2); }},
    {"DiffuseFilter/2", [](auto& p, auto& o) { std::srand(9); Filter(p, o, "DiffuseFilter", 4); }},
    {"EngraveFilter/2", [](auto& p, auto& o) { Filter(p, o, "EngraveFilter", 2); }},
    {"NeonFilter/1", [](auto& p, auto& o) { Filter(p, o, "NeonFilter"); }},
    {"ApplyMatrix/2", [](auto& p, auto& o) { Filter(p, o, "ApplyMatrix", Kernel()); }},
    {"ApplyMatrix/3", [](auto& p, auto& o) { Filter(p, o, "ApplyMatrix", Kernel(), 12); }},
    {"ApplyMatrix/4", [](auto& p, auto& o) { Filter(p, o, "ApplyMatrix", Kernel(), 12, 21.5); }},
    {"AutoLevel/4", [](auto& p, auto& o) { o.Add(CallBool(p.self, "AutoLevel", 1, 1, 3, Height(p.self) / 2 + 1)); }},
    {"AutoLevel/0", [](auto& p, auto& o) { o.Add(CallBool(p.self, "AutoLevel")); }},

    // Host pictures
    {"CopyPicture/4", [](auto& p, auto& o) { o.AddHostPicture(CallObject(p.self, "CopyPicture", 1, 1, 4, Height(p.self))); }},
    {"CopyPicture/0", [](auto& p, auto& o) { o.AddHostPicture(CallObject(p.self, "CopyPicture")); }},
    {"CopyMask/4", [](auto& p, auto& o) { o.AddHostPicture(CallObject(p.self, "CopyMask", 1, 1, 4, Height(p.self))); }},
    {"CopyMask/0", [](auto& p, auto& o) { o.AddHostPicture(CallObject(p.self, "CopyMask")); }},
    {"CopyPictureWithMask/4", [](auto& p, auto& o) { o.AddHostPicture(CallObject(p.self, "CopyPictureWithMask", 1, 1, 4, Height(p.self))); }},
    {"CopyPictureWithMask/0", [](auto& p, auto& o) { o.AddHostPicture(CallObject(p.self, "CopyPictureWithMask")); }},
    {"CopyGWorld/0", [](auto& p, auto& o) { AddWorld(CallObject(p.self, "CopyGWorld"), o); }},
    {"DrawPictureRedToGrayChannel/7", [](auto& p, auto&) { Draw(p, "DrawPictureRedToGrayChannel", {1, 2, 20, 30, 3, 1}); }},
    {"DrawPictureRedToGrayChannel/5", [](auto& p, auto&) { Draw(p, "DrawPictureRedToGrayChannel", {-1, 1, 20, 30}); }},
    {"DrawPictureGreenToGrayChannel/7", [](auto& p, auto&) { Draw(p, "DrawPictureGreenToGrayChannel", {1, 2, 20, 30, 3, 1}); }},
    {"DrawPictureGreenToGrayChannel/5", [](auto& p, auto&) { Draw(p, "DrawPictureGreenToGrayChannel", {-1, 1, 20, 30}); }},
    {"DrawPictureBlueToGrayChannel/7", [](auto& p, auto&) { Draw(p, "DrawPictureBlueToGrayChannel", {1, 2, 20, 30, 3, 1}); }},
    {"DrawPictureBlueToGrayChannel/5", [](auto& p, auto&) { Draw(p, "DrawPictureBlueToGrayChannel", {-1, 1, 20, 30}); }},
    {"DrawPictureRGB/1", [](auto& p, auto&) { Draw(p, "DrawPictureRGB", {}); }},
    {"DrawPictureRGB/3", [](auto& p, auto&) { Draw(p, "DrawPictureRGB", {2, 1}); }},
    {"DrawPictureRGB/5", [](auto& p, auto&) { Draw(p, "DrawPictureRGB", {2, 1, 20, 30}); }},
    {"DrawPictureRGB/7", [](auto& p, auto&) { Draw(p, "DrawPictureRGB", {2, 1, 20, 30, 3, 2}); }},
    {"DrawMaskedPictureRGB/2", [](auto& p, auto&) { Draw(p, "DrawMaskedPictureRGB", {true}); }},
    {"DrawMaskedPictureRGB/4", [](auto& p, auto&) { Draw(p, "DrawMaskedPictureRGB", {2, 1, false}); }},
    {"DrawMaskedPictureRGB/6", [](auto& p, auto&) { Draw(p, "DrawMaskedPictureRGB", {2, 1, 20, 30, true}); }},
    {"DrawMaskedPictureRGB/8", [](auto& p, auto&) { Draw(p, "DrawMaskedPictureRGB", {2, 1, 20, 30, 3, 2, false}); }},
    {"DrawMaskedPictureApplyMaskRGB/2", [](auto& p, auto&) { Draw(p, "DrawMaskedPictureApplyMaskRGB", {true}); }},
    {"DrawMaskedPictureApplyMaskRGB/4", [](auto& p, auto&) { Draw(p, "DrawMaskedPictureApplyMaskRGB", {2, 1, false}); }},
    {"DrawMaskedPictureApplyMaskRGB/6", [](auto& p, auto&) { Draw(p, "DrawMaskedPictureApplyMaskRGB", {2, 1, 20, 30, true}); }},
    {"DrawMaskedPictureApplyMaskRGB/8", [](auto& p, auto&) { Draw(p, "DrawMaskedPictureApplyMaskRGB", {2, 1, 20, 30, 3, 2, false}); }},
};
// clang-format on

constexpr const char* kOtherMembers[] = {"Constructor/3", "Constructor/5", "Constructor/2", "Close/0", "Clone/0"};

// Bytes from a row's start to its first pixel.
std::int64_t FirstByte(const Ref<Object>& picture) {
    const Format& format = kFormats[FormatOf(picture)];
    if (GetBool(picture, "IsRGB")) return GetInt(picture, "RedOffset") - format.red;
    return GetBool(picture, "IsGray") ? GetInt(picture, "GrayOffset") - format.gray : 0;
}

}  // namespace

std::span<const PictureOperation> PictureOperations() { return kOperations; }

std::span<const char* const> OtherMembers() { return kOtherMembers; }

void PrintTo(const PictureOperation& operation, std::ostream* stream) { *stream << operation.member; }

std::string OperationName(const PictureOperation& operation) {
    std::string name = operation.member;
    std::erase(name, '/');
    std::erase(name, ':');
    const bool assignment = name.ends_with('=');
    std::erase(name, '=');
    return assignment ? "Set" + name : name;
}

Bytes PixelBytes(const Ref<Object>& picture) {
    const std::int64_t first = FirstByte(picture);
    const std::int64_t used = (GetInt(picture, "Width") - 1) * GetInt(picture, "PixelSize");
    Bytes bytes;
    if (used < 0) return bytes;
    const std::int64_t count = used + kFormats[FormatOf(picture)].pixelSize;
    for (int y = 0; y < Height(picture); ++y) {
        const std::uint8_t* row = RowAddress(picture, y);
        if (row) bytes.insert(bytes.end(), row + first, row + first + count);
    }
    return bytes;
}

void Outcome::Add(const Bytes& bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }

void Outcome::AddPicture(const Ref<Object>& picture) {
    const Object* known[] = {nullptr, pictures_.self.get(), pictures_.destination.get()};
    for (std::uint8_t i = 0; i < std::size(known); ++i)
        if (picture.get() == known[i]) return Add(Bytes{i});
    for (const char* property : {"Width", "Height", "ImageFormat"}) {
        const std::int64_t value = GetInt(picture, property);
        Add(Bytes{static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
    }
    Add(PixelBytes(picture));
}

void Outcome::AddHostPicture(const Ref<Object>& picture) {
    Add(static_cast<bool>(picture));
    if (!picture) return;
    const auto colors = New("PictureTQX", static_cast<int>(GetInt(picture, "Width")),
                            static_cast<int>(GetInt(picture, "Height")), kRGBA);
    Call(colors, "DrawMaskedPictureRGB", picture, false);
    Add(PixelBytes(colors));
}

}  // namespace support
