// Operations that only the digests try, beside those of all tests.
#include "tests/plugin/digests/MoreOperations.h"

#include "tests/support/Formats.h"

namespace digests {

namespace {

using namespace support;

// All bytes, one after the other, in each channel.
Ref<Object> Ramp(int format) {
    const auto picture = New("PictureTQX", 256, 1, format);
    Bytes bytes;
    for (int x = 0; x < 256; ++x)
        bytes.insert(bytes.end(), static_cast<std::size_t>(kFormats[format].pixelSize), static_cast<std::uint8_t>(x));
    WritePixels(picture, bytes);
    return picture;
}

Ref<Object> RampLike(const Pictures& pictures) { return Ramp(static_cast<int>(GetInt(pictures.self, "ImageFormat"))); }

void MakeClone(const Pictures& pictures, Outcome& outcome) {
    const auto clone = CallObject(pictures.self, "Clone");
    outcome.Add(static_cast<bool>(clone));
    if (clone) outcome.Add(PixelBytes(clone));
}

// Around a host picture's pixels.
void WrapHostPicture(const Pictures& pictures, Outcome& outcome) {
    const auto host = CallObject(pictures.self, "CopyPictureWithMask");
    outcome.Add(static_cast<bool>(host));
    if (host) outcome.AddPicture(New("PictureTQX", host, true));
}

void ApplyManyGammas(const Pictures& pictures, Outcome& outcome) {
    const auto ramp = RampLike(pictures);
    for (int i = -8; i <= 96; ++i) outcome.AddPicture(CallObject(ramp, "GammaFilter", nullptr, i / 16.0));
    for (const double gamma : {1e-300, 0.001, 0.01, 25.0, 1000.0, 1e300})
        outcome.AddPicture(CallObject(ramp, "GammaFilter", nullptr, gamma));
}

void ApplyManyGains(const Pictures& pictures, Outcome& outcome) {
    const auto ramp = RampLike(pictures);
    for (int gain = -1; gain <= 17; ++gain)
        for (int bias = -1; bias <= 17; bias += 3)
            outcome.AddPicture(CallObject(ramp, "GainFilter", nullptr, gain / 16.0, bias / 16.0));
}

void RotateByManyAngles(const Pictures& pictures, Outcome& outcome) {
    for (const double angle : {-1e-300, 0.1, 45.0001, 89.9, 123.456, 359.9, 1e9})
        outcome.AddPicture(CallObject(pictures.self, "Rotate", angle, 1, 2, 3, 4, 5));
}

// A flat picture, of which nearly every sum of weights ends next to a whole number.
void ScaleFlatPictures(const Pictures& pictures, Outcome& outcome) {
    const int format = static_cast<int>(GetInt(pictures.self, "ImageFormat"));
    const auto flat = New("PictureTQX", 4, 777, format), scaled = New("PictureTQX", 5, 1200, format);
    Call(flat, "FillRect", 255);
    for (const int height : {1200, 1001, 500, 77})
        for (int mode = 1; mode <= 7; ++mode) {
            outcome.Add(CallBool(scaled, "Scale", flat, nullptr, mode, 5, height));
            outcome.Add(PixelBytes(scaled));
        }
}

constexpr PictureOperation kOperations[] = {
    {"Clone/0", &MakeClone},
    {"Constructor/2", &WrapHostPicture},
    {"GammaFilter/2:many", &ApplyManyGammas},
    {"GainFilter/3:many", &ApplyManyGains},
    {"Rotate/6:many", &RotateByManyAngles},
    {"Scale/5:flat", &ScaleFlatPictures},
};

}  // namespace

std::span<const PictureOperation> MoreOperations() { return kOperations; }

}  // namespace digests
