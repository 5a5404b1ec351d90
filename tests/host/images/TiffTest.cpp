// TIFF files of every kind, whole and damaged.
#include <cmath>
#include <cstdlib>

#include "tests/host/images/TiffTestFiles.h"

namespace host {
namespace {

TEST(TiffFiles, KeepEveryByteInEveryLayout) {
    TemporaryDirectory directory;
    for (PixelLayout layout : {PixelLayout::Gray, PixelLayout::GrayAlpha, PixelLayout::Rgb, PixelLayout::Rgba}) {
        const TestImage image = MakeTestImage(37, 21, layout);
        WriteImage(directory.Path("a.tif"), image);
        EXPECT_EQ(ReadImage(directory.Path("a.tif")), image) << BytesPerPixel(layout) << " channels";
    }
}

TEST(TiffFiles, StripsTilesAndPlanesReadAlike) {
    TemporaryDirectory directory;
    const TestImage image = MakeTestImage(37, 41, PixelLayout::Rgb);
    for (int tile : {0, 16, 64})
        for (int planar : {PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE})
            for (int compression :
                 {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_PACKBITS}) {
                TiffKind kind{8, 3, PHOTOMETRIC_RGB, planar, compression, 1, -1, tile, nullptr};
                WriteTiff(directory.Path("a.tif"), 37, 41, kind,
                          planar == PLANARCONFIG_CONTIG ? std::vector<Bytes>{image.pixels} : PlanesOf(image));
                EXPECT_EQ(ReadImage(directory.Path("a.tif")), image) << tile << " " << planar << " " << compression;
            }
}

TEST(TiffFiles, SamplesOfAnyDepthBecomeBytes) {
    TemporaryDirectory directory;
    const auto read = [&](int width, const TiffKind& kind, Bytes row) {
        WriteTiff(directory.Path("a.tif"), width, 1, kind, {std::move(row)});
        return ReadImage(directory.Path("a.tif")).pixels;
    };
    EXPECT_EQ(read(4, {.bits = 1}, {0b01100000}), (Bytes{0, 255, 255, 0}));
    EXPECT_EQ(read(4, {.bits = 2}, {0b00011011}), (Bytes{0, 85, 170, 255}));
    EXPECT_EQ(read(2, {.bits = 4}, {0x3f}), (Bytes{51, 255}));
    EXPECT_EQ(read(2, {.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE}, {0b01000000}), (Bytes{255, 0}));
    const std::uint16_t wide[] = {0, 255, 32767, 65535};
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(wide);
    EXPECT_EQ(read(4, {.bits = 16}, Bytes(bytes, bytes + 8)), (Bytes{0, 1, 127, 255}));
}

TEST(TiffFiles, PalettesBecomeColours) {
    TemporaryDirectory directory;
    const std::uint16_t palette[] = {0, 0xffff, 0x1234, 5, 0, 0, 0x8000, 6, 0xffff, 0, 0x5678, 7};
    WriteTiff(directory.Path("a.tif"), 3, 1, {.bits = 2, .photometric = PHOTOMETRIC_PALETTE, .palette = palette},
              {{0b00011000}});
    const TestImage image = ReadImage(directory.Path("a.tif"));
    EXPECT_EQ(image.layout, PixelLayout::Rgb);
    EXPECT_EQ(image.pixels, (Bytes{0, 0, 255, 255, 0, 0, 0x12, 0x80, 0x56}));
}

TEST(TiffFiles, AlphaIsStraightWhateverTheFileHas) {
    TemporaryDirectory directory;
    TiffKind kind{8, 4, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, COMPRESSION_NONE, 1, EXTRASAMPLE_UNASSALPHA, 0, nullptr};
    const Bytes pixels{100, 50, 0, 128, 1, 2, 3, 0};
    WriteTiff(directory.Path("a.tif"), 2, 1, kind, {pixels});
    EXPECT_EQ(ReadImage(directory.Path("a.tif")).pixels, pixels);
    kind.extra = EXTRASAMPLE_ASSOCALPHA;
    WriteTiff(directory.Path("a.tif"), 2, 1, kind, {pixels});
    EXPECT_EQ(ReadImage(directory.Path("a.tif")).pixels, (Bytes{199, 100, 0, 128, 0, 0, 0, 0}));
    kind.extra = EXTRASAMPLE_UNSPECIFIED;
    WriteTiff(directory.Path("a.tif"), 2, 1, kind, {pixels});
    EXPECT_EQ(ReadImage(directory.Path("a.tif")).pixels, (Bytes{100, 50, 0, 1, 2, 3}));
}

TEST(TiffFiles, OtherKindsAreConverted) {
    TemporaryDirectory directory;
    const TiffKind inks{8, 4, PHOTOMETRIC_SEPARATED, PLANARCONFIG_CONTIG, COMPRESSION_NONE, 1, -1, 0, nullptr};
    WriteTiff(directory.Path("a.tif"), 2, 1, inks, {{255, 0, 0, 0, 0, 0, 0, 255}});
    const TestImage image = ReadImage(directory.Path("a.tif"));
    EXPECT_EQ(image.layout, PixelLayout::Rgb);
    EXPECT_EQ(image.pixels, (Bytes{0, 255, 255, 0, 0, 0}));
}

TEST(TiffFiles, FaxCodingIsRead) {
    TemporaryDirectory directory;
    const Bytes rows{0x12, 0x34, 0x56, 0x78, 0x9a, 0xbc, 0xde, 0xf0};
    Bytes expected;
    for (int i = 0; i < 64; ++i) expected.push_back(rows[static_cast<std::size_t>(i / 8)] << i % 8 & 128 ? 0 : 255);
    for (int compression : {COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4}) {
        WriteTiff(directory.Path("a.tif"), 16, 4,
                  {.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE, .compression = compression}, {rows});
        EXPECT_EQ(ReadImage(directory.Path("a.tif")).pixels, expected);
    }
}

TEST(TiffFiles, RealsGoFromBlackToWhite) {
    TemporaryDirectory directory;
    const float reals[] = {0, 0.25f, 0.5f, 1, -3, 7, INFINITY, NAN};
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(reals);
    WriteTiff(directory.Path("a.tif"), 8, 1, {.bits = 32, .format = SAMPLEFORMAT_IEEEFP},
              {Bytes(bytes, bytes + sizeof reals)});
    EXPECT_EQ(ReadImage(directory.Path("a.tif")).pixels, (Bytes{0, 64, 128, 255, 0, 255, 255, 0}));
}

// Converted by rows of strips and of tiles.
TEST(TiffFiles, InksAreConvertedInEveryArrangement) {
    TemporaryDirectory directory;
    const TestImage inks = MakeTestImage(37, 41, PixelLayout::Rgba);
    Bytes expected;
    for (std::size_t i = 0; i < inks.pixels.size(); i += 4)
        for (std::size_t channel = 0; channel < 3; ++channel)
            expected.push_back(
                static_cast<std::uint8_t>((255 - inks.pixels[i + 3]) * (255 - inks.pixels[i + channel]) / 255));
    for (int tile : {0, 16, 64})
        for (int planar : {PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE}) {
            const TiffKind kind{8, 4, PHOTOMETRIC_SEPARATED, planar, COMPRESSION_LZW, 1, -1, tile, nullptr};
            WriteTiff(directory.Path("a.tif"), 37, 41, kind,
                      planar == PLANARCONFIG_CONTIG ? std::vector<Bytes>{inks.pixels} : PlanesOf(inks));
            EXPECT_EQ(ReadImage(directory.Path("a.tif")).pixels, expected) << tile << " " << planar;
        }
}

TEST(TiffFiles, OrientationIsApplied) {
    TemporaryDirectory directory;
    WriteTiff(directory.Path("a.tif"), 2, 1, {.orientation = 6}, {{10, 20}});
    const TestImage image = ReadImage(directory.Path("a.tif"));
    EXPECT_EQ(image.width, 1);
    EXPECT_EQ(image.height, 2);
    EXPECT_EQ(image.pixels, (Bytes{10, 20}));
    ImageReadSettings settings;
    settings.applyOrientation = false;
    EXPECT_EQ(ReadImage(directory.Path("a.tif"), settings).width, 2);
}

TEST(TiffFiles, CutShortIsAnErrorThatNamesTheFile) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("whole.tif"), MakeTestImage(40, 40, PixelLayout::Rgb));
    const std::string whole = ReadBytes(directory.Path("whole.tif"));
    const std::string path = directory.Path("cut.tif");
    for (std::size_t length = 1; length + 1 < whole.size(); length += 23) {
        WriteBytes(path, whole.substr(0, length));
        EXPECT_EQ(ReadFailure(path).find(path), 0u) << length;
    }
}

TEST(TiffFiles, RandomDamageNeverCrashes) {
    TemporaryDirectory directory;
    const TestImage image = MakeTestImage(32, 32, PixelLayout::Rgba);
    std::srand(2);
    for (int tile : {0, 16}) {
        WriteTiff(
            directory.Path("whole.tif"), 32, 32,
            {8, 4, PHOTOMETRIC_RGB, PLANARCONFIG_CONTIG, COMPRESSION_LZW, 1, EXTRASAMPLE_UNASSALPHA, tile, nullptr},
            {image.pixels});
        const std::string whole = ReadBytes(directory.Path("whole.tif"));
        for (int round = 0; round < 600; ++round) {
            std::string damaged = whole;
            // The directory lies at the end.
            const std::size_t from = round % 2 ? 0 : damaged.size() - 300;
            for (int i = 0; i < 2; ++i)
                damaged[from + static_cast<std::size_t>(std::rand()) % (damaged.size() - from)] =
                    static_cast<char>(std::rand());
            ImageReadSettings settings;
            settings.pixelLimit = 100000;
            try {
                ImageReader reader(damaged.data(), damaged.size(), "damaged.tif", settings);
                ReadAll(reader, PixelLayout::Rgba);
            } catch (const ImageError& error) {
                EXPECT_EQ(std::string(error.what()).find("damaged.tif: "), 0u);
            }
        }
    }
}

TEST(TiffFiles, TooManyPixelsAreRefused) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("a.tif"), MakeTestImage(20, 20, PixelLayout::Gray));
    EXPECT_NE(ReadFailure(directory.Path("a.tif"), {399, true}).find("--max-pixels"), std::string::npos);
}

}  // namespace
}  // namespace host
