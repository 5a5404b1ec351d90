// What all formats have in common: recognising, converting, limits, writing under a temporary name.
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "tests/host/images/ImageTestFiles.h"

namespace host {
namespace {

TEST(ImageFiles, AreKnownByContentNotByName) {
    TemporaryDirectory directory;
    const TestImage image = MakeTestImage(5, 4, PixelLayout::Rgb);
    WriteImage(directory.Path("a.png"), image);
    std::filesystem::rename(directory.Path("a.png"), directory.Path("a.jpg"));
    EXPECT_EQ(ReadImage(directory.Path("a.jpg")), image);
    EXPECT_EQ(ImageReader(directory.Path("a.jpg")).Info().format, ImageFileFormat::Png);
}

TEST(ImageFiles, EmptyUnknownMissingAndFoldersHaveTheirOwnMessages) {
    TemporaryDirectory directory;
    WriteBytes(directory.Path("empty.png"), "");
    WriteBytes(directory.Path("text.png"), "hello, world");
    const auto message = [&](const char* name) {
        return ReadFailure(directory.Path(name)).substr(directory.Path(name).size());
    };
    EXPECT_EQ(message("empty.png"), ": is empty");
    EXPECT_EQ(message("text.png"), ": is not an image of a known format (PNG, JPEG, TIFF, WebP, GIF, BMP, PNM)");
    EXPECT_EQ(message("missing.png"), ": can't be opened: No such file or directory");
    EXPECT_EQ(message("."), ": is a folder");
    ASSERT_EQ(mkfifo(directory.Path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(message("pipe"), ": is not an ordinary file");
}

TEST(ImageFiles, MissingFileIsAFileError) {
    try {
        ImageReader reader("/nowhere/at/all.png");
        FAIL();
    } catch (const ImageError& error) {
        EXPECT_EQ(error.kind, ImageError::Kind::File);
    }
}

TEST(ImageFiles, RowsComeInAnyLayout) {
    TemporaryDirectory directory;
    TestImage image{1, 1, PixelLayout::Rgba, {10, 20, 30, 40}};
    WriteImage(directory.Path("a.png"), image);
    const auto read = [&](PixelLayout layout) {
        ImageReader reader(directory.Path("a.png"));
        return ReadAll(reader, layout).pixels;
    };
    const std::uint8_t gray = (77 * 10 + 151 * 20 + 28 * 30) / 256;
    EXPECT_EQ(read(PixelLayout::Gray), (std::vector<std::uint8_t>{gray}));
    EXPECT_EQ(read(PixelLayout::GrayAlpha), (std::vector<std::uint8_t>{gray, 40}));
    EXPECT_EQ(read(PixelLayout::Rgb), (std::vector<std::uint8_t>{10, 20, 30}));
    image = {1, 1, PixelLayout::Gray, {77}};
    WriteImage(directory.Path("a.png"), image);
    EXPECT_EQ(read(PixelLayout::Rgba), (std::vector<std::uint8_t>{77, 77, 77, 255}));
}

TEST(ImageFiles, NoRowsAfterTheLast) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("a.png"), MakeTestImage(2, 2, PixelLayout::Gray));
    ImageReader reader(directory.Path("a.png"));
    ReadAll(reader, PixelLayout::Gray);
    std::uint8_t row[2];
    EXPECT_THROW(reader.ReadRow(row), ImageError);
}

TEST(ImageFiles, ExtensionChoosesTheFormat) {
    EXPECT_EQ(FormatOfExtension("a.PNG"), ImageFileFormat::Png);
    EXPECT_EQ(FormatOfExtension("/x.y/a.jpeg"), ImageFileFormat::Jpeg);
    EXPECT_EQ(FormatOfExtension("/x.png/a"), std::nullopt);
    EXPECT_EQ(FormatOfExtension("a.xyz"), std::nullopt);
    EXPECT_EQ(FormatOfExtension(""), std::nullopt);
    TemporaryDirectory directory;
    EXPECT_THROW(ImageWriter(directory.Path("a.xyz"), 1, 1, PixelLayout::Gray), ImageError);
    EXPECT_THROW(ImageWriter(directory.Path("a.gif"), 1, 1, PixelLayout::Gray), ImageError);
    EXPECT_THROW(ImageWriter(directory.Path("a.png"), 0, 1, PixelLayout::Gray), ImageError);
    EXPECT_EQ(directory.FileCount(), 0u);
}

TEST(ImageFiles, AnUnfinishedFileLeavesTheOldOne) {
    TemporaryDirectory directory;
    const TestImage old = MakeTestImage(3, 3, PixelLayout::Gray);
    WriteImage(directory.Path("a.png"), old);
    {
        ImageWriter writer(directory.Path("a.png"), 50, 50, PixelLayout::Rgb);
        writer.WriteRow(MakeTestImage(50, 1, PixelLayout::Rgb).Row(0));
        EXPECT_THROW(writer.Finish(), ImageError);
    }
    EXPECT_EQ(ReadImage(directory.Path("a.png")), old);
    EXPECT_EQ(directory.FileCount(), 1u);
}

TEST(ImageFiles, TooManyRowsAreRefused) {
    TemporaryDirectory directory;
    const TestImage image = MakeTestImage(4, 2, PixelLayout::Gray);
    ImageWriter writer(directory.Path("a.bmp"), 4, 1, PixelLayout::Gray);
    writer.WriteRow(image.Row(0));
    EXPECT_THROW(writer.WriteRow(image.Row(1)), ImageError);
}

TEST(ImageFiles, NewFilesHaveTheUsualPermissions) {
    TemporaryDirectory directory;
    const mode_t mask = umask(022);
    WriteImage(directory.Path("a.png"), MakeTestImage(2, 2, PixelLayout::Gray));
    umask(mask);
    struct stat status {};
    ASSERT_EQ(stat(directory.Path("a.png").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0644u);
}

TEST(ImageFiles, WritingFollowsALinkAndNeverReplacesADevice) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("real.png"), MakeTestImage(2, 2, PixelLayout::Gray));
    std::filesystem::create_symlink("real.png", directory.Path("link.png"));
    const TestImage image = MakeTestImage(3, 1, PixelLayout::Rgb);
    WriteImage(directory.Path("link.png"), image);
    EXPECT_TRUE(std::filesystem::is_symlink(directory.Path("link.png")));
    EXPECT_EQ(ReadImage(directory.Path("real.png")), image);
    ImageWriteOptions png;
    png.format = ImageFileFormat::Png;
    EXPECT_THROW(ImageWriter("/dev/null", 1, 1, PixelLayout::Gray, png), ImageError);
    EXPECT_THROW(ImageWriter(directory.path().string(), 1, 1, PixelLayout::Gray, png), ImageError);
    EXPECT_THROW(ImageWriter("/nowhere/at/all.png", 1, 1, PixelLayout::Gray), ImageError);
}

TEST(ImageFiles, FullDiskIsAFileErrorThatLeavesNothing) {
    TemporaryDirectory directory;
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 500;
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    for (const char* name : {"a.png", "a.jpg", "a.bmp", "a.pam", "a.tif", "a.webp"}) {
        try {
            WriteImage(directory.Path(name), MakeTestImage(300, 300, PixelLayout::Rgb), {{}, 100});
            ADD_FAILURE() << name;
        } catch (const ImageError& error) {
            EXPECT_EQ(error.kind, ImageError::Kind::File);
        }
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(directory.FileCount(), 0u);
}

}  // namespace
}  // namespace host
