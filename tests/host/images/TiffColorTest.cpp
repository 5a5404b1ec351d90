// Colours and alpha of TIFF files, in all the ways that files state them.
#include <cmath>
#include <cstring>

#include "tests/host/images/TiffTestFiles.h"

namespace host {
namespace {

// Samples of 16 bits or of reals as they lie in a file.
template <class Sample>
Bytes Raw(const std::vector<Sample>& samples) {
    Bytes bytes(samples.size() * sizeof(Sample));
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

class TiffColors : public testing::Test {
  protected:
    // One row of pixels.
    TestImage Read(int width, const TiffKind& kind, const Bytes& row) {
        WriteTiff(directory.Path("a.tif"), width, 1, kind, {row});
        return ReadImage(directory.Path("a.tif"));
    }

    TemporaryDirectory directory;
};

void ExpectNear(const Bytes& pixels, const std::vector<int>& expected, int slack) {
    ASSERT_EQ(pixels.size(), expected.size());
    for (std::size_t i = 0; i < pixels.size(); ++i) EXPECT_NEAR(pixels[i], expected[i], slack) << "byte " << i;
}

// --- L*a*b* ----------------------------------------------------------------------------------

TEST_F(TiffColors, GraysOfLabAreGrays) {
    // L* of 0, 20, 50.2, 80 and 100; sRGB of the same luminance.
    const Bytes grays{0, 0, 0, 48, 48, 48, 119, 119, 119, 198, 198, 198, 255, 255, 255};
    const TiffKind signedHues{.samples = 3, .photometric = PHOTOMETRIC_CIELAB};
    EXPECT_EQ(Read(5, signedHues, {0, 0, 0, 51, 0, 0, 128, 0, 0, 204, 0, 0, 255, 0, 0}).pixels, grays);
    const TiffKind shiftedHues{.samples = 3, .photometric = PHOTOMETRIC_ICCLAB};
    EXPECT_EQ(Read(5, shiftedHues, {0, 128, 128, 51, 128, 128, 128, 128, 128, 204, 128, 128, 255, 128, 128}).pixels,
              grays);
    for (int value = 0; value < 256; ++value) {
        const Bytes pixel = Read(1, signedHues, {static_cast<std::uint8_t>(value), 0, 0}).pixels;
        EXPECT_TRUE(pixel[0] == pixel[1] && pixel[1] == pixel[2]) << value;
    }
}

// Red, green, blue and yellow of the screen, by their L*a*b* under D50.
const std::vector<double> kPrimaries{54.291, 80.805, 69.891,   87.818, -79.271, 80.991,
                                     29.568, 68.287, -112.030, 97.607, -15.750, 93.395};
const std::vector<int> kPrimaryColors{255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 0};

TEST_F(TiffColors, PrimariesOfLabAreThoseOfTheScreen) {
    Bytes small, shifted;
    std::vector<std::uint16_t> wide, wideShifted;
    for (std::size_t i = 0; i < kPrimaries.size(); ++i) {
        const double value = kPrimaries[i];
        small.push_back(static_cast<std::uint8_t>(std::lround(i % 3 == 0 ? value * 2.55 : value)));
        shifted.push_back(static_cast<std::uint8_t>(std::lround(i % 3 == 0 ? value * 2.55 : value + 128)));
        wide.push_back(static_cast<std::uint16_t>(std::lround(value * (i % 3 == 0 ? 655.35 : 256))));
        wideShifted.push_back(static_cast<std::uint16_t>(i % 3 == 0 ? value * 652.8 + 0.5 : (value + 128) * 256 + 0.5));
    }
    const TiffKind lab{.samples = 3, .photometric = PHOTOMETRIC_CIELAB},
        icc{.samples = 3, .photometric = PHOTOMETRIC_ICCLAB};
    ExpectNear(Read(4, lab, small).pixels, kPrimaryColors, 30);  // a step of b* is some of blue
    ExpectNear(Read(4, icc, shifted).pixels, kPrimaryColors, 30);
    TiffKind deep = lab;
    deep.bits = 16;
    ExpectNear(Read(4, deep, Raw(wide)).pixels, kPrimaryColors, 4);
    deep.photometric = PHOTOMETRIC_ICCLAB;
    ExpectNear(Read(4, deep, Raw(wideShifted)).pixels, kPrimaryColors, 4);
}

TEST_F(TiffColors, LabKeepsAlpha) {
    const TiffKind straight{.samples = 4, .photometric = PHOTOMETRIC_CIELAB, .extra = EXTRASAMPLE_UNASSALPHA};
    EXPECT_EQ(Read(2, straight, {128, 0, 0, 77, 255, 0, 0, 0}).pixels, (Bytes{119, 119, 119, 77, 255, 255, 255, 0}));
    TiffKind multiplied = straight;
    multiplied.extra = EXTRASAMPLE_ASSOCALPHA;
    EXPECT_EQ(Read(2, multiplied, {64, 0, 0, 128, 9, 9, 9, 0}).pixels, (Bytes{119, 119, 119, 128, 0, 0, 0, 0}));
}

// --- Alpha that multiplied the colours -------------------------------------------------------

TEST_F(TiffColors, DeepColoursThatAlphaMultipliedKeepTheirPrecision) {
    const TiffKind kind{.bits = 16, .samples = 4, .photometric = PHOTOMETRIC_RGB, .extra = EXTRASAMPLE_ASSOCALPHA};
    // A half, a quarter and all of alphas that are 1, 0 and 128 of 255.
    EXPECT_EQ(
        Read(3, kind, Raw<std::uint16_t>({150, 75, 300, 300, 50, 25, 100, 100, 16448, 8224, 32896, 32896})).pixels,
        (Bytes{128, 64, 255, 1, 128, 64, 255, 0, 128, 64, 255, 128}));
    const TiffKind gray{.bits = 16, .samples = 2, .extra = EXTRASAMPLE_ASSOCALPHA};
    EXPECT_EQ(Read(2, gray, Raw<std::uint16_t>({150, 300, 7, 0})).pixels, (Bytes{128, 1, 0, 0}));
    const TiffKind reals{.bits = 32, .samples = 2, .extra = EXTRASAMPLE_ASSOCALPHA, .format = SAMPLEFORMAT_IEEEFP};
    EXPECT_EQ(Read(2, reals, Raw<float>({0.005f, 0.01f, 0.25f, 0.5f})).pixels, (Bytes{128, 3, 128, 128}));
}

// Whatever the alpha, a straight colour comes back within half a step.
TEST_F(TiffColors, EveryDeepAlphaGivesTheColourBack) {
    const TiffKind kind{.bits = 16, .samples = 2, .extra = EXTRASAMPLE_ASSOCALPHA};
    std::vector<std::uint16_t> samples;
    std::vector<int> expected;
    for (int alpha = 511; alpha < 65536; alpha += 97) {
        const int gray = alpha * 31 % 256;
        samples.push_back(static_cast<std::uint16_t>(std::lround(gray / 255.0 * alpha)));
        samples.push_back(static_cast<std::uint16_t>(alpha));
        expected.push_back(gray);
    }
    const TestImage image = Read(static_cast<int>(expected.size()), kind, Raw(samples));
    for (std::size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(image.pixels[2 * i], expected[i]) << samples[2 * i + 1];
}

// --- Samples beyond the colours --------------------------------------------------------------

TEST_F(TiffColors, AFourthSampleWithoutANoteIsAlpha) {
    for (const int tile : {0, 16})
        for (const int planar : {PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE}) {
            const TestImage image = MakeTestImage(20, 18, PixelLayout::Rgba);
            const TiffKind kind{.samples = 4, .photometric = PHOTOMETRIC_RGB, .planar = planar, .tile = tile};
            WriteTiff(directory.Path("a.tif"), 20, 18, kind,
                      planar == PLANARCONFIG_CONTIG ? std::vector<Bytes>{image.pixels} : PlanesOf(image));
            EXPECT_EQ(ReadImage(directory.Path("a.tif")), image) << tile << " " << planar;
        }
    EXPECT_EQ(Read(2, {.samples = 2}, {1, 2, 3, 4}), (TestImage{2, 1, PixelLayout::GrayAlpha, {1, 2, 3, 4}}));
}

TEST_F(TiffColors, MoreSamplesWithoutANoteAreNoAlpha) {
    EXPECT_EQ(Read(1, {.samples = 5, .photometric = PHOTOMETRIC_RGB}, {1, 2, 3, 4, 5}).pixels, (Bytes{1, 2, 3}));
    EXPECT_EQ(Read(1, {.samples = 3}, {1, 2, 3}).pixels, (Bytes{1}));
}

TEST_F(TiffColors, InksKeepAlpha) {
    TiffKind kind{.samples = 5, .photometric = PHOTOMETRIC_SEPARATED, .extra = EXTRASAMPLE_UNASSALPHA};
    const Bytes pixels{255, 0, 0, 0, 77, 0, 0, 0, 255, 255, 0, 100, 200, 51, 0};
    const Bytes expected{0, 255, 255, 77, 0, 0, 0, 255, 204, 124, 44, 0};
    EXPECT_EQ(Read(3, kind, pixels).pixels, expected);
    std::vector<std::uint16_t> wide;
    for (const std::uint8_t value : pixels) wide.push_back(static_cast<std::uint16_t>(value * 257));
    TiffKind deep = kind;
    deep.bits = 16;
    EXPECT_EQ(Read(3, deep, Raw(wide)).pixels, expected);
    kind.extra = -1;  // one sample more than the inks
    EXPECT_EQ(Read(3, kind, pixels).pixels, expected);
    kind.extra = EXTRASAMPLE_UNSPECIFIED;
    EXPECT_EQ(Read(1, kind, {255, 0, 0, 0, 77}).pixels, (Bytes{0, 255, 255}));
    // Half of the ink under half of the alpha is all of it.
    kind.extra = EXTRASAMPLE_ASSOCALPHA;
    EXPECT_EQ(Read(2, kind, {128, 0, 0, 0, 128, 0, 0, 0, 0, 0}).pixels, (Bytes{0, 255, 255, 128, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace host
