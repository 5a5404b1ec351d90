// WebP files, still and moving, whole and damaged.
#include <optional>

#include "tests/host/images/ImageTestFiles.h"

namespace host {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(WebPFiles, KeepEveryByteWithoutAQuality) {
    TemporaryDirectory directory;
    for (PixelLayout layout : {PixelLayout::Rgb, PixelLayout::Rgba}) {
        const TestImage image = MakeTestImage(37, 21, layout);
        WriteImage(directory.Path("a.webp"), image);
        EXPECT_EQ(ReadImage(directory.Path("a.webp")), image);
    }
}

TEST(WebPFiles, AQualityMakesThemSmallerAndNearlyTheSame) {
    TemporaryDirectory directory;
    TestImage image{64, 64, PixelLayout::Rgb, {}};
    for (int i = 0; i < 64 * 64 * 3; ++i) image.pixels.push_back(static_cast<std::uint8_t>(i / 3 % 64 * 3 + i / 192));
    WriteImage(directory.Path("a.webp"), image);
    WriteImage(directory.Path("b.webp"), image, {{}, 20});
    WriteImage(directory.Path("c.webp"), image, {{}, 95});
    EXPECT_LT(ReadBytes(directory.Path("b.webp")).size(), ReadBytes(directory.Path("c.webp")).size());
    const TestImage back = ReadImage(directory.Path("c.webp"));
    for (int y = 0; y < 64; y += 7) EXPECT_NEAR(back.At(32, y, 1), image.At(32, y, 1), 12);
}

TEST(WebPFiles, GraysBecomeColours) {
    TemporaryDirectory directory;
    WriteImage(directory.Path("a.webp"), {1, 1, PixelLayout::Gray, {77}});
    EXPECT_EQ(ReadImage(directory.Path("a.webp")).pixels, (Bytes{77, 77, 77}));
}

TEST(WebPFiles, DamageIsSurvivedAndCutsAreErrors) {
    TemporaryDirectory directory;
    for (std::optional<std::int32_t> quality : {std::optional<std::int32_t>{}, std::optional<std::int32_t>{50}}) {
        WriteImage(directory.Path("a.webp"), MakeTestImage(40, 40, PixelLayout::Rgba), {{}, quality});
        const std::string whole = ReadBytes(directory.Path("a.webp"));
        for (std::size_t length = 12; length + 8 < whole.size(); length += 61) {
            WriteBytes(directory.Path("cut.webp"), whole.substr(0, length));
            EXPECT_NE(ReadFailure(directory.Path("cut.webp")), "") << length;
        }
        ExpectSurvivesDamage(whole, "damaged.webp");
    }
}

TEST(WebPFiles, SidesThatTheFormatCantHoldAreRefused) {
    TemporaryDirectory directory;
    EXPECT_THROW(ImageWriter(directory.Path("a.webp"), 16384, 1, PixelLayout::Rgb), ImageError);
}

// A chunk of a WebP file.
std::string Chunk(const std::string& name, const std::string& body) {
    std::string chunk = name;
    for (int i = 0; i < 4; ++i) chunk += static_cast<char>(body.size() >> 8 * i);
    return chunk + body + std::string(body.size() % 2, '\0');
}

// The chunk of the pixels in a file of this host's.
std::string PixelChunk(const TemporaryDirectory& directory, const TestImage& image) {
    WriteImage(directory.Path("part.webp"), image);
    return ReadBytes(directory.Path("part.webp")).substr(12);
}

TEST(WebPFiles, EveryOrientationIsTurnedUpright) {
    TemporaryDirectory directory;
    const TestImage image = MakeTestImage(3, 2, PixelLayout::Rgb);
    const std::string pixels = PixelChunk(directory, image);
    for (unsigned orientation = 0; orientation <= 9; ++orientation) {
        const std::string exif = std::string("II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 18) +
                                 Little(orientation, 4) + std::string(4, '\0');
        WriteBytes(directory.Path("a.webp"),
                   Chunk("RIFF", "WEBP" + Chunk("VP8X", Little(0x08, 4) + Little(2, 3) + Little(1, 3)) + pixels +
                                     Chunk("EXIF", exif)));
        const TestImage upright = ReadImage(directory.Path("a.webp"));
        // Where the stored top left pixel comes to lie.
        const bool right = orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
        const bool bottom = orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
        ASSERT_EQ(upright.width, orientation >= 5 && orientation <= 8 ? 2 : 3);
        for (int channel = 0; channel < 3; ++channel)
            EXPECT_EQ(upright.At(right ? upright.width - 1 : 0, bottom ? upright.height - 1 : 0, channel),
                      image.At(0, 0, channel))
                << orientation;
        EXPECT_EQ(ReadImage(directory.Path("a.webp"), {0, false}), image);
    }
}

TEST(WebPFiles, OrientationInXmpIsApplied) {
    TemporaryDirectory directory;
    const std::string pixels = PixelChunk(directory, MakeTestImage(3, 2, PixelLayout::Rgb));
    const std::string head = Chunk("VP8X", Little(0x04, 4) + Little(2, 3) + Little(1, 3));
    WriteBytes(directory.Path("a.webp"),
               Chunk("RIFF", "WEBP" + head + pixels + Chunk("XMP ", "<tiff:Orientation>8</tiff:Orientation>")));
    EXPECT_EQ(ReadImage(directory.Path("a.webp")).width, 2);
}

TEST(WebPFiles, AnAnimationGivesItsFirstPicture) {
    TemporaryDirectory directory;
    TestImage image = MakeTestImage(4, 2, PixelLayout::Rgba);
    for (std::size_t i = 3; i < image.pixels.size(); i += 4) image.pixels[i] = 255;
    const std::string first = PixelChunk(directory, image);
    const std::string second = PixelChunk(directory, MakeTestImage(8, 6, PixelLayout::Rgba));
    // Place and size in halves and less one, 100 ms, no blending.
    const auto frame = [](unsigned x, unsigned y, unsigned width, unsigned height, const std::string& pixels) {
        return Chunk("ANMF", Little(x / 2, 3) + Little(y / 2, 3) + Little(width - 1, 3) + Little(height - 1, 3) +
                                 Little(100, 3) + Little(2, 1) + pixels);
    };
    WriteBytes(directory.Path("a.webp"),
               Chunk("RIFF", "WEBP" + Chunk("VP8X", Little(0x12, 4) + Little(7, 3) + Little(5, 3)) +
                                 Chunk("ANIM", Little(0xff00ff00, 4) + Little(0, 2)) + frame(2, 4, 4, 2, first) +
                                 frame(0, 0, 8, 6, second)));
    const TestImage canvas = ReadImage(directory.Path("a.webp"));
    ASSERT_EQ(canvas.width, 8);
    ASSERT_EQ(canvas.height, 6);
    ASSERT_EQ(canvas.layout, PixelLayout::Rgba);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x) {
            const bool inside = x >= 2 && x < 6 && y >= 4;
            EXPECT_EQ(canvas.At(x, y, 3), inside ? 255 : 0) << x << " " << y;
            if (!inside) continue;
            EXPECT_EQ(canvas.At(x, y, 1), image.At(x - 2, y - 4, 1)) << x << " " << y;
        }
}

}  // namespace
}  // namespace host
