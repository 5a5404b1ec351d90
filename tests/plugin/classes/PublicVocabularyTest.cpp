// Every name that a script can reach, word for word and in order. A change here breaks scripts.
#include <cstdio>

#include "tests/support/PluginFixture.h"

namespace {

struct MethodRow {
    const char* declaration;
    bool assignable;
    int flags;
};

struct PropertyRow {
    const char* name;
    const char* type;
    int flags;
    bool writable;
};

struct ConstantRow {
    const char* name;
    int value;
};

// clang-format off

constexpr MethodRow kMethods[] = {
    {"Constructor(width as integer, height as integer, ImageFormat as integer)", false, 4},
    {"Constructor(Buf as MemoryBlock, width as integer, height as integer, ImageFormat as integer, RowSize as integer)", false, 4},
    {"Constructor(pic as picture, UseAlpha as boolean=false)", false, 0},
    {"Constructor(width as integer, height as integer, ImageFormat as integer, BlockSize as integer, FilePath as folderitem)", false, 4},
    {"Close", false, 4},
    {"Clone as PictureTQX", false, 4},
    {"CreatePictureTQX(width as integer, height as integer, ImageFormat as integer) as PictureTQX", false, 4},
    {"MirroredView as PictureTQX", false, 4},
    {"RedChannel as PictureTQX", false, 4},
    {"GreenChannel as PictureTQX", false, 4},
    {"BlueChannel as PictureTQX", false, 4},
    {"GrayChannel as PictureTQX", false, 4},
    {"AlphaChannel as PictureTQX", false, 4},
    {"RGBChannels as PictureTQX", false, 4},
    {"RawRow(index as integer) as memoryblock", false, 4},
    {"Row(index as integer) as memoryblock", true, 4},
    {"RowInFormat(index as integer, ImageFormat as integer) as memoryblock", true, 4},
    {"RowInFormat(index as integer, ImageFormat as integer, InvertAlpha as boolean) as memoryblock", true, 4},
    {"RowStringInFormat(index as integer, ImageFormat as integer) as string", true, 4},
    {"DataStringInFormat(ImageFormat as integer) as string", true, 4},
    {"Scale(source as PictureTQX, temp as PictureTQX, mode as integer, width as integer, height as integer) as boolean", false, 4},
    {"ScaleFast(source as PictureTQX, width as integer, height as integer) as boolean", false, 4},
    {"GammaFilter(dest as PictureTQX, gamma as double) as PictureTQX", false, 4},
    {"GammaFilter(dest as PictureTQX, gamma as double, alphaGamma as double) as PictureTQX", false, 4},
    {"GammaFilter(dest as PictureTQX, redGamma as double, greenGamma as double, blueGamma as double) as PictureTQX", false, 4},
    {"GammaFilter(dest as PictureTQX, redGamma as double, greenGamma as double, blueGamma as double, alphaGamma as double) as PictureTQX", false, 4},
    {"GainFilter(dest as PictureTQX, gain as double, bias as double) as PictureTQX", false, 4},
    {"TransferFilter(dest as PictureTQX, gray() as integer) as PictureTQX", false, 4},
    {"TransferFilter(dest as PictureTQX, gray() as integer, alpha() as integer) as PictureTQX", false, 4},
    {"TransferFilter(dest as PictureTQX, red() as integer, green() as integer, blue() as integer) as PictureTQX", false, 4},
    {"TransferFilter(dest as PictureTQX, red() as integer, green() as integer, blue() as integer, alpha() as integer) as PictureTQX", false, 4},
    {"SolarizeFilter(dest as PictureTQX) as PictureTQX", false, 4},
    {"BoxBlurFilter(dest as PictureTQX, Radius as double) as PictureTQX", false, 4},
    {"BoxBlurFilter(dest as PictureTQX, Radius as double, Iterations as integer) as PictureTQX", false, 4},
    {"BoxBlurFractionalFilter(dest as PictureTQX, Radius as double) as PictureTQX", false, 4},
    {"StampFilter(dest as PictureTQX, radius as double, threshold as double, softness as double, Black as Color, White as Color) as PictureTQX", false, 4},
    {"UnsharpFilter(origpixels as PictureTQX, Amount as double, Threshold as integer) as boolean", false, 4},
    {"DitherFilter(dest as PictureTQX, matrix as integer, levels as integer) as PictureTQX", false, 4},
    {"OilFilter(dest as PictureTQX, levels as integer, range as integer) as PictureTQX", false, 4},
    {"DiffuseFilter(dest as PictureTQX, level as integer) as PictureTQX", false, 4},
    {"EngraveFilter(dest as PictureTQX, level as integer) as PictureTQX", false, 4},
    {"NeonFilter(dest as PictureTQX) as PictureTQX", false, 4},
    {"AutoLevel(x as integer, y as integer, w as integer, h as integer) as boolean", false, 4},
    {"AutoLevel as boolean", false, 4},
    {"ClearRect", false, 4},
    {"ClearRect(x as integer, y as integer, width as integer, height as integer)", false, 4},
    {"FillRect(x as integer, y as integer, width as integer, height as integer, value as integer)", false, 4},
    {"FillRect(value as integer)", false, 4},
    {"FillRectRGB(x as integer, y as integer, width as integer, height as integer, red as integer, green as integer, blue as integer)", false, 4},
    {"FillRectRGB(x as integer, y as integer, width as integer, height as integer, FillColor as color)", false, 4},
    {"FillRectRGB(red as integer, green as integer, blue as integer)", false, 4},
    {"FillRectRGB(FillColor as color)", false, 4},
    {"FillRectRGB(x as integer, y as integer, width as integer, height as integer, red as integer, green as integer, blue as integer, alpha as integer)", false, 4},
    {"FillRectRGB(x as integer, y as integer, width as integer, height as integer, FillColor as color, alpha as integer)", false, 4},
    {"FillRectRGB(red as integer, green as integer, blue as integer, alpha as integer)", false, 4},
    {"FillRectRGB(FillColor as color, alpha as integer)", false, 4},
    {"Invert(x as integer, y as integer, w as integer, h as integer)", false, 4},
    {"Invert", false, 4},
    {"HMirror", false, 4},
    {"VMirror", false, 4},
    {"Rotate180", false, 4},
    {"CopyPicture(x as integer, y as integer, w as integer, h as integer) as picture", false, 0},
    {"CopyPicture as picture", false, 0},
    {"CopyMask(x as integer, y as integer, w as integer, h as integer) as picture", false, 0},
    {"CopyMask as picture", false, 0},
    {"CopyPictureWithMask(x as integer, y as integer, w as integer, h as integer) as picture", false, 0},
    {"CopyPictureWithMask as picture", false, 0},
    {"DrawPictureRedToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer)", false, 0},
    {"DrawPictureRedToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)", false, 0},
    {"DrawPictureGreenToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer)", false, 0},
    {"DrawPictureGreenToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)", false, 0},
    {"DrawPictureBlueToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer)", false, 0},
    {"DrawPictureBlueToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)", false, 0},
    {"DrawPictureRGB(pic as picture)", false, 0},
    {"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer)", false, 0},
    {"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)", false, 0},
    {"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer)", false, 0},
    {"DrawMaskedPictureRGB(pic as picture, InvertMask as boolean=False)", false, 0},
    {"DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, InvertMask as boolean=False)", false, 0},
    {"DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, InvertMask as boolean=False)", false, 0},
    {"DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer, InvertMask as boolean=False)", false, 0},
    {"DrawMaskedPictureApplyMaskRGB(pic as picture, InvertMask as boolean=False)", false, 0},
    {"DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, InvertMask as boolean=False)", false, 0},
    {"DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, InvertMask as boolean=False)", false, 0},
    {"DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer, InvertMask as boolean=False)", false, 0},
    {"CopyPixels(source as PictureTQX, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer, SourceX as integer, SourceY as integer)", false, 4},
    {"CopyPixels(source as PictureTQX, DestX as integer, DestY as integer, DestWidth as integer, DestHeight as integer)", false, 4},
    {"CopyPixels(source as PictureTQX)", false, 4},
    {"ClipImage as PictureTQX", false, 4},
    {"ClipImage(x as integer, y as integer, width as integer, height as integer) as PictureTQX", false, 4},
    {"Rotate90slow(dest as PictureTQX=nil) as PictureTQX", false, 4},
    {"Rotate180(dest as PictureTQX=nil) as PictureTQX", false, 4},
    {"Rotate270slow(dest as PictureTQX=nil) as PictureTQX", false, 4},
    {"Rotate(angle as double, Red as integer, Green as integer, Blue as integer, Alpha as integer, Gray as integer) as PictureTQX", false, 4},
    {"Rotate90(dest as PictureTQX=nil) as PictureTQX", false, 4},
    {"Rotate270(dest as PictureTQX=nil) as PictureTQX", false, 4},
    {"ApplyMatrix(dest as PictureTQX, matrix() as integer) as PictureTQX", false, 4},
    {"ApplyMatrix(dest as PictureTQX, matrix() as integer, delta as integer) as PictureTQX", false, 4},
    {"ApplyMatrix(dest as PictureTQX, matrix() as integer, delta as integer, ScaleFactor as double) as PictureTQX", false, 4},
    {"CopyGWorld as variant", false, 4},
};

constexpr PropertyRow kProperties[] = {
    {"YieldTicks", "Integer", 6, true},
    {"RedOffset", "Integer", 6, false},
    {"GreenOffset", "Integer", 6, false},
    {"BlueOffset", "Integer", 6, false},
    {"GrayOffset", "Integer", 6, false},
    {"AlphaOffset", "Integer", 6, false},
    {"Width", "Integer", 6, false},
    {"Height", "Integer", 6, false},
    {"PixelSize", "Integer", 6, false},
    {"RowSize", "Integer", 6, false},
    {"ImageFormat", "Integer", 6, false},
    {"ImageFormatString", "String", 6, false},
    {"MappingBlockSize", "Integer", 6, true},
    {"RowOffset", "Integer", 6, false},
    {"DebugPictureEnabled", "Boolean", 2, true},
    {"DebugPicture", "Picture", 2, false},
    {"IsGray", "Boolean", 6, false},
    {"IsRGB", "Boolean", 6, false},
    {"HasGreen", "Boolean", 6, false},
    {"HasRed", "Boolean", 6, false},
    {"HasBlue", "Boolean", 6, false},
    {"HasGray", "Boolean", 6, false},
    {"HasAlpha", "Boolean", 6, false},
    {"Valid", "Boolean", 6, false},
    {"IsMapping", "Boolean", 6, false},
    {"Parent", "PictureTQX", 6, false},
    {"Factory", "PictureFactoryTQX", 6, true},
    {"Target", "Picture", 2, false},
    {"Memory", "Memoryblock", 6, false},
    {"MemoryTarget", "Memoryblock", 6, false},
    {"TotalSize", "Int64", 6, false},
};

constexpr ConstantRow kConstants[] = {
    {"ImageFormatUnknown", 0},
    {"ImageFormatRGB", 1},
    {"ImageFormatRGBA", 2},
    {"ImageFormatRGBX", 3},
    {"ImageFormatARGB", 4},
    {"ImageFormatXRGB", 5},
    {"ImageFormatBGR", 6},
    {"ImageFormatBGRA", 7},
    {"ImageFormatBGRX", 8},
    {"ImageFormatABGR", 9},
    {"ImageFormatXBGR", 10},
    {"ImageFormatG", 11},
    {"ImageFormatGA", 12},
    {"ImageFormatAG", 13},
    {"ImageFormatScaling", 14},
    {"ImageFormat1of3", 15},
    {"ImageFormat2of3", 16},
    {"ImageFormat3of3", 17},
    {"ImageFormat1of4", 18},
    {"ImageFormat2of4", 19},
    {"ImageFormat3of4", 20},
    {"ImageFormat4of4", 21},
    {"ImageFormatRofRGB", 15},
    {"ImageFormatGofRGB", 16},
    {"ImageFormatBofRGB", 17},
    {"ImageFormatRofRGBA", 18},
    {"ImageFormatGofRGBA", 19},
    {"ImageFormatBofRGBA", 20},
    {"ImageFormatAofRGBA", 21},
    {"ImageFormatRofARGB", 19},
    {"ImageFormatGofARGB", 20},
    {"ImageFormatBofARGB", 21},
    {"ImageFormatAofARGB", 18},
    {"ImageFormatRofBGR", 17},
    {"ImageFormatGofBGR", 16},
    {"ImageFormatBofBGR", 15},
    {"ImageFormatRofBGRA", 20},
    {"ImageFormatGofBGRA", 19},
    {"ImageFormatBofBGRA", 18},
    {"ImageFormatAofBGRA", 21},
    {"ImageFormatRofABGR", 21},
    {"ImageFormatGofABGR", 20},
    {"ImageFormatBofABGR", 19},
    {"ImageFormatAofABGR", 18},
    {"ScaleTriangle", 1},
    {"ScaleBox", 2},
    {"ScaleLanczos3", 3},
    {"ScaleLanczos8", 4},
    {"ScaleMitchell", 5},
    {"ScalePoly3", 6},
    {"ScaleCubic", 7},
    {"DitherMagic2x2Matrix", 1},
    {"DitherMagic4x4Matrix", 2},
    {"DitherOrdered4x4Matrix", 3},
    {"DitherLines4x4Matrix", 4},
    {"Dither90Halftone6x6Matrix", 5},
    {"DitherOrdered6x6Matrix", 6},
    {"DitherOrdered8x8Matrix", 7},
    {"DitherCluster3Matrix", 8},
    {"DitherCluster4Matrix", 9},
    {"DitherCluster8Matrix", 10},
};

// clang-format on

class PublicVocabulary : public support::PluginTest {
  protected:
    static const sdk::ClassDefinition& Definition() {
        return *host::Runtime::Get().ClassNamed("PictureTQX").definition();
    }
};

TEST_F(PublicVocabulary, HasTheMethods) {
    ASSERT_EQ(Definition().methodCount, static_cast<int>(std::size(kMethods)));
    for (std::size_t i = 0; i < std::size(kMethods); ++i) {
        const sdk::MethodRecord& method = Definition().methods[i];
        EXPECT_STREQ(method.declaration, kMethods[i].declaration);
        EXPECT_EQ(method.setter != nullptr, kMethods[i].assignable) << method.declaration;
        EXPECT_EQ(method.flags, kMethods[i].flags) << method.declaration;
        EXPECT_NE(method.function, nullptr) << method.declaration;
    }
}

TEST_F(PublicVocabulary, HasTheProperties) {
    ASSERT_EQ(Definition().propertyCount, static_cast<int>(std::size(kProperties)));
    for (std::size_t i = 0; i < std::size(kProperties); ++i) {
        const sdk::PropertyRecord& property = Definition().properties[i];
        EXPECT_STREQ(property.name, kProperties[i].name);
        EXPECT_STREQ(property.type, kProperties[i].type) << property.name;
        EXPECT_EQ(property.flags, kProperties[i].flags) << property.name;
        const bool writable = property.setter.function || property.setter.fieldOffset >= 0;
        EXPECT_EQ(writable, kProperties[i].writable) << property.name;
    }
}

TEST_F(PublicVocabulary, HasTheConstants) {
    ASSERT_EQ(Definition().constantCount, static_cast<int>(std::size(kConstants)));
    for (std::size_t i = 0; i < std::size(kConstants); ++i) {
        char text[80];
        const char* const style = kConstants[i].value > 9 ? "%s = &h%08X" : "%s = %d";
        std::snprintf(text, sizeof text, style, kConstants[i].name, kConstants[i].value);
        EXPECT_STREQ(Definition().constants[i].declaration, text);
        EXPECT_EQ(support::ConstantOf("PictureTQX", kConstants[i].name), kConstants[i].value) << kConstants[i].name;
    }
}

}  // namespace
