// The class PictureTQX: every member a script can reach, one entry each.
#include "plugin/classes/PictureClass.h"

#include <iterator>

#include "plugin/buffer/Destination.h"
#include "plugin/buffer/ImageFormat.h"
#include "plugin/buffer/MappedStorage.h"
#include "plugin/buffer/Picture.h"
#include "plugin/buffer/PixelBuffer.h"
#include "plugin/buffer/RowAccess.h"
#include "plugin/buffer/Views.h"
#include "plugin/classes/ConstantDeclarations.h"
#include "plugin/filters/AutoLevel.h"
#include "plugin/filters/Blur.h"
#include "plugin/filters/Convolution.h"
#include "plugin/filters/Diffuse.h"
#include "plugin/filters/Dither.h"
#include "plugin/filters/Engrave.h"
#include "plugin/filters/Neon.h"
#include "plugin/filters/Oil.h"
#include "plugin/filters/Stamp.h"
#include "plugin/filters/ToneCurves.h"
#include "plugin/filters/Unsharp.h"
#include "plugin/geometry/Mirrors.h"
#include "plugin/geometry/Rotate.h"
#include "plugin/geometry/Scale.h"
#include "plugin/geometry/ScaleFast.h"
#include "plugin/geometry/Turns.h"
#include "plugin/interop/CopyGWorld.h"
#include "plugin/interop/CopyPicture.h"
#include "plugin/interop/DrawPicture.h"
#include "plugin/interop/HostPicture.h"
#include "plugin/ops/CopyPixels.h"
#include "plugin/ops/Fill.h"
#include "plugin/ops/Invert.h"
#include "sdk/Declare.h"

namespace tqx {

namespace {

using sdk::AssignableMethod;
using sdk::Method;
using sdk::ReadOnly;
using sdk::ReadWrite;
using sdk::SharedMethod;

constexpr std::int32_t kPortable = sdk::kMemberPortable;
constexpr std::int32_t kWithHostPicture = 0;  // takes or gives a host picture

// clang-format off

const sdk::PropertyRecord properties[] = {
    ReadWrite<"YieldTicks as Integer", &PixelBuffer::YieldTicks>(kPortable),
    ReadOnly<"RedOffset as Integer", &PixelBuffer::RedOffset>(kPortable),
    ReadOnly<"GreenOffset as Integer", &PixelBuffer::GreenOffset>(kPortable),
    ReadOnly<"BlueOffset as Integer", &PixelBuffer::BlueOffset>(kPortable),
    ReadOnly<"GrayOffset as Integer", &PixelBuffer::GrayOffset>(kPortable),
    ReadOnly<"AlphaOffset as Integer", &PixelBuffer::AlphaOffset>(kPortable),
    ReadOnly<"Width as Integer", &PixelBuffer::Width>(kPortable),
    ReadOnly<"Height as Integer", &PixelBuffer::Height>(kPortable),
    ReadOnly<"PixelSize as Integer", &PixelBuffer::PixelSize>(kPortable),
    ReadOnly<"RowSize as Integer", &PixelBuffer::RowSize>(kPortable),
    ReadOnly<"ImageFormat as Integer", &PixelBuffer::ImageFormat>(kPortable),
    ReadOnly<"ImageFormatString as String", &GetImageFormatString>(kPortable),
    ReadWrite<"MappingBlockSize as Integer", &PixelBuffer::MappingBlockSize, &SetMappingBlockSize>(kPortable),
    ReadOnly<"RowOffset as Integer", &PixelBuffer::RowOffset>(kPortable),
    ReadWrite<"DebugPictureEnabled as Boolean", &PixelBuffer::DebugPictureEnabled>(kWithHostPicture),
    ReadOnly<"DebugPicture as Picture", &GetDebugPicture>(kWithHostPicture),
    ReadOnly<"IsGray as Boolean", &PixelBuffer::IsGray>(kPortable),
    ReadOnly<"IsRGB as Boolean", &PixelBuffer::IsRGB>(kPortable),
    ReadOnly<"HasGreen as Boolean", &PixelBuffer::HasGreen>(kPortable),
    ReadOnly<"HasRed as Boolean", &PixelBuffer::HasRed>(kPortable),
    ReadOnly<"HasBlue as Boolean", &PixelBuffer::HasBlue>(kPortable),
    ReadOnly<"HasGray as Boolean", &PixelBuffer::HasGray>(kPortable),
    ReadOnly<"HasAlpha as Boolean", &PixelBuffer::HasAlpha>(kPortable),
    ReadOnly<"Valid as Boolean", &PixelBuffer::Valid>(kPortable),
    ReadOnly<"IsMapping as Boolean", &PixelBuffer::IsMapping>(kPortable),
    ReadOnly<"Parent as PictureTQX", &PixelBuffer::Parent>(kPortable),
    ReadWrite<"Factory as PictureFactoryTQX", &PixelBuffer::Factory>(kPortable),
    ReadOnly<"Target as Picture", &PixelBuffer::Target>(kWithHostPicture),
    ReadOnly<"Memory as Memoryblock", &GetMemory>(kPortable),
    ReadOnly<"MemoryTarget as Memoryblock", &PixelBuffer::MemoryTarget>(kPortable),
    ReadOnly<"TotalSize as Int64", &GetTotalSize>(kPortable),
};

const sdk::MethodRecord methods[] = {
    // Made, closed, and views of it
    Method<"Constructor(width as integer, height as integer, ImageFormat as integer)",
           &ConstructMemoryPicture>(kPortable),
    Method<"Constructor(Buf as MemoryBlock, width as integer, height as integer, ImageFormat as integer, "
           "RowSize as integer)", &ConstructMemoryBlockPicture>(kPortable),
    Method<"Constructor(pic as picture, UseAlpha as boolean=false)", &ConstructHostPicture>(kWithHostPicture),
    Method<"Constructor(width as integer, height as integer, ImageFormat as integer, BlockSize as integer, "
           "FilePath as folderitem)", &ConstructMappedPicture>(kPortable),
    Method<"Close", &Close>(kPortable),
    Method<"Clone as PictureTQX", &Clone>(kPortable),
    Method<"CreatePictureTQX(width as integer, height as integer, ImageFormat as integer) as PictureTQX",
           &CreatePictureTQX>(kPortable),
    Method<"MirroredView as PictureTQX", &MirroredView>(kPortable),
    Method<"RedChannel as PictureTQX", &RedChannel>(kPortable),
    Method<"GreenChannel as PictureTQX", &GreenChannel>(kPortable),
    Method<"BlueChannel as PictureTQX", &BlueChannel>(kPortable),
    Method<"GrayChannel as PictureTQX", &GrayChannel>(kPortable),
    Method<"AlphaChannel as PictureTQX", &AlphaChannel>(kPortable),
    Method<"RGBChannels as PictureTQX", &RGBChannels>(kPortable),

    // Rows and all pixels as bytes
    Method<"RawRow(index as integer) as memoryblock", &RawRow>(kPortable),
    AssignableMethod<"Row(index as integer) as memoryblock", &GetRow, &SetRow>(kPortable),
    AssignableMethod<"RowInFormat(index as integer, ImageFormat as integer) as memoryblock",
                     &GetRowInFormat, &SetRowInFormat>(kPortable),
    AssignableMethod<"RowInFormat(index as integer, ImageFormat as integer, InvertAlpha as boolean) as memoryblock",
                     &GetRowInFormat, &SetRowInFormat>(kPortable),
    AssignableMethod<"RowStringInFormat(index as integer, ImageFormat as integer) as string",
                     &GetRowStringInFormat, &SetRowStringInFormat>(kPortable),
    AssignableMethod<"DataStringInFormat(ImageFormat as integer) as string",
                     &GetDataStringInFormat, &SetDataStringInFormat>(kPortable),

    // Scaling
    Method<"Scale(source as PictureTQX, temp as PictureTQX, mode as integer, width as integer, "
           "height as integer) as boolean", &Scale>(kPortable),
    Method<"ScaleFast(source as PictureTQX, width as integer, height as integer) as boolean", &ScaleFast>(kPortable),

    // Filters
    Method<"GammaFilter(dest as PictureTQX, gamma as double) as PictureTQX", &GammaFilter>(kPortable),
    Method<"GammaFilter(dest as PictureTQX, gamma as double, alphaGamma as double) as PictureTQX",
           &GammaFilter>(kPortable),
    Method<"GammaFilter(dest as PictureTQX, redGamma as double, greenGamma as double, "
           "blueGamma as double) as PictureTQX", &GammaFilter>(kPortable),
    Method<"GammaFilter(dest as PictureTQX, redGamma as double, greenGamma as double, blueGamma as double, "
           "alphaGamma as double) as PictureTQX", &GammaFilter>(kPortable),
    Method<"GainFilter(dest as PictureTQX, gain as double, bias as double) as PictureTQX", &GainFilter>(kPortable),
    Method<"TransferFilter(dest as PictureTQX, gray() as integer) as PictureTQX", &TransferFilter>(kPortable),
    Method<"TransferFilter(dest as PictureTQX, gray() as integer, alpha() as integer) as PictureTQX",
           &TransferFilter>(kPortable),
    Method<"TransferFilter(dest as PictureTQX, red() as integer, green() as integer, blue() as integer) as PictureTQX",
           &TransferFilter>(kPortable),
    Method<"TransferFilter(dest as PictureTQX, red() as integer, green() as integer, blue() as integer, "
           "alpha() as integer) as PictureTQX", &TransferFilter>(kPortable),
    Method<"SolarizeFilter(dest as PictureTQX) as PictureTQX", &SolarizeFilter>(kPortable),
    Method<"BoxBlurFilter(dest as PictureTQX, Radius as double) as PictureTQX", &BoxBlurFilter>(kPortable),
    Method<"BoxBlurFilter(dest as PictureTQX, Radius as double, Iterations as integer) as PictureTQX",
           &BoxBlurFilter>(kPortable),
    Method<"BoxBlurFractionalFilter(dest as PictureTQX, Radius as double) as PictureTQX",
           &BoxBlurFractionalFilter>(kPortable),
    Method<"StampFilter(dest as PictureTQX, radius as double, threshold as double, softness as double, "
           "Black as Color, White as Color) as PictureTQX", &StampFilter>(kPortable),
    Method<"UnsharpFilter(origpixels as PictureTQX, Amount as double, Threshold as integer) as boolean",
           &UnsharpFilter>(kPortable),
    Method<"DitherFilter(dest as PictureTQX, matrix as integer, levels as integer) as PictureTQX",
           &DitherFilter>(kPortable),
    Method<"OilFilter(dest as PictureTQX, levels as integer, range as integer) as PictureTQX", &OilFilter>(kPortable),
    Method<"DiffuseFilter(dest as PictureTQX, level as integer) as PictureTQX", &DiffuseFilter>(kPortable),
    Method<"EngraveFilter(dest as PictureTQX, level as integer) as PictureTQX", &EngraveFilter>(kPortable),
    Method<"NeonFilter(dest as PictureTQX) as PictureTQX", &NeonFilter>(kPortable),

    // Levels, fills and inversion
    Method<"AutoLevel(x as integer, y as integer, w as integer, h as integer) as boolean", &AutoLevel>(kPortable),
    Method<"AutoLevel as boolean", &AutoLevel>(kPortable),
    Method<"ClearRect", &ClearRect>(kPortable),
    Method<"ClearRect(x as integer, y as integer, width as integer, height as integer)", &ClearRect>(kPortable),
    Method<"FillRect(x as integer, y as integer, width as integer, height as integer, value as integer)",
           &FillRect>(kPortable),
    Method<"FillRect(value as integer)", &FillRect>(kPortable),
    Method<"FillRectRGB(x as integer, y as integer, width as integer, height as integer, red as integer, "
           "green as integer, blue as integer)", &FillRectRGB>(kPortable),
    Method<"FillRectRGB(x as integer, y as integer, width as integer, height as integer, FillColor as color)",
           &FillRectRGB>(kPortable),
    Method<"FillRectRGB(red as integer, green as integer, blue as integer)", &FillRectRGB>(kPortable),
    Method<"FillRectRGB(FillColor as color)", &FillRectRGB>(kPortable),
    Method<"FillRectRGB(x as integer, y as integer, width as integer, height as integer, red as integer, "
           "green as integer, blue as integer, alpha as integer)", &FillRectRGB>(kPortable),
    Method<"FillRectRGB(x as integer, y as integer, width as integer, height as integer, FillColor as color, "
           "alpha as integer)", &FillRectRGB>(kPortable),
    Method<"FillRectRGB(red as integer, green as integer, blue as integer, alpha as integer)",
           &FillRectRGB>(kPortable),
    Method<"FillRectRGB(FillColor as color, alpha as integer)", &FillRectRGB>(kPortable),
    Method<"Invert(x as integer, y as integer, w as integer, h as integer)", &Invert>(kPortable),
    Method<"Invert", &Invert>(kPortable),

    // Mirrors in place
    Method<"HMirror", &HMirror>(kPortable),
    Method<"VMirror", &VMirror>(kPortable),
    Method<"Rotate180", &Rotate180>(kPortable),

    // To host pictures, and from them
    Method<"CopyPicture(x as integer, y as integer, w as integer, h as integer) as picture",
           &CopyPicture>(kWithHostPicture),
    Method<"CopyPicture as picture", &CopyPicture>(kWithHostPicture),
    Method<"CopyMask(x as integer, y as integer, w as integer, h as integer) as picture",
           &CopyMask>(kWithHostPicture),
    Method<"CopyMask as picture", &CopyMask>(kWithHostPicture),
    Method<"CopyPictureWithMask(x as integer, y as integer, w as integer, h as integer) as picture",
           &CopyPictureWithMask>(kWithHostPicture),
    Method<"CopyPictureWithMask as picture", &CopyPictureWithMask>(kWithHostPicture),
    Method<"DrawPictureRedToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer, SourceX as integer, SourceY as integer)",
           &DrawPictureRedToGrayChannel>(kWithHostPicture),
    Method<"DrawPictureRedToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer)", &DrawPictureRedToGrayChannel>(kWithHostPicture),
    Method<"DrawPictureGreenToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer, SourceX as integer, SourceY as integer)",
           &DrawPictureGreenToGrayChannel>(kWithHostPicture),
    Method<"DrawPictureGreenToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer)", &DrawPictureGreenToGrayChannel>(kWithHostPicture),
    Method<"DrawPictureBlueToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer, SourceX as integer, SourceY as integer)",
           &DrawPictureBlueToGrayChannel>(kWithHostPicture),
    Method<"DrawPictureBlueToGrayChannel(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer)", &DrawPictureBlueToGrayChannel>(kWithHostPicture),
    Method<"DrawPictureRGB(pic as picture)", &DrawPictureRGB>(kWithHostPicture),
    Method<"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer)", &DrawPictureRGB>(kWithHostPicture),
    Method<"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer)", &DrawPictureRGB>(kWithHostPicture),
    Method<"DrawPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer, SourceX as integer, SourceY as integer)", &DrawPictureRGB>(kWithHostPicture),
    Method<"DrawMaskedPictureRGB(pic as picture, InvertMask as boolean=False)",
           &DrawMaskedPictureRGB>(kWithHostPicture),
    Method<"DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, InvertMask as boolean=False)",
           &DrawMaskedPictureRGB>(kWithHostPicture),
    Method<"DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer, InvertMask as boolean=False)", &DrawMaskedPictureRGB>(kWithHostPicture),
    Method<"DrawMaskedPictureRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer, SourceX as integer, SourceY as integer, InvertMask as boolean=False)",
           &DrawMaskedPictureRGB>(kWithHostPicture),
    Method<"DrawMaskedPictureApplyMaskRGB(pic as picture, InvertMask as boolean=False)",
           &DrawMaskedPictureApplyMaskRGB>(kWithHostPicture),
    Method<"DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, "
           "InvertMask as boolean=False)", &DrawMaskedPictureApplyMaskRGB>(kWithHostPicture),
    Method<"DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer, InvertMask as boolean=False)", &DrawMaskedPictureApplyMaskRGB>(kWithHostPicture),
    Method<"DrawMaskedPictureApplyMaskRGB(pic as picture, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer, SourceX as integer, SourceY as integer, InvertMask as boolean=False)",
           &DrawMaskedPictureApplyMaskRGB>(kWithHostPicture),

    // Pixels from picture to picture, and clips
    Method<"CopyPixels(source as PictureTQX, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer, SourceX as integer, SourceY as integer)", &CopyPixels>(kPortable),
    Method<"CopyPixels(source as PictureTQX, DestX as integer, DestY as integer, DestWidth as integer, "
           "DestHeight as integer)", &CopyPixels>(kPortable),
    Method<"CopyPixels(source as PictureTQX)", &CopyPixels>(kPortable),
    Method<"ClipImage as PictureTQX", &ClipImage>(kPortable),
    Method<"ClipImage(x as integer, y as integer, width as integer, height as integer) as PictureTQX",
           &ClipImage>(kPortable),

    // Turns
    Method<"Rotate90slow(dest as PictureTQX=nil) as PictureTQX", &Rotate90slow>(kPortable),
    Method<"Rotate180(dest as PictureTQX=nil) as PictureTQX", &Rotate180>(kPortable),
    Method<"Rotate270slow(dest as PictureTQX=nil) as PictureTQX", &Rotate270slow>(kPortable),
    Method<"Rotate(angle as double, Red as integer, Green as integer, Blue as integer, Alpha as integer, "
           "Gray as integer) as PictureTQX", &Rotate>(kPortable),
    Method<"Rotate90(dest as PictureTQX=nil) as PictureTQX", &Rotate90>(kPortable),
    Method<"Rotate270(dest as PictureTQX=nil) as PictureTQX", &Rotate270>(kPortable),

    // Convolution
    Method<"ApplyMatrix(dest as PictureTQX, matrix() as integer) as PictureTQX", &ApplyMatrix>(kPortable),
    Method<"ApplyMatrix(dest as PictureTQX, matrix() as integer, delta as integer) as PictureTQX",
           &ApplyMatrix>(kPortable),
    Method<"ApplyMatrix(dest as PictureTQX, matrix() as integer, delta as integer, "
           "ScaleFactor as double) as PictureTQX", &ApplyMatrix>(kPortable),

    // To an off-screen world
    Method<"CopyGWorld as variant", &CopyGWorld>(kPortable),
};

const sdk::MethodRecord sharedMethods[] = {
    SharedMethod<"CreatePictureTQX(width as integer, height as integer, theImageFormat as integer) as PictureTQX",
                 &CreatePictureTQXShared>(kPortable),
};

constexpr NamedValue constantValues[] = {
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

static_assert(std::size(properties) == 31);
static_assert(std::size(methods) == 100);
static_assert(std::size(constantValues) == 61);

sdk::ConstantRecord constants[std::size(constantValues)];

}  // namespace

sdk::ClassDefinition pictureClass = {
    .version = sdk::kInterfaceVersion,
    .name = "PictureTQX",
    .superclass = nullptr,
    .instanceDataSize = sizeof(PixelBuffer),
    .instanceDataOffset = 0,
    .constructor = nullptr,
    .destructor = &Close,
    .properties = properties,
    .propertyCount = std::size(properties),
    .methods = methods,
    .methodCount = std::size(methods),
    .events = nullptr,
    .eventCount = 0,
    .constants = constants,
    .constantCount = std::size(constants),
    .flags = 4,
    .sharedMethods = sharedMethods,
    .sharedMethodCount = std::size(sharedMethods),
};

void DeclarePictureConstants() { DeclareConstants(constantValues, constants); }

}  // namespace tqx
