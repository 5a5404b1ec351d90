// JPEG files of every kind, whole and damaged.
#include <cstdlib>

#include "host/images/JpegLibrary.h"
#include "tests/host/images/ImageTestFiles.h"

namespace host {
namespace {

// Four corners of different colours, large enough to survive lossy coding: red, green, blue and
// white, from the top left in reading order.
TestImage Corners() {
    TestImage image{48, 32, PixelLayout::Rgb, {}};
    for (std::int32_t y = 0; y < image.height; ++y)
        for (std::int32_t x = 0; x < image.width; ++x) {
            const bool right = x >= 24, bottom = y >= 16;
            const bool white = right && bottom;
            for (bool lit : {!right && !bottom, right && !bottom, !right && bottom})
                image.pixels.push_back(lit || white ? 255 : 0);
        }
    return image;
}

// "R", "G", "B" or "W" for a pixel.
char ColorAt(const TestImage& image, std::int32_t x, std::int32_t y) {
    const bool lit[] = {image.At(x, y, 0) > 128, image.At(x, y, 1) > 128, image.At(x, y, 2) > 128};
    if (lit[0] && lit[1] && lit[2]) return 'W';
    return lit[0] ? 'R' : lit[1] ? 'G' : lit[2] ? 'B' : '.';
}

std::string CornersOf(const TestImage& image) {
    const std::int32_t right = image.width - 5, bottom = image.height - 5;
    return {ColorAt(image, 4, 4), ColorAt(image, right, 4), ColorAt(image, 4, bottom), ColorAt(image, right, bottom)};
}

// The file with an Exif segment that states an orientation, in either byte order.
std::string WithOrientation(std::string jpeg, char orientation, bool bigEndian) {
    std::string tiff = bigEndian ? std::string("MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0", 19) + orientation
                                 : std::string("II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 18) + orientation;
    tiff += std::string(26 + 8 - tiff.size(), '\0');
    const std::string body = std::string("Exif\0\0", 6) + tiff;
    const std::size_t length = body.size() + 2;
    jpeg.insert(2, std::string("\xff\xe1") + char(length >> 8) + char(length & 255) + body);
    return jpeg;
}

// The file with an XMP segment that states an orientation.
std::string WithXmp(std::string jpeg, char orientation) {
    const std::string body =
        std::string("http://ns.adobe.com/xap/1.0/\0<rdf:Description tiff:Orientation=\"", 64) + orientation + "\"/>";
    return jpeg.insert(2, std::string("\xff\xe1\0", 3) + char(body.size() + 2) + body);
}

// A JPEG file written by the library itself, with settings of the caller's.
void WriteJpeg(const std::string& path, const TestImage& image, J_COLOR_SPACE colors, bool progressive,
               const std::function<void(jpeg_compress_struct&)>& adjust = {}) {
    jpeg_compress_struct jpeg{};
    jpeg_error_mgr errors{};
    jpeg.err = jpeg_std_error(&errors);
    jpeg_create_compress(&jpeg);
    std::FILE* stream = std::fopen(path.c_str(), "wb");
    jpeg_stdio_dest(&jpeg, stream);
    jpeg.image_width = static_cast<JDIMENSION>(image.width);
    jpeg.image_height = static_cast<JDIMENSION>(image.height);
    jpeg.input_components = BytesPerPixel(image.layout);
    jpeg.in_color_space = colors;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, 100, TRUE);
    if (adjust) adjust(jpeg);
    if (progressive) jpeg_simple_progression(&jpeg);
    jpeg_start_compress(&jpeg, TRUE);
    for (std::int32_t y = 0; y < image.height; ++y) {
        JSAMPROW row = const_cast<std::uint8_t*>(image.Row(y));
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    std::fclose(stream);
}

TEST(JpegFiles, OrientationInXmpIsAppliedWhereExifSaysNone) {
    TemporaryDirectory directory;
    const std::string path = directory.Path("a.jpg");
    WriteImage(path, MakeTestImage(16, 8, PixelLayout::Gray));
    const std::string plain = ReadBytes(path);
    const auto width = [&](const std::string& bytes) {
        WriteBytes(path, bytes);
        return ReadImage(path).width;
    };
    EXPECT_EQ(width(WithXmp(plain, '6')), 8);
    EXPECT_EQ(width(WithXmp(plain, '0')), 16);
    EXPECT_EQ(width(WithXmp(WithOrientation(plain, 1, true), '6')), 16);
    EXPECT_EQ(width(WithOrientation(WithXmp(plain, '1'), 6, false)), 8);
}

TEST(JpegFiles, ComeBackNearly) {
    TemporaryDirectory directory;
    for (PixelLayout layout : {PixelLayout::Gray, PixelLayout::Rgb}) {
        TestImage image{64, 48, layout, {}};
        for (std::size_t i = 0; i < image.RowBytes() * 48; ++i)
            image.pixels.push_back(static_cast<std::uint8_t>(i % image.RowBytes() / 2 + i / image.RowBytes()));
        WriteImage(directory.Path("a.jpg"), image, {{}, 95});
        const TestImage back = ReadImage(directory.Path("a.jpg"));
        ASSERT_EQ(back.layout, layout);
        ASSERT_EQ(back.pixels.size(), image.pixels.size());
        double sum = 0;
        for (std::size_t i = 0; i < back.pixels.size(); ++i) sum += std::abs(back.pixels[i] - image.pixels[i]);
        EXPECT_LT(sum / static_cast<double>(back.pixels.size()), 3.0);
    }
}

TEST(JpegFiles, QualityDecidesTheSize) {
    TemporaryDirectory directory;
    const TestImage image = MakeTestImage(64, 64, PixelLayout::Rgb);
    WriteImage(directory.Path("good.jpg"), image, {{}, 95});
    WriteImage(directory.Path("usual.jpg"), image);
    WriteImage(directory.Path("poor.jpeg"), image, {{}, 10});
    EXPECT_GT(ReadBytes(directory.Path("good.jpg")).size(), ReadBytes(directory.Path("usual.jpg")).size());
    EXPECT_GT(ReadBytes(directory.Path("usual.jpg")).size(), 2 * ReadBytes(directory.Path("poor.jpeg")).size());
}

TEST(JpegFiles, AlphaIsDropped) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("a.jpg"), MakeTestImage(16, 16, PixelLayout::Rgba));
    EXPECT_EQ(ReadImage(directory.Path("a.jpg")).layout, PixelLayout::Rgb);
}

TEST(JpegFiles, EveryOrientationIsTurnedUpright) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("plain.jpg"), Corners());
    const std::string plain = ReadBytes(directory.Path("plain.jpg"));
    // What the corners R G / B W become when the stated orientation is undone.
    const char* expected[] = {"RGBW", "GRWB", "WBGR", "BWRG", "RBGW", "BRWG", "WGBR", "GWRB"};
    for (int orientation = 1; orientation <= 8; ++orientation)
        for (bool bigEndian : {false, true}) {
            WriteBytes(directory.Path("a.jpg"), WithOrientation(plain, static_cast<char>(orientation), bigEndian));
            const TestImage image = ReadImage(directory.Path("a.jpg"));
            EXPECT_EQ(CornersOf(image), expected[orientation - 1]) << orientation << bigEndian;
            EXPECT_EQ(image.width, orientation >= 5 ? 32 : 48);
        }
}

TEST(JpegFiles, OrientationCanBeLeftAlone) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("a.jpg"), Corners());
    WriteBytes(directory.Path("a.jpg"), WithOrientation(ReadBytes(directory.Path("a.jpg")), 6, true));
    ImageReadSettings settings;
    settings.applyOrientation = false;
    EXPECT_EQ(CornersOf(ReadImage(directory.Path("a.jpg"), settings)), "RGBW");
    EXPECT_EQ(ImageReader(directory.Path("a.jpg"), settings).Info().orientation, 6);
}

TEST(JpegFiles, SenselessOrientationIsUpright) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("a.jpg"), Corners());
    for (char orientation : {0, 9, 127}) {
        WriteBytes(directory.Path("b.jpg"), WithOrientation(ReadBytes(directory.Path("a.jpg")), orientation, false));
        EXPECT_EQ(CornersOf(ReadImage(directory.Path("b.jpg"))), "RGBW");
    }
}

TEST(JpegFiles, InksBecomeColours) {
    TemporaryDirectory directory;
    // Cyan, no ink, half black, magenta and yellow; as they are, and inverted as the marker says.
    const std::uint8_t patches[4][4] = {{255, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 127}, {0, 255, 255, 0}};
    const int expected[4][3] = {{0, 255, 255}, {255, 255, 255}, {128, 128, 128}, {255, 0, 0}};
    for (bool marked : {false, true})
        for (J_COLOR_SPACE coding : {JCS_CMYK, JCS_YCCK}) {
            if (coding == JCS_YCCK && !marked) continue;  // only the marker tells it from the other
            TestImage inks{32, 8, PixelLayout::Rgba, {}};
            for (int i = 0; i < 32 * 8 * 4; ++i)
                inks.pixels.push_back(patches[i / 4 % 32 / 8][i % 4] ^ static_cast<std::uint8_t>(marked ? 255 : 0));
            WriteJpeg(directory.Path("a.jpg"), inks, JCS_CMYK, false, [&](jpeg_compress_struct& jpeg) {
                jpeg_set_colorspace(&jpeg, coding);
                jpeg.write_Adobe_marker = marked;
            });
            const TestImage image = ReadImage(directory.Path("a.jpg"));
            ASSERT_EQ(image.layout, PixelLayout::Rgb);
            for (int patch = 0; patch < 4; ++patch)
                for (int channel = 0; channel < 3; ++channel)
                    EXPECT_NEAR(image.At(patch * 8 + 4, 4, channel), expected[patch][channel], 3)
                        << marked << coding << patch << channel;
        }
}

TEST(JpegFiles, ProgressiveReadsLikeAnyOther) {
    TemporaryDirectory directory;
    WriteJpeg(directory.Path("a.jpg"), Corners(), JCS_RGB, true);
    EXPECT_EQ(CornersOf(ReadImage(directory.Path("a.jpg"))), "RGBW");
}

TEST(JpegFiles, CutShortIsAnError) {
    TemporaryDirectory directory;
    for (bool progressive : {false, true}) {
        WriteJpeg(directory.Path("whole.jpg"), MakeTestImage(64, 64, PixelLayout::Rgb), JCS_RGB, progressive);
        const std::string whole = ReadBytes(directory.Path("whole.jpg"));
        const std::string path = directory.Path("cut.jpg");
        for (std::size_t length = 1; length + 2 < whole.size(); length += 127) {
            WriteBytes(path, whole.substr(0, length));
            EXPECT_EQ(ReadFailure(path).find(path), 0u) << length << " of " << whole.size();
        }
    }
}

TEST(JpegFiles, AMissingEndMarkerAloneIsForgiven) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("a.jpg"), Corners());
    const std::string whole = ReadBytes(directory.Path("a.jpg"));
    WriteBytes(directory.Path("a.jpg"), whole.substr(0, whole.size() - 2));
    EXPECT_EQ(CornersOf(ReadImage(directory.Path("a.jpg"))), "RGBW");
}

TEST(JpegFiles, ThousandsOfScansAreRefused) {
    TemporaryDirectory directory;
    WriteJpeg(directory.Path("a.jpg"), Corners(), JCS_RGB, true);
    std::string bytes = ReadBytes(directory.Path("a.jpg"));
    const std::size_t last = bytes.rfind("\xff\xda");
    const std::string scan = bytes.substr(last, bytes.size() - 2 - last);
    for (int i = 0; i < 5000; ++i) bytes.insert(last, scan);
    WriteBytes(directory.Path("b.jpg"), bytes);
    EXPECT_EQ(ReadFailure(directory.Path("b.jpg")),
              directory.Path("b.jpg") + ": is a damaged JPEG file (too many scans)");
}

// Arithmetic coding goes on with zeroes where its data end, and says nothing.
TEST(JpegFiles, ArithmeticCodingCutShortIsAnError) {
    TemporaryDirectory directory;
    for (bool progressive : {false, true}) {
        WriteJpeg(directory.Path("a.jpg"), MakeTestImage(9, 9, PixelLayout::Rgb), JCS_RGB, progressive,
                  [](jpeg_compress_struct& jpeg) { jpeg.arith_code = TRUE; });
        EXPECT_EQ(ReadFailure(directory.Path("a.jpg")), "");
        const std::string whole = ReadBytes(directory.Path("a.jpg"));
        for (std::size_t length = 3; length < whole.size(); ++length)
            EXPECT_THROW(ReadCut(whole, length), ImageError) << length;
    }
}

TEST(JpegFiles, RandomDamageNeverCrashes) {
    TemporaryDirectory directory;
    WriteJpeg(directory.Path("whole.jpg"), MakeTestImage(32, 32, PixelLayout::Rgb), JCS_RGB, true);
    const std::string whole = ReadBytes(directory.Path("whole.jpg"));
    std::srand(1);
    for (int round = 0; round < 500; ++round) {
        std::string damaged = whole;
        for (int i = 0; i < 3; ++i)
            damaged[static_cast<std::size_t>(std::rand()) % damaged.size()] = static_cast<char>(std::rand());
        ImageReadSettings settings;
        settings.pixelLimit = 1000000;
        try {
            ImageReader reader(damaged.data(), damaged.size(), "damaged.jpg", settings);
            ReadAll(reader, PixelLayout::Rgba);
        } catch (const ImageError& error) {
            EXPECT_EQ(std::string(error.what()).find("damaged.jpg: "), 0u);
        }
    }
}

TEST(JpegFiles, SidesThatTheFormatCantHoldAreRefused) {
    TemporaryDirectory directory;
    EXPECT_THROW(ImageWriter(directory.Path("a.jpg"), 65501, 1, PixelLayout::Gray), ImageError);
    EXPECT_EQ(directory.FileCount(), 0u);
}

}  // namespace
}  // namespace host
