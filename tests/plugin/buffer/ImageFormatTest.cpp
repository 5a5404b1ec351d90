// What each format's code says of a picture.
#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

class ImageFormat : public PluginTest {};

TEST_F(ImageFormat, DescribesEachLayout) {
    for (int code = 1; code < kFormatCount; ++code) {
        const Format& format = kFormats[code];
        const auto picture = New("PictureTQX", 3, 2, code);
        SCOPED_TRACE(format.name);
        EXPECT_TRUE(GetBool(picture, "Valid"));
        EXPECT_EQ(GetInt(picture, "ImageFormat"), code);
        EXPECT_EQ(GetInt(picture, "Width"), 3);
        EXPECT_EQ(GetInt(picture, "Height"), 2);
        EXPECT_EQ(GetInt(picture, "PixelSize"), format.pixelSize);
        EXPECT_EQ(GetInt(picture, "RedOffset"), format.red);
        EXPECT_EQ(GetInt(picture, "GreenOffset"), format.green);
        EXPECT_EQ(GetInt(picture, "BlueOffset"), format.blue);
        EXPECT_EQ(GetInt(picture, "GrayOffset"), format.gray);
        EXPECT_EQ(GetInt(picture, "AlphaOffset"), format.alpha);
        EXPECT_EQ(GetBool(picture, "IsRGB"), format.isRGB);
        EXPECT_EQ(GetBool(picture, "IsGray"), format.isGray);
        EXPECT_EQ(GetBool(picture, "HasRed"), format.isRGB);
        EXPECT_EQ(GetBool(picture, "HasGreen"), format.isRGB);
        EXPECT_EQ(GetBool(picture, "HasBlue"), format.isRGB);
        EXPECT_EQ(GetBool(picture, "HasGray"), format.isGray);
        EXPECT_EQ(GetBool(picture, "HasAlpha"), format.hasAlpha);
    }
}

TEST_F(ImageFormat, UnknownCodesDescribeNothing) {
    for (const int code : {0, 22, 23, 1000, -1, INT32_MAX, INT32_MIN}) {
        const auto picture = New("PictureTQX", 3, 2, code);
        SCOPED_TRACE(code);
        EXPECT_FALSE(GetBool(picture, "Valid"));
        EXPECT_EQ(GetInt(picture, "PixelSize"), 0);
        EXPECT_EQ(GetInt(picture, "RowSize"), 0);
        for (const char* flag : {"IsRGB", "IsGray", "HasRed", "HasGreen", "HasBlue", "HasGray", "HasAlpha"})
            EXPECT_FALSE(GetBool(picture, flag)) << flag;
        // What was asked for is kept.
        EXPECT_EQ(GetInt(picture, "Width"), 3);
        EXPECT_EQ(GetInt(picture, "Height"), 2);
        EXPECT_EQ(GetInt(picture, "ImageFormat"), code);
    }
}

TEST_F(ImageFormat, AnUnknownCodeClearsAnEarlierDescription) {
    const auto picture = New("PictureTQX", 3, 2, 2);
    Call(picture, "Constructor", 5, 4, 22);
    EXPECT_FALSE(GetBool(picture, "Valid"));
    EXPECT_FALSE(GetBool(picture, "HasAlpha"));
    EXPECT_EQ(GetInt(picture, "AlphaOffset"), 0);
    EXPECT_EQ(GetInt(picture, "Width"), 5);
}

TEST_F(ImageFormat, FillerBytesAreNoAlpha) {
    for (const char* name : {"ImageFormatXRGB", "ImageFormatRGBX"}) {
        const auto picture = New("PictureTQX", 1, 1, static_cast<int>(ConstantOf("PictureTQX", name)));
        EXPECT_FALSE(GetBool(picture, "HasAlpha"));
        EXPECT_EQ(GetInt(picture, "AlphaOffset"), 0);
        EXPECT_EQ(GetInt(picture, "PixelSize"), 4);
    }
}

TEST_F(ImageFormat, AliasesNameTheChannelsBytes) {
    const auto value = [](const char* name) { return ConstantOf("PictureTQX", name); };
    EXPECT_EQ(value("ImageFormat2of3"), value("ImageFormatGofRGB"));
    EXPECT_EQ(value("ImageFormatAofARGB"), 18);
    EXPECT_EQ(value("ImageFormatAofABGR"), 18);
    EXPECT_EQ(value("ImageFormatBofBGRA"), 18);
}

TEST_F(ImageFormat, HasAShortName) {
    const char* const names[] = {"RGB",  "RBBA", "RGBX", "ARGB", "XRGB", "BGR", "BGRA",
                                 "BGRX", "ABGR", "XBGR", "G",    "GA",   "AG",  "Scaling"};
    for (int code = 1; code <= 14; ++code) {
        const auto picture = New("PictureTQX", 1, 1, code);
        const Value name = Get(picture, "ImageFormatString");
        EXPECT_EQ(name.text(), names[code - 1]);
        EXPECT_EQ(host::EncodingOf(name.string()), sdk::Encoding::Ascii);
    }
    EXPECT_EQ(GetText(New("PictureTQX", 1, 1, 0), "ImageFormatString"), "Unknown");
}

// Scripts rely on the odd name.
TEST_F(ImageFormat, OfRgbaIsCalledRbba) { EXPECT_EQ(GetText(New("PictureTQX", 1, 1, 2), "ImageFormatString"), "RBBA"); }

TEST_F(ImageFormat, OfSingleChannelsAndUnknownOnesHasNoName) {
    for (const int code : {15, 16, 17, 18, 19, 20, 21, 22, -1})
        EXPECT_EQ(Get(New("PictureTQX", 1, 1, code), "ImageFormatString").string(), nullptr) << code;
}

}  // namespace
