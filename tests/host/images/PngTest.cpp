// PNG files of every kind, whole and damaged.
#include <cstring>

#include "tests/host/images/ImageTestFiles.h"

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

TEST(PngFiles, OneTransparentColourBecomesAlpha) {
    TemporaryDirectory directory;
    const auto read = [&](int depth, int type, const png_color_16& clear, const Bytes& row) {
        WritePng(directory.Path("a.png"),
                 [&](png_structp png, png_infop info) {
                     Describe(png, info, 2, 1, depth, type);
                     png_color_16 color = clear;
                     png_set_tRNS(png, info, nullptr, 0, &color);
                 },
                 {row});
        return ReadImage(directory.Path("a.png")).pixels;
    };
    EXPECT_EQ(read(8, PNG_COLOR_TYPE_GRAY, {.gray = 7}, {7, 8}), (Bytes{7, 0, 8, 255}));
    EXPECT_EQ(read(2, PNG_COLOR_TYPE_GRAY, {.gray = 1}, {0b01100000}), (Bytes{85, 0, 170, 255}));
    EXPECT_EQ(read(8, PNG_COLOR_TYPE_RGB, {.red = 1, .green = 2, .blue = 3}, {1, 2, 3, 1, 2, 4}),
              (Bytes{1, 2, 3, 0, 1, 2, 4, 255}));
    // All 16 bits count.
    EXPECT_EQ(read(16, PNG_COLOR_TYPE_GRAY, {.gray = 0x0101}, {1, 1, 1, 2}), (Bytes{1, 0, 1, 255}));
}

TEST(PngFiles, SixteenBitsWithAlphaAreRoundedToo) {
    TemporaryDirectory directory;
    WritePng(directory.Path("a.png"),
             [](png_structp png, png_infop info) { Describe(png, info, 1, 1, 16, PNG_COLOR_TYPE_GRAY_ALPHA); },
             {{0x80, 0x80, 0, 255}});
    EXPECT_EQ(ReadImage(directory.Path("a.png")).pixels, (Bytes{128, 1}));
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

// An orientation as Exif puts it.
Bytes Exif(std::uint8_t orientation) {
    return {'M', 'M', 0, '*', 0, 0, 0, 8, 0, 1, 1, 0x12, 0, 3, 0, 0, 0, 1, 0, orientation, 0, 0, 0, 0, 0, 0};
}

// One row of three grays, with an orientation before or behind it.
void WriteOriented(const std::string& path, std::uint8_t orientation, bool behind, int interlace) {
    Bytes exif = Exif(orientation);
    WritePng(path,
             [&](png_structp png, png_infop info) {
                 Describe(png, info, 3, 2, 8, PNG_COLOR_TYPE_GRAY, interlace);
                 if (!behind) {
                     png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()), exif.data());
                     return;
                 }
                 png_unknown_chunk chunk{};
                 std::memcpy(chunk.name, "eXIf", 5);
                 chunk.data = exif.data();
                 chunk.size = exif.size();
                 chunk.location = PNG_AFTER_IDAT;
                 png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_ALWAYS, chunk.name, 1);
                 png_set_unknown_chunks(png, info, &chunk, 1);
             },
             {{1, 2, 3}, {4, 5, 6}});
}

TEST(PngFiles, EveryOrientationIsTurnedUpright) {
    TemporaryDirectory directory;
    const std::string path = directory.Path("a.png");
    const Bytes expected[] = {{1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}, {6, 5, 4, 3, 2, 1}, {4, 5, 6, 1, 2, 3},
                              {1, 4, 2, 5, 3, 6}, {4, 1, 5, 2, 6, 3}, {6, 3, 5, 2, 4, 1}, {3, 6, 2, 5, 1, 4}};
    for (std::uint8_t orientation = 1; orientation <= 8; ++orientation)
        for (bool behind : {false, true})
            for (int interlace : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
                WriteOriented(path, orientation, behind, interlace);
                const TestImage image = ReadImage(path);
                EXPECT_EQ(image.pixels, expected[orientation - 1]) << int{orientation} << behind << interlace;
                EXPECT_EQ(image.width, orientation >= 5 ? 2 : 3);
                EXPECT_EQ(ReadImage(path, {0, false}).pixels, expected[0]);
            }
}

TEST(PngFiles, DamagedOrientationIsUpright) {
    TemporaryDirectory directory;
    WriteOriented(directory.Path("a.png"), 6, true, PNG_INTERLACE_NONE);
    std::string bytes = ReadBytes(directory.Path("a.png"));
    const std::size_t at = bytes.find("eXIf");
    ASSERT_NE(at, std::string::npos);
    bytes[at + 4 + 19] = 3;
    WriteBytes(directory.Path("a.png"), bytes);
    EXPECT_EQ(ReadImage(directory.Path("a.png")).pixels, (Bytes{1, 2, 3, 4, 5, 6}));
    WriteOriented(directory.Path("a.png"), 9, true, PNG_INTERLACE_NONE);
    EXPECT_EQ(ReadImage(directory.Path("a.png")).pixels, (Bytes{1, 2, 3, 4, 5, 6}));
}

// One row of three grays with texts: a key and what it stands for each, packed as the kind says.
void WriteWithTexts(const std::string& path, const std::vector<std::pair<std::string, std::string>>& texts, int kind) {
    WritePng(path,
             [&](png_structp png, png_infop info) {
                 Describe(png, info, 3, 1, 8, PNG_COLOR_TYPE_GRAY);
                 for (auto [key, text] : texts) {
                     png_text entry{};
                     entry.compression = kind;
                     entry.key = key.data();
                     entry.text = text.data();
                     (kind >= PNG_ITXT_COMPRESSION_NONE ? entry.itxt_length : entry.text_length) = text.size();
                     png_set_text(png, info, &entry, 1);
                 }
             },
             {{1, 2, 3}});
}

// Exif data as a text of hex digits.
std::string RawProfile(const std::string& name, const Bytes& data) {
    std::string text = "\n" + name + "\n      " + std::to_string(data.size()) + "\n";
    for (std::size_t i = 0; i < data.size(); ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", data[i]);
        text += digits;
        if (i % 36 == 35) text += "\n";
    }
    return text + "\n";
}

constexpr int kTextKinds[] = {PNG_TEXT_COMPRESSION_NONE, PNG_TEXT_COMPRESSION_zTXt, PNG_ITXT_COMPRESSION_NONE,
                              PNG_ITXT_COMPRESSION_zTXt};
const Bytes kUpright{1, 2, 3}, kMirrored{3, 2, 1};

TEST(PngFiles, OrientationAmongTheTextsIsApplied) {
    TemporaryDirectory directory;
    const std::string path = directory.Path("a.png");
    Bytes marked = Exif(2);
    marked.insert(marked.begin(), {'E', 'x', 'i', 'f', 0, 0});
    const std::string xmp = "<x:xmpmeta><rdf:Description tiff:Orientation=\"2\"/></x:xmpmeta>";
    const std::pair<std::string, std::string> texts[] = {
        {"Raw profile type exif", RawProfile("exif", Exif(2))},
        {"Raw profile type APP1", RawProfile("generic profile", marked)},
        {"Raw profile type xmp", RawProfile("xmp", Bytes(xmp.begin(), xmp.end()))},
        {"XML:com.adobe.xmp", xmp},
        {"XML:com.adobe.xmp", "<tiff:Orientation> 2\n</tiff:Orientation>"},
        {"XML:com.adobe.xmp", "tiff:Orientation = '2'"},
        {"exif:Orientation", "2"},
        {"Orientation", "2"},
    };
    for (const int kind : kTextKinds)
        for (const auto& text : texts) {
            WriteWithTexts(path, {{"Title", "2"}, text}, kind);
            EXPECT_EQ(ReadImage(path).pixels, kMirrored) << text.first << " " << text.second << " " << kind;
            EXPECT_EQ(ReadImage(path, {0, false}).pixels, kUpright);
        }
}

TEST(PngFiles, TextsThatMakeNoOrientationAreUpright) {
    TemporaryDirectory directory;
    const std::string path = directory.Path("a.png");
    for (const char* xmp : {"", "tiff:Orientation", "tiff:Orientation=", "tiff:Orientation=\"", "tiff:Orientation=2",
                            "tiff:Orientation=\"9\"", "tiff:Orientation=\"22\"", "tiff:Orientation>",
                            "<tiff:Orientation>2", "<tiff:Orientation>0</tiff:Orientation>"}) {
        WriteWithTexts(path, {{"XML:com.adobe.xmp", xmp}}, PNG_ITXT_COMPRESSION_NONE);
        // An element that is never closed is still read as one.
        EXPECT_EQ(ReadImage(path).pixels, std::string(xmp) == "<tiff:Orientation>2" ? kMirrored : kUpright) << xmp;
    }
    for (const char* text :
         {"", "\n", "\nexif\n", "\nexif\n 4\n", "\nexif\n 4\n4578", "\nexif\n 4\nxyz", "457869660000"}) {
        WriteWithTexts(path, {{"Raw profile type exif", text}}, PNG_TEXT_COMPRESSION_NONE);
        EXPECT_EQ(ReadImage(path).pixels, kUpright) << text;
    }
}

TEST(PngFiles, ExifCountsBeforeXmpAndXmpBeforePlainText) {
    TemporaryDirectory directory;
    const std::string path = directory.Path("a.png");
    const std::pair<std::string, std::string> exif{"Raw profile type exif", RawProfile("exif", Exif(1))},
        xmp{"XML:com.adobe.xmp", "tiff:Orientation=\"2\""}, upright{"Orientation", "1"};
    WriteWithTexts(path, {exif, xmp, upright}, PNG_TEXT_COMPRESSION_NONE);
    EXPECT_EQ(ReadImage(path).pixels, kUpright);
    WriteWithTexts(path, {xmp, upright}, PNG_TEXT_COMPRESSION_NONE);
    EXPECT_EQ(ReadImage(path).pixels, kMirrored);
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
    EXPECT_EQ(
        ReadFailure(directory.Path("a.png")),
        directory.Path("a.png") +
            ": is too large: 60000 x 60000 pixels are more than the limit of 16845824 for a file of 67 bytes; the "
            "option --max-pixels lifts it");
    EXPECT_EQ(ReadFailure(directory.Path("a.png"), {1 << 28, true}),
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
