// Files through the rows of the plug-in's pictures, which the host knows only by their members.
#include <cstdlib>

#include "host/framework/FolderItem.h"
#include "host/framework/RowTransfer.h"
#include "tests/host/images/ImageTestFiles.h"
#include "tests/support/PluginFixture.h"

namespace host {
namespace {

using support::Call;
using support::New;
using support::TakeThrown;

constexpr int kRgb = 1, kRgba = 2, kGray = 11, kGrayAlpha = 12;

class RowTransferTest : public support::PluginTest {
  protected:
    Ref<Object> Item(const std::string& name) { return NewFolderItem(directory.Path(name)); }
    TemporaryDirectory directory;
};

std::string Data(const Ref<Object>& picture, int format) {
    return std::string(Call(picture, "DataStringInFormat", format).text());
}

std::string Pixels(const TestImage& image) { return {image.pixels.begin(), image.pixels.end()}; }

TEST_F(RowTransferTest, AFileFillsAPictureAndComesBack) {
    const std::pair<PixelLayout, int> rows[] = {{PixelLayout::Gray, kGray},
                                                {PixelLayout::GrayAlpha, kGrayAlpha},
                                                {PixelLayout::Rgb, kRgb},
                                                {PixelLayout::Rgba, kRgba}};
    for (const auto& [layout, format] : rows) {
        const TestImage image = MakeTestImage(7, 5, layout);
        WriteImage(directory.Path("a.png"), image);
        const auto picture = New("PictureTQX", 7, 5, format);
        Call(Item("a.png"), "OpenInto", picture);
        EXPECT_EQ(Data(picture, format), Pixels(image));
        Call(Item("b.png"), "SaveFrom", picture);
        EXPECT_EQ(ReadImage(directory.Path("b.png")), image);
    }
}

TEST_F(RowTransferTest, AMappedPictureIsFilledLikeAnyOther) {
    const TestImage image = MakeTestImage(40, 60, PixelLayout::Rgb);
    WriteImage(directory.Path("a.png"), image);
    const auto picture = New("PictureTQX", 40, 60, kRgb, 1, Item("scratch"));
    Call(Item("a.png"), "OpenInto", picture);
    EXPECT_EQ(Data(picture, kRgb), Pixels(image));
    Call(Item("b.tif"), "SaveFrom", picture);
    EXPECT_EQ(ReadImage(directory.Path("b.tif")), image);
}

TEST_F(RowTransferTest, AnOpaqueFileMakesAlphaOpaque) {
    WriteImage(directory.Path("a.png"), {1, 1, PixelLayout::Rgb, {1, 2, 3}});
    const auto picture = New("PictureTQX", 1, 1, kRgba);
    Call(Item("a.png"), "OpenInto", picture);
    EXPECT_EQ(Data(picture, kRgba), "\1\2\3\xff");
}

TEST_F(RowTransferTest, OtherSizesAndObjectsAreRefused) {
    WriteImage(directory.Path("a.png"), MakeTestImage(3, 2, PixelLayout::Rgb));
    Call(Item("a.png"), "OpenInto", New("PictureTQX", 2, 3, kRgb));
    EXPECT_EQ(TakeThrown().message, directory.Path("a.png") + " has 3 x 2 pixels, the picture 2 x 3 pixels.");
    Call(Item("a.png"), "OpenInto", New("MemoryBlock", 5));
    EXPECT_EQ(TakeThrown().className, "TypeMismatchException");
    Call(Item("a.png"), "OpenInto", nullptr);
    EXPECT_EQ(TakeThrown().className, "NilObjectException");
    Call(Item("a.png"), "SaveFrom", nullptr);
    EXPECT_EQ(TakeThrown().className, "NilObjectException");
    Call(Item("missing.png"), "OpenInto", New("PictureTQX", 2, 3, kRgb));
    EXPECT_EQ(TakeThrown().className, "IOException");
}

TEST_F(RowTransferTest, APictureWithoutRowsLeavesTheFileAsItWas) {
    WriteImage(directory.Path("a.png"), MakeTestImage(3, 2, PixelLayout::Rgb));
    const std::string before = ReadBytes(directory.Path("a.png"));
    const auto closed = New("PictureTQX", 3, 2, kRgb);
    Call(closed, "Close");
    Call(Item("a.png"), "SaveFrom", closed);
    EXPECT_NE(TakeThrown().className, "");
    EXPECT_EQ(ReadBytes(directory.Path("a.png")), before);
    EXPECT_EQ(directory.FileCount(), 1u);
}

TEST_F(RowTransferTest, TheLimitOnPixelsGrowsWithThePicture) {
    WriteImage(directory.Path("a.png"), MakeTestImage(20, 20, PixelLayout::Gray));
    const ImageReadSettings before = DefaultImageReadSettings();
    DefaultImageReadSettings().pixelLimit = 100;
    const auto picture = New("PictureTQX", 20, 20, kGray);
    Call(Item("a.png"), "OpenInto", picture);
    EXPECT_EQ(TakeThrown().className, "");
    Call(Item("a.png"), "OpenAsPicture");
    EXPECT_EQ(TakeThrown().className, "UnsupportedFormatException");
    DefaultImageReadSettings() = before;
}

TEST_F(RowTransferTest, QualityReachesTheFile) {
    const auto picture = New("PictureTQX", 64, 64, kRgb);
    support::Bytes noise(64 * 64 * 3);
    for (auto& byte : noise) byte = static_cast<std::uint8_t>(std::rand());
    support::Assign(picture, "DataStringInFormat", {kRgb}, support::ToValue(noise));
    Call(Item("a.jpg"), "SaveFrom", picture, 90);
    Call(Item("b.jpg"), "SaveFrom", picture, 5);
    EXPECT_GT(ReadBytes(directory.Path("a.jpg")).size(), ReadBytes(directory.Path("b.jpg")).size());
}

}  // namespace
}  // namespace host
