#include "tests/host/ImageTestFiles.h"

namespace host {
namespace {

void Describe(png_structp png, png_infop info, png_uint_32 width, png_uint_32 height, int depth, int type,
              int interlace = PNG_INTERLACE_NONE) {
    png_set_IHDR(png, info, width, height, depth, type, interlace, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
}

using Bytes = std::vector<std::uint8_t>;

TEST(PngFiles, KeepEveryByteInEveryLayout) {
    TemporaryDirectory directory;
    for (PixelLayout layout : {PixelLayout::Gray, PixelLayout::GrayAlpha, PixelLayout::Rgb, PixelLayout::Rgba}) {
        const TestImage image = MakeTestImage(37, 21, layout);
        WriteImage(directory.Path("a.png"), image);
        EXPECT_EQ(ReadImage(directory.Path("a.png")), image) << BytesPerPixel(layout) << " channels";
    }
}

TEST(PngFiles, PaletteBecomesColours) {
    TemporaryDirectory directory;
    WritePng(directory.Path("a.png"),
             [](png_structp png, png_infop info) {
                 Describe(png, info, 4, 1, 2, PNG_COLOR_TYPE_PALETTE);
                 const png_color palette[] = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {1, 2, 3}};
                 png_set_PLTE(png, info, palette, 4);
             },
             {{0b00011011}});
    const TestImage image = ReadImage(directory.Path("a.png"));
    EXPECT_EQ(image.layout, PixelLayout::Rgb);
    EXPECT_EQ(image.pixels, (Bytes{255, 0, 0, 0, 255, 0, 0, 0, 255, 1, 2, 3}));
}

TEST(PngFiles, PaletteWithTransparentEntriesHasAlpha) {
    TemporaryDirectory directory;
    WritePng(directory.Path("a.png"),
             [](png_structp png, png_infop info) {
                 Describe(png, info, 2, 1, 8, PNG_COLOR_TYPE_PALETTE);
                 const png_color palette[] = {{10, 20, 30}, {40, 50, 60}};
                 png_set_PLTE(png, info, palette, 2);
                 const png_byte alpha[] = {128};
                 png_set_tRNS(png, info, alpha, 1, nullptr);
             },
             {{0, 1}});
    const TestImage image = ReadImage(directory.Path("a.png"));
    EXPECT_EQ(image.layout, PixelLayout::Rgba);
    EXPECT_EQ(image.pixels, (Bytes{10, 20, 30, 128, 40, 50, 60, 255}));
}

TEST(PngFiles, SixteenBitsAreRoundedToEight) {
    TemporaryDirectory directory;
    WritePng(directory.Path("a.png"),
             [](png_structp png, png_infop info) { Describe(png, info, 4, 1, 16, PNG_COLOR_TYPE_GRAY); },
             {{0, 0, 0, 255, 0x7f, 0xff, 0xff, 0xff}});
    // 255 / 257 is nearer to 1 than to 0.
    EXPECT_EQ(ReadImage(directory.Path("a.png")).pixels, (Bytes{0, 1, 127, 255}));
}

TEST(PngFiles, OneBitGraysAreSpreadOverTheFullRange) {
    TemporaryDirectory directory;
    WritePng(directory.Path("a.png"),
             [](png_structp png, png_infop info) { Describe(png, info, 3, 1, 1, PNG_COLOR_TYPE_GRAY); },
             {{0b01000000}});
    const TestImage image = ReadImage(directory.Path("a.png"));
    EXPECT_EQ(image.layout, PixelLayout::Gray);
    EXPECT_EQ(image.pixels, (Bytes{0, 255, 0}));
}

TEST(PngFiles, InterlacedRowsComeInOrder) {
    TemporaryDirectory directory;
    const TestImage image = MakeTestImage(19, 23, PixelLayout::Rgb);
    std::vector<Bytes> rows;
    for (std::int32_t y = 0; y < image.height; ++y) rows.emplace_back(image.Row(y), image.Row(y) + image.RowBytes());
    WritePng(
        directory.Path("a.png"),
        [](png_structp png, png_infop info) {
            Describe(png, info, 19, 23, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_ADAM7);
        },
        rows);
    EXPECT_EQ(ReadImage(directory.Path("a.png")), image);
}

TEST(PngFiles, CutShortAnywhereIsAnErrorThatNamesTheFile) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("whole.png"), MakeTestImage(40, 40, PixelLayout::Rgb));
    const std::string whole = ReadBytes(directory.Path("whole.png"));
    const std::string path = directory.Path("cut.png");
    for (std::size_t length = 0; length < whole.size(); length += length < 100 ? 1 : 37) {
        WriteBytes(path, whole.substr(0, length));
        EXPECT_EQ(ReadFailure(path).find(path), 0u) << length;
    }
}

TEST(PngFiles, AnyFlippedByteIsAnError) {
    TemporaryDirectory directory;
    const TestImage image = MakeTestImage(9, 9, PixelLayout::Gray);
    WriteImage(directory.Path("whole.png"), image);
    const std::string whole = ReadBytes(directory.Path("whole.png"));
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x55);
        WriteBytes(directory.Path("a.png"), damaged);
        EXPECT_NE(ReadFailure(directory.Path("a.png")), "") << "byte " << at;
    }
}

TEST(PngFiles, AbsurdSizeIsRefusedBeforeMemoryIsTaken) {
    TemporaryDirectory directory;
    WritePng(directory.Path("a.png"),
             [](png_structp png, png_infop info) { Describe(png, info, 1, 1, 8, PNG_COLOR_TYPE_GRAY); }, {{0}});
    std::string bytes = ReadBytes(directory.Path("a.png"));
    // 60000 x 60000 pixels, with the check sum of that head.
    const std::string head("IHDR\x00\x00\xea\x60\x00\x00\xea\x60\x08\x00\x00\x00\x00", 17);
    std::uint32_t crc = 0xffffffff;
    for (char c : head) {
        crc ^= static_cast<std::uint8_t>(c);
        for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xedb88320 : 0);
    }
    crc = ~crc;
    const char sum[] = {char(crc >> 24), char(crc >> 16), char(crc >> 8), char(crc)};
    bytes.replace(12, 21, head + std::string(sum, 4));
    WriteBytes(directory.Path("a.png"), bytes);
    EXPECT_EQ(ReadFailure(directory.Path("a.png")),
              directory.Path("a.png") +
                  ": is too large: 60000 x 60000 pixels are more than the limit of 268435456; the option --max-pixels "
                  "lifts it");
    // Without the limit it is too little data for so many pixels.
    EXPECT_EQ(ReadFailure(directory.Path("a.png"), {0, true}), directory.Path("a.png") + ": is cut short");
}

TEST(PngFiles, TheLimitItselfIsAllowed) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("a.png"), MakeTestImage(10, 10, PixelLayout::Gray));
    EXPECT_EQ(ReadFailure(directory.Path("a.png"), {100, true}), "");
    EXPECT_NE(ReadFailure(directory.Path("a.png"), {99, true}), "");
}

}  // namespace
}  // namespace host
