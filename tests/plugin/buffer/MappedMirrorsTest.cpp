// A mirrored view of a mapped picture is walked against its file. It maps as often as an upright
// one, in every operation and in every role.
#include <cstdlib>
#include <string>

#include "tests/plugin/buffer/MappedStage.h"
#include "tests/support/Formats.h"

namespace {

using namespace support;
using namespace mapped;

constexpr int kRGBA = 2, kScaling = 14;
constexpr int kWidth = 20;

// Rows and bytes a row of the pictures behind the views: two windows of thousands of rows, and many of
// sixteen.
struct Size {
    int height, bytesPerRow;
};
constexpr Size kSizes[] = {{6000, kPage}, {79, kLeastWindow / 16}};

using Work = void (*)(const Ref<Object>& picture, const Ref<Object>& other);

std::vector<int> Kernel() { return std::vector<int>(25, 1); }

Ref<Object> HostPicture(int width, int height) {
    return CallObject(New("PictureTQX", width, height, kRGBA), "CopyPictureWithMask");
}

int HeightOf(const Ref<Object>& picture) { return static_cast<int>(GetInt(picture, "Height")); }

void Scale(const Ref<Object>& picture, const Ref<Object>& source, int height) {
    const auto temp = New("PictureTQX", kWidth, HeightOf(source), kScaling);
    EXPECT_TRUE(CallBool(picture, "Scale", source, temp, 3, kWidth, height));
}

// What is done with one picture, or with two.
constexpr struct {
    const char* name;
    Work work;
    bool wantsTwo = true;  // otherwise the second picture is left alone
} kWorks[] = {
    {"Clear", [](auto& p, auto&) { Call(p, "ClearRect"); }, false},
    {"ClearPart", [](auto& p, auto&) { Call(p, "ClearRect", 1, 2, 3, HeightOf(p)); }, false},
    {"Fill", [](auto& p, auto&) { Call(p, "FillRect", 3); }, false},
    {"FillFromAColumn", [](auto& p, auto&) { Call(p, "FillRect", 1, 0, 2, HeightOf(p), 3); }, false},
    {"FillColours", [](auto& p, auto&) { Call(p, "FillRectRGB", 1, 2, 3); }, false},
    {"Invert", [](auto& p, auto&) { Call(p, "Invert"); }, false},
    {"HMirror", [](auto& p, auto&) { Call(p, "HMirror"); }, false},
    {"VMirror", [](auto& p, auto&) { Call(p, "VMirror"); }, false},
    {"HalfTurn", [](auto& p, auto&) { Call(p, "Rotate180"); }, false},
    {"AutoLevel", [](auto& p, auto&) { Call(p, "AutoLevel"); }, false},
    {"GetData", [](auto& p, auto&) { Call(p, "DataStringInFormat", kRGBA); }, false},
    {"SetData",
     [](auto& p, auto&) {
         const auto size = static_cast<std::size_t>(kWidth) * 4 * static_cast<std::size_t>(HeightOf(p));
         Assign(p, "DataStringInFormat", {Value(kRGBA)}, ToValue(Bytes(size, 9)));
     },
     false},
    {"CopyPicture", [](auto& p, auto&) { CallObject(p, "CopyPicture"); }, false},
    {"CopyMask", [](auto& p, auto&) { CallObject(p, "CopyMask"); }, false},
    {"CopyWorld", [](auto& p, auto&) { CallObject(p, "CopyGWorld"); }, false},
    {"Draw", [](auto& p, auto&) { Call(p, "DrawPictureRGB", HostPicture(kWidth, HeightOf(p))); }, false},
    {"DrawMasked", [](auto& p, auto&) { Call(p, "DrawMaskedPictureRGB", HostPicture(kWidth, HeightOf(p)), false); },
     false},
    {"Rotate", [](auto& p, auto&) { CallObject(p, "Rotate", 3.0, 1, 2, 3, 4, 5); }, false},
    {"Copy", [](auto& p, auto& o) { Call(o, "CopyPixels", p); }},
    {"CopyPart", [](auto& p, auto& o) { Call(o, "CopyPixels", p, 1, 2, 9, HeightOf(p), 0, 6); }},
    {"HalfTurnTo", [](auto& p, auto& o) { CallObject(p, "Rotate180", o); }},
    {"LeftTurnTo", [](auto& p, auto& o) { CallObject(p, "Rotate90", o); }},
    {"RightTurnTo", [](auto& p, auto& o) { CallObject(p, "Rotate270", o); }},
    {"ScaleFast", [](auto& p, auto& o) { CallBool(o, "ScaleFast", p, kWidth, HeightOf(o)); }},
    {"ScaleFastDown", [](auto& p, auto& o) { CallBool(o, "ScaleFast", p, kWidth, HeightOf(o) / 2); }},
    {"Scale", [](auto& p, auto& o) { Scale(o, p, HeightOf(o)); }},
    {"ScaleDown", [](auto& p, auto& o) { Scale(o, p, HeightOf(o) / 3); }},
    {"Gamma", [](auto& p, auto& o) { CallObject(p, "GammaFilter", o, 2.2); }},
    {"Solarize", [](auto& p, auto& o) { CallObject(p, "SolarizeFilter", o); }},
    {"Blur", [](auto& p, auto& o) { CallObject(p, "BoxBlurFilter", o, 2.0); }},
    {"WideBlur", [](auto& p, auto& o) { CallObject(p, "BoxBlurFilter", o, 5.0); }},
    {"FractionalBlur", [](auto& p, auto& o) { CallObject(p, "BoxBlurFractionalFilter", o, 0.6); }},
    {"Stamp",
     [](auto& p, auto& o) {
         CallObject(p, "StampFilter", o, 2.0, 0.4, 0.3, sdk::Color{0x102030}, sdk::Color{0xF0E0D0});
     }},
    {"Unsharp", [](auto& p, auto& o) { CallBool(p, "UnsharpFilter", o, 1.5, 4); }},
    {"Dither", [](auto& p, auto& o) { CallObject(p, "DitherFilter", o, 3, 4); }},
    {"Oil", [](auto& p, auto& o) { CallObject(CallObject(p, "RGBChannels"), "OilFilter", o, 16, 2); }},
    {"Diffuse", [](auto& p, auto& o) { CallObject(p, "DiffuseFilter", o, 4); }},
    {"Engrave", [](auto& p, auto& o) { CallObject(p, "EngraveFilter", o, 2); }},
    {"EngraveUp", [](auto& p, auto& o) { CallObject(p, "EngraveFilter", o, -2); }},
    {"Neon", [](auto& p, auto& o) { CallObject(p, "NeonFilter", o); }},
    {"Convolve", [](auto& p, auto& o) { CallObject(p, "ApplyMatrix", o, Kernel()); }},
};

// Which of the two pictures are seen upside down, and whether they are one.
enum Role : unsigned { kUpright = 0, kFirst = 1, kSecond = 2, kBoth = 3 };

Ref<Object> NewPart(const ScratchFolder& folder, const char* name, const Size& size) {
    const auto root = NewMapped(folder.path() + "/" + name, size.bytesPerRow / 4, size.height, kRGBA);
    return CallObject(root, "ClipImage", 0, 0, kWidth, size.height);
}

Ref<Object> Seen(const Ref<Object>& picture, bool upsideDown) {
    return CallObject(picture, upsideDown ? "MirroredView" : "ClipImage");
}

std::int64_t MappingsOfWork(Work work, const Size& size, unsigned mirrored, bool inPlace) {
    const ScratchFolder folder;
    const auto first = NewPart(folder, "first", size), second = NewPart(folder, "second", size);
    const auto picture = Seen(first, mirrored & kFirst);
    const auto other = inPlace ? picture : Seen(second, mirrored & kSecond);
    ResetFileMappings();
    work(picture, other);
    return CountedFileMappings().made;
}

class MappedMirrors : public PluginTest {};

// A walk begins in the window of row 0, which of a part lies a row or two aside: one more to a walk.
TEST_F(MappedMirrors, AreMappedAsOftenAsUprightPictures) {
    for (const Size& size : kSizes)
        for (const auto& [name, work, wantsTwo] : kWorks) {
            SCOPED_TRACE(std::string(name) + " of " + std::to_string(size.height));
            const std::int64_t upright = MappingsOfWork(work, size, kUpright, false);
            for (const unsigned role : {kFirst, kSecond, kBoth}) {
                if (role != kFirst && !wantsTwo) continue;
                EXPECT_LE(MappingsOfWork(work, size, role, false), upright + 2) << "role " << role;
            }
            if (wantsTwo) {
                EXPECT_LE(MappingsOfWork(work, size, kFirst, true), MappingsOfWork(work, size, kUpright, true) + 2)
                    << "in place";
            }
        }
}

}  // namespace
