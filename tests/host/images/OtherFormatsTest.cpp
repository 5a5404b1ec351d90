// GIF, BMP and PNM.
#include <gif_lib.h>

#include <cstdlib>

#include "tests/host/images/ImageTestFiles.h"

namespace host {
namespace {

using Bytes = std::vector<std::uint8_t>;

std::string AsString(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

// --- GIF ------------------------------------------------------------------------------------

struct GifKind {
    int canvas = 8, left = 0, top = 0, side = 8;
    bool interlaced = false;
    int transparent = -1;
};

// Index x + y at pixel (x, y) of the frame, colours {16 i, 255 - i, i}; a second frame of index 0.
void WriteGif(const std::string& path, const GifKind& kind) {
    int error = 0;
    GifFileType* gif = EGifOpenFileName(path.c_str(), false, &error);
    GifColorType colors[16];
    for (int i = 0; i < 16; ++i) colors[i] = {GifByteType(i * 16), GifByteType(255 - i), GifByteType(i)};
    ColorMapObject* map = GifMakeMapObject(16, colors);
    EGifPutScreenDesc(gif, kind.canvas, kind.canvas, 8, 0, map);
    GraphicsControlBlock control{0, false, 0, kind.transparent};
    GifByteType extension[4];
    EGifGCBToExtension(&control, extension);
    EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, extension);
    EGifPutImageDesc(gif, kind.left, kind.top, kind.side, kind.side, kind.interlaced, nullptr);
    std::vector<int> rows;
    const int starts[] = {0, 4, 2, 1}, steps[] = {8, 8, 4, 2};
    for (int pass = 0; kind.interlaced && pass < 4; ++pass)
        for (int y = starts[pass]; y < kind.side; y += steps[pass]) rows.push_back(y);
    for (int y = 0; !kind.interlaced && y < kind.side; ++y) rows.push_back(y);
    for (int y : rows) {
        Bytes row;
        for (int x = 0; x < kind.side; ++x) row.push_back(static_cast<std::uint8_t>((x + y) % 16));
        EGifPutLine(gif, row.data(), kind.side);
    }
    EGifPutImageDesc(gif, 0, 0, 1, 1, false, nullptr);
    GifByteType zero = 0;
    EGifPutLine(gif, &zero, 1);
    GifFreeMapObject(map);
    EGifCloseFile(gif, &error);
}

TEST(GifFiles, GiveTheirFirstPicture) {
    TemporaryDirectory directory;
    for (bool interlaced : {false, true}) {
        WriteGif(directory.Path("a.gif"), {.interlaced = interlaced});
        const TestImage image = ReadImage(directory.Path("a.gif"));
        EXPECT_EQ(image.layout, PixelLayout::Rgb);
        ASSERT_EQ(image.height, 8);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                EXPECT_EQ(image.At(x, y, 0), (x + y) * 16);
                EXPECT_EQ(image.At(x, y, 1), 255 - x - y);
            }
    }
}

TEST(GifFiles, TransparentIndexAndUncoveredCanvasAreClear) {
    TemporaryDirectory directory;
    WriteGif(directory.Path("a.gif"), {.canvas = 6, .left = 2, .top = 3, .side = 3, .transparent = 1});
    const TestImage image = ReadImage(directory.Path("a.gif"));
    EXPECT_EQ(image.layout, PixelLayout::Rgba);
    EXPECT_EQ(image.At(0, 0, 3), 0);
    EXPECT_EQ(image.At(2, 3, 3), 255);
    EXPECT_EQ(image.At(3, 3, 3), 0);  // index 1
    EXPECT_EQ(image.At(4, 3, 0), 32);
    EXPECT_EQ(image.At(5, 5, 3), 0);
}

TEST(GifFiles, AFrameLargerThanTheCanvasWidensIt) {
    TemporaryDirectory directory;
    WriteGif(directory.Path("a.gif"), {.canvas = 4, .left = 1, .side = 8});
    EXPECT_EQ(ReadImage(directory.Path("a.gif")).width, 9);
}

TEST(GifFiles, DamageIsSurvived) {
    TemporaryDirectory directory;
    WriteGif(directory.Path("a.gif"), {.interlaced = true, .transparent = 3});
    const std::string whole = ReadBytes(directory.Path("a.gif"));
    WriteBytes(directory.Path("cut.gif"), whole.substr(0, 80));
    EXPECT_EQ(ReadFailure(directory.Path("cut.gif")), directory.Path("cut.gif") + ": is cut short");
    ExpectSurvivesDamage(whole, "damaged.gif");
}

// --- BMP ------------------------------------------------------------------------------------

TEST(BmpFiles, KeepColoursAndAlpha) {
    TemporaryDirectory directory;
    for (PixelLayout layout : {PixelLayout::Rgb, PixelLayout::Rgba}) {
        const TestImage image = MakeTestImage(5, 3, layout);
        WriteImage(directory.Path("a.bmp"), image);
        EXPECT_EQ(ReadImage(directory.Path("a.bmp")), image);
    }
}

// A BMP file with a description of 40 bytes.
std::string Bmp(int width, int height, int bits, int compression, const Bytes& between, const Bytes& pixels,
                int colors = 0) {
    Bytes bytes(54);
    const auto put = [&](std::size_t at, unsigned value, int count) {
        for (int i = 0; i < count; ++i) bytes[at + std::size_t(i)] = static_cast<std::uint8_t>(value >> 8 * i);
    };
    put(0, 'B' | 'M' << 8, 2);
    put(10, 54 + static_cast<unsigned>(between.size()), 4);
    put(14, 40, 4);
    put(18, static_cast<unsigned>(width), 4);
    put(22, static_cast<unsigned>(height), 4);
    put(26, 1, 2);
    put(28, static_cast<unsigned>(bits), 2);
    put(30, static_cast<unsigned>(compression), 4);
    put(46, static_cast<unsigned>(colors), 4);
    bytes.insert(bytes.end(), between.begin(), between.end());
    bytes.insert(bytes.end(), pixels.begin(), pixels.end());
    return AsString(bytes);
}

const Bytes kPalette{0, 0, 0, 0, 3, 2, 1, 0, 30, 20, 10, 0, 255, 255, 255, 0};

Bytes ReadBmp(const TemporaryDirectory& directory, const std::string& bytes) {
    WriteBytes(directory.Path("a.bmp"), bytes);
    return ReadImage(directory.Path("a.bmp")).pixels;
}

TEST(BmpFiles, LowDepthsGoThroughTheirPalette) {
    TemporaryDirectory directory;
    const Bytes expected{1, 2, 3, 10, 20, 30};
    EXPECT_EQ(ReadBmp(directory, Bmp(2, 1, 8, 0, kPalette, {1, 2, 0, 0}, 4)), expected);
    EXPECT_EQ(ReadBmp(directory, Bmp(2, 1, 4, 0, kPalette, {0x12, 0, 0, 0}, 4)), expected);
    EXPECT_EQ(ReadBmp(directory, Bmp(2, 1, 1, 0, {3, 2, 1, 0, 30, 20, 10, 0}, {0b01000000, 0, 0, 0}, 2)), expected);
    EXPECT_EQ(ReadBmp(directory, Bmp(1, 1, 8, 0, kPalette, {200, 0, 0, 0}, 4)), (Bytes{0, 0, 0}));  // no such entry
}

TEST(BmpFiles, RowsGoUpUnlessTheHeightIsNegative) {
    TemporaryDirectory directory;
    const Bytes rows{3, 2, 1, 0, 30, 20, 10, 0};
    EXPECT_EQ(ReadBmp(directory, Bmp(1, 2, 24, 0, {}, rows)), (Bytes{10, 20, 30, 1, 2, 3}));
    EXPECT_EQ(ReadBmp(directory, Bmp(1, -2, 24, 0, {}, rows)), (Bytes{1, 2, 3, 10, 20, 30}));
}

TEST(BmpFiles, MasksSayWhereTheColoursAre) {
    TemporaryDirectory directory;
    EXPECT_EQ(ReadBmp(directory, Bmp(1, 1, 16, 0, {}, {0x1f, 0x7c, 0, 0})), (Bytes{255, 0, 255}));
    const Bytes five65{0, 0xf8, 0, 0, 0xe0, 7, 0, 0, 0x1f, 0, 0, 0};
    EXPECT_EQ(ReadBmp(directory, Bmp(1, 1, 16, 3, five65, {0xe0, 7, 0, 0})), (Bytes{0, 255, 0}));
    EXPECT_EQ(ReadBmp(directory, Bmp(1, 1, 32, 0, {}, {3, 2, 1, 99})), (Bytes{1, 2, 3}));
    const Bytes alpha{0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0, 0, 0, 0, 0, 255};
    EXPECT_EQ(ReadBmp(directory, Bmp(1, 1, 32, 6, alpha, {3, 2, 1, 99})), (Bytes{1, 2, 3, 99}));
}

TEST(BmpFiles, ShortAndLongDescriptionsAreRead) {
    TemporaryDirectory directory;
    // 12 bytes, sizes of 16 bits, palette entries of three bytes.
    const std::string old = "BM" + Little(0, 8) + Little(14 + 12 + 6, 4) + Little(12, 4) + Little(2, 2) + Little(1, 2) +
                            Little(1, 2) + Little(1, 2) + "\x03\x02\x01\x1e\x14\x0a" + std::string("\x40\0\0\0", 4);
    EXPECT_EQ(ReadBmp(directory, old), (Bytes{1, 2, 3, 10, 20, 30}));
    // 124 bytes, of which the masks count where the compression says so.
    for (unsigned compression : {0U, 3U}) {
        const std::string head = Little(124, 4) + Little(1, 4) + Little(1, 4) + Little(1, 2) + Little(32, 2) +
                                 Little(compression, 4) + std::string(20, '\0') + Little(0xff, 4) + Little(0xff00, 4) +
                                 Little(0xff0000, 4) + Little(0xff000000, 4);
        const std::string file =
            "BM" + Little(0, 8) + Little(14 + 124, 4) + head + std::string(124 - 56, '\0') + "\x01\x02\x03\x63";
        EXPECT_EQ(ReadBmp(directory, file), compression == 3 ? (Bytes{1, 2, 3, 99}) : (Bytes{3, 2, 1}));
    }
}

TEST(BmpFiles, RunLengthsAreUnpacked) {
    TemporaryDirectory directory;
    // Row 0 (the lowest): two of 1, then 2 and 3 as they are; row 1: one pixel skipped, one of 2.
    const Bytes runs{2, 1, 0, 3, 2, 3, 1, 0, 0, 0, 0, 2, 1, 0, 1, 2, 0, 1};
    const TestImage expected{5, 2, PixelLayout::Rgb, {0, 0, 0, 10, 20, 30, 0,  0,  0,  0,   0,   0,   0, 0, 0,
                                                      1, 2, 3, 1,  2,  3,  10, 20, 30, 255, 255, 255, 1, 2, 3}};
    EXPECT_EQ(ReadBmp(directory, Bmp(5, 2, 8, 1, kPalette, runs, 4)), expected.pixels);
    const Bytes nibbles{3, 0x12, 0, 0, 0, 3, 0x12, 0x30, 0, 1};
    EXPECT_EQ(ReadBmp(directory, Bmp(3, 2, 4, 2, kPalette, nibbles, 4)),
              (Bytes{1, 2, 3, 10, 20, 30, 255, 255, 255, 1, 2, 3, 10, 20, 30, 1, 2, 3}));
}

// The file with its pixels said to lie elsewhere.
std::string WithPixelsAt(std::string bmp, unsigned place) { return bmp.replace(10, 4, Little(place, 4)); }

TEST(BmpFiles, PixelsInTheHeadAreDamage) {
    TemporaryDirectory directory;
    const std::string path = directory.Path("a.bmp");
    const std::string rgb = Bmp(1, 1, 24, 0, {}, {3, 2, 1, 0}), runs = Bmp(1, 1, 8, 1, kPalette, {1, 1, 0, 1}, 4);
    for (const std::string& whole : {rgb, runs})
        for (const unsigned place : {0U, 13U, 14U, 53U}) {
            WriteBytes(path, WithPixelsAt(whole, place));
            EXPECT_EQ(ReadFailure(path), path + ": is a damaged BMP file (its pixels lie in its head)") << place;
        }
    const Bytes five65{0, 0xf8, 0, 0, 0xe0, 7, 0, 0, 0x1f, 0, 0, 0};
    WriteBytes(path, WithPixelsAt(Bmp(1, 1, 16, 3, five65, {0xe0, 7, 0, 0}), 65));
    EXPECT_EQ(ReadFailure(path), path + ": is a damaged BMP file (its pixels lie in its masks)");
    WriteBytes(path, WithPixelsAt(rgb, 55));
    EXPECT_EQ(ReadFailure(path), path + ": is cut short");
}

TEST(BmpFiles, APaletteEndsWhereThePixelsBegin) {
    TemporaryDirectory directory;
    // All 256 entries are said to be used; two are there.
    const Bytes two{0, 0, 0, 0, 3, 2, 1, 0};
    EXPECT_EQ(ReadBmp(directory, Bmp(2, 1, 8, 0, two, {1, 7, 0, 0})), (Bytes{1, 2, 3, 0, 0, 0}));
}

TEST(BmpFiles, UnknownKindsCutsAndDamageAreErrors) {
    TemporaryDirectory directory;
    const auto failure = [&](const std::string& bytes) {
        WriteBytes(directory.Path("a.bmp"), bytes);
        return ReadFailure(directory.Path("a.bmp")).substr(directory.Path("a.bmp").size());
    };
    EXPECT_EQ(failure(Bmp(1, 1, 8, 4, {}, {0, 0})), ": is a BMP file of an unknown kind");
    EXPECT_EQ(failure(Bmp(1, 1, 7, 0, {}, {0, 0})), ": is a BMP file of an unknown kind");
    EXPECT_EQ(failure(Bmp(100, 100, 24, 0, {}, {0, 0})), ": is cut short");
    EXPECT_EQ(failure(Bmp(-5, 1, 24, 0, {}, {0, 0})), ": holds no pixels");
    EXPECT_EQ(failure(Bmp(1, INT32_MIN, 24, 0, {}, {0, 0})).find(": is too large"), 0u);
    EXPECT_EQ(failure(Bmp(4, 4, 8, 1, kPalette, {2, 1}, 4)), ": is cut short");
    ExpectSurvivesDamage(Bmp(5, 2, 8, 1, kPalette, {2, 1, 0, 3, 2, 3, 1, 0, 0, 0, 0, 2, 1, 0, 1, 2, 0, 1}, 4),
                         "damaged.bmp");
}

// --- PNM ------------------------------------------------------------------------------------

TEST(PnmFiles, KeepEveryByteInEveryLayout) {
    TemporaryDirectory directory;
    for (PixelLayout layout : {PixelLayout::Gray, PixelLayout::GrayAlpha, PixelLayout::Rgb, PixelLayout::Rgba}) {
        const TestImage image = MakeTestImage(7, 5, layout);
        WriteImage(directory.Path("a.pnm"), image);
        EXPECT_EQ(ReadImage(directory.Path("a.pnm")), image);
    }
}

TEST(PnmFiles, EveryKindIsRead) {
    TemporaryDirectory directory;
    const auto read = [&](std::string bytes) {
        WriteBytes(directory.Path("a.pnm"), bytes);
        return ReadImage(directory.Path("a.pnm")).pixels;
    };
    EXPECT_EQ(read("P1\n# bits\n3 1\n101"), (Bytes{0, 255, 0}));
    EXPECT_EQ(read("P1 3 1 1 0 1\n"), (Bytes{0, 255, 0}));
    EXPECT_EQ(read("P2\n2 1\n4\n1 4"), (Bytes{64, 255}));
    EXPECT_EQ(read("P3 1 1 255 1 #two\n 2 3"), (Bytes{1, 2, 3}));
    EXPECT_EQ(read(std::string("P4 3 1\n\xa0", 8)), (Bytes{0, 255, 0}));
    EXPECT_EQ(read("P5 2 1 255\nAB"), (Bytes{65, 66}));
    EXPECT_EQ(read("P5#a\n2#b 9\n#c\n 1 #d\n255#e\nAB"), (Bytes{65, 66}));
    EXPECT_EQ(read("P2 2 1 255 65#e 7\n66"), (Bytes{65, 66}));
    EXPECT_EQ(read("P1 2 1 1#e 0\n0"), (Bytes{0, 255}));
    EXPECT_EQ(read(std::string("P6 1 1 65535\n\xff\xff\x80\0\0\0", 19)), (Bytes{255, 128, 0}));
    EXPECT_EQ(read(std::string("P5 2 1 65535\n\x80\0\xff\xff", 17)), (Bytes{128, 255}));
    EXPECT_EQ(read("P6 1 1 255\nABC"), (Bytes{65, 66, 67}));
    EXPECT_EQ(read("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 2\nMAXVAL 255\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nAB"),
              (Bytes{65, 66}));
}

TEST(PnmFiles, DamageIsAnErrorThatNamesTheFile) {
    TemporaryDirectory directory;
    for (const char* bytes : {"P5", "P5 2", "P5 2 2 255\nA", "P5 0 1 255\n", "P5 1 1 0\nA", "P5 1 1 70000\nA",
                              "P5 99999999999999999999 1 255\n", "P2 2 1 255\n1 x", "P1 2 1\n12", "P7\nWIDTH 1\n",
                              "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 9\nMAXVAL 255\nENDHDR\n", "P6 100000 100000 255\n"}) {
        WriteBytes(directory.Path("a.pnm"), bytes);
        EXPECT_EQ(ReadFailure(directory.Path("a.pnm")).find(directory.Path("a.pnm")), 0u) << bytes;
    }
    ExpectSurvivesDamage("P3\n2 2\n255\n1 2 3 4 5 6 7 8 9 10 11 12", "damaged.ppm");
}

}  // namespace
}  // namespace host
