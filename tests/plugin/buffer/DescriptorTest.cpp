// The set-up of a stand-alone description, which no member shows by itself; linked into the test.
#include "plugin/buffer/ImageFormat.h"
#include "plugin/buffer/PixelBuffer.h"
#include "tests/support/Formats.h"

namespace tqx {

sdk::ClassDefinition pictureClass{};  // of no instances here

}  // namespace tqx

namespace {

using support::Format;
using tqx::ImageFormatInfo;
using tqx::SetUpDescriptor;

// One of which every field says something else.
ImageFormatInfo Stale() {
    ImageFormatInfo info;
    info.Width = info.Height = info.ImageFormat = info.PixelSize = info.RowSize = 77;
    info.RedOffset = info.GreenOffset = info.BlueOffset = info.GrayOffset = info.AlphaOffset = 77;
    info.IsRGB = info.IsGray = true;
    info.HasRed = info.HasGreen = info.HasBlue = info.HasGray = info.HasAlpha = true;
    return info;
}

TEST(Descriptor, WritesEveryField) {
    for (const Format& format : support::kFormats) {
        ImageFormatInfo info = Stale();
        EXPECT_EQ(SetUpDescriptor(&info, -5, 9, format.code), format.code != 0) << format.name;
        EXPECT_EQ(info.Width, -5);
        EXPECT_EQ(info.Height, 9);
        EXPECT_EQ(info.ImageFormat, format.code);
        EXPECT_EQ(info.PixelSize, format.pixelSize) << format.name;
        EXPECT_EQ(info.RedOffset, format.red) << format.name;
        EXPECT_EQ(info.GreenOffset, format.green) << format.name;
        EXPECT_EQ(info.BlueOffset, format.blue) << format.name;
        EXPECT_EQ(info.GrayOffset, format.gray) << format.name;
        EXPECT_EQ(info.AlphaOffset, format.alpha) << format.name;
        EXPECT_EQ(info.IsRGB, format.isRGB) << format.name;
        EXPECT_EQ(info.IsGray, format.isGray) << format.name;
        EXPECT_EQ(info.HasRed && info.HasGreen && info.HasBlue, format.isRGB) << format.name;
        EXPECT_EQ(info.HasRed || info.HasGreen || info.HasBlue, format.isRGB) << format.name;
        EXPECT_EQ(info.HasGray, format.isGray) << format.name;
        EXPECT_EQ(info.HasAlpha, format.hasAlpha) << format.name;
        EXPECT_EQ(info.RowSize, 0) << format.name;
    }
}

TEST(Descriptor, OfAnUnknownCodeDescribesNothingAndKeepsWhatWasAskedFor) {
    for (const int code : {22, 1000, -1, INT32_MIN, INT32_MAX}) {
        ImageFormatInfo info = Stale();
        EXPECT_FALSE(SetUpDescriptor(&info, 3, 2, code)) << code;
        EXPECT_EQ(info.Width, 3);
        EXPECT_EQ(info.Height, 2);
        EXPECT_EQ(info.ImageFormat, code);
        EXPECT_EQ(info.PixelSize, 0);
        EXPECT_EQ(info.RowSize, 0);
        EXPECT_EQ(info.AlphaOffset, 0);
        EXPECT_FALSE(info.IsRGB || info.IsGray || info.HasRed || info.HasGray || info.HasAlpha) << code;
    }
}

TEST(Descriptor, OfNothingIsRefused) {
    EXPECT_FALSE(SetUpDescriptor(static_cast<ImageFormatInfo*>(nullptr), 3, 2, 1));
    EXPECT_FALSE(SetUpDescriptor(static_cast<tqx::PixelBuffer*>(nullptr), 3, 2, 1));
}

}  // namespace
