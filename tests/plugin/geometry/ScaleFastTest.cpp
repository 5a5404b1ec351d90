// Picked pixels beside a model, and what is refused.
#include <limits>

#include "tests/support/Interpose.h"
#include "tests/support/Scene.h"
#include "tests/support/Yields.h"

namespace {

using namespace support;

constexpr int kRGB = 1, kRGBA = 2, kG = 11, kGA = 12, kScaling = 14;
constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();

// --- Plain reference --------------------------------------------------------------------------

void ScalePixel(const ModelPicture& source, const std::uint8_t* from, const ModelPicture& dest, std::uint8_t* to) {
    const int red = source.isRGB ? from[source.red] : from[source.gray];
    const int green = source.isRGB ? from[source.green] : from[source.gray];
    const int blue = source.isRGB ? from[source.blue] : from[source.gray];
    const int luma = source.isRGB ? (77 * red + 151 * green + 28 * blue) >> 8 : red;
    const std::uint8_t alpha = source.hasAlpha ? from[source.alpha] : 0;
    if (dest.isRGB) {
        to[dest.red] = static_cast<std::uint8_t>(red);
        to[dest.green] = static_cast<std::uint8_t>(green);
        to[dest.blue] = static_cast<std::uint8_t>(blue);
    } else {
        to[dest.gray] = static_cast<std::uint8_t>(luma);
    }
    const bool copiesAlpha = source.hasAlpha && dest.hasAlpha && (source.isRGB || dest.isGray);
    if (copiesAlpha) to[dest.alpha] = alpha;
}

bool ReferenceScale(const ModelPicture& dest, const ModelPicture& source, int width, int height) {
    width = std::min(width, dest.width);
    height = std::min(height, dest.height);
    if (width <= 0 || height <= 0 || source.height == 0) return false;
    if (!(source.isRGB || source.isGray) || !(dest.isRGB || dest.isGray)) return false;
    const double xstep = static_cast<double>(source.width) / width, ystep = static_cast<double>(source.height) / height;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int sx = static_cast<int>(xstep * x), sy = static_cast<int>(ystep * y);
            if (source.Row(sy) && dest.Row(y)) ScalePixel(source, source.Pixel(sx, sy), dest, dest.Pixel(x, y));
        }
    return true;
}

class ScaleFastEverywhere : public PluginTest, public ::testing::WithParamInterface<int> {};

TEST_P(ScaleFastEverywhere, PicksAndConvertsFromEveryFormat) {
    Scene scene(static_cast<std::uint64_t>(GetParam()));
    Random& random = scene.random();
    for (int format = 1; format < kFormatCount; ++format)
        for (int round = 0; round < 8; ++round) {
            scene.Clear();
            const int large = random.Below(10) == 0 ? 700 : 50;
            const Twin source =
                scene.Kind(random.Below(Scene::kKinds), random.Between(1, large), random.Between(1, 9), format);
            const Twin dest =
                scene.Kind(random.Below(Scene::kKinds), random.Between(1, large), random.Between(1, 9), GetParam());
            const int width = random.Between(1, large + 3), height = random.Between(1, 12);
            EXPECT_EQ(CallBool(dest.live, "ScaleFast", source.live, width, height),
                      ReferenceScale(dest.model, source.model, width, height));
            ASSERT_TRUE(scene.Same()) << "from " << kFormats[format].name << " to " << width << " x " << height;
        }
}

TEST_P(ScaleFastEverywhere, ReadsPixelsWhenTheirTurnComesWithinOnePicture) {
    Scene scene(static_cast<std::uint64_t>(GetParam()) + 50);
    Random& random = scene.random();
    for (int round = 0; round < 40; ++round) {
        scene.Clear();
        const Twin root = scene.Memory(random.Between(2, 80), random.Between(2, 8), GetParam());
        const auto view = [&] {
            switch (random.Below(4)) {
                case 0:
                    return scene.View(root, "MirroredView");
                case 1:
                    return scene.View(root, "ClipImage", 1, 1, 60, 5);
                default:
                    return root;
            }
        };
        const Twin source = view(), dest = view();
        const int width = random.Between(1, 80), height = random.Between(1, 8);
        CallBool(dest.live, "ScaleFast", source.live, width, height);
        ReferenceScale(dest.model, source.model, width, height);
        ASSERT_TRUE(scene.Same()) << "round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, ScaleFastEverywhere, ::testing::Range(1, kFormatCount), CodeName);

class ScaleFast : public PluginTest {
  protected:
    Bytes Row(const Bytes& pixels, int width) {
        auto source = New("PictureTQX", static_cast<int>(pixels.size()), 1, kG);
        WritePixels(source, pixels);
        auto dest = New("PictureTQX", width, 1, kG);
        EXPECT_TRUE(CallBool(dest, "ScaleFast", source, width, 1));
        return ReadPixels(dest);
    }
};

TEST_F(ScaleFast, PicksThePixelAboveAndToTheLeft) {
    EXPECT_EQ(Row({1, 2, 3, 4}, 2), (Bytes{1, 3}));
    EXPECT_EQ(Row({0, 1, 2, 3, 4, 5, 6, 7, 8}, 6), (Bytes{0, 1, 3, 4, 6, 7}));
    EXPECT_EQ(Row({9}, 5), Bytes(5, 9));
    EXPECT_EQ(Row({1, 2}, 5), (Bytes{1, 1, 1, 2, 2}));
}

TEST_F(ScaleFast, CutsTheSizeToItsOwnAndLeavesTheRest) {
    Scene scene(1);
    const Twin source = scene.Memory(9, 7, kRGB), dest = scene.Memory(6, 5, kRGB);
    EXPECT_TRUE(CallBool(dest.live, "ScaleFast", source.live, kMost, kMost));
    ReferenceScale(dest.model, source.model, 6, 5);
    EXPECT_TRUE(scene.Same());
    EXPECT_TRUE(CallBool(dest.live, "ScaleFast", source.live, 2, 3));
    ReferenceScale(dest.model, source.model, 2, 3);
    EXPECT_TRUE(scene.Same());
}

TEST_F(ScaleFast, LeavesAlphaOfColorsScaledFromGrayWithAlpha) {
    auto source = New("PictureTQX", 1, 1, kGA);
    WritePixels(source, {50, 60});
    auto dest = New("PictureTQX", 1, 1, kRGBA);
    WritePixels(dest, {1, 2, 3, 4});
    EXPECT_TRUE(CallBool(dest, "ScaleFast", source, 1, 1));
    EXPECT_EQ(ReadPixels(dest), (Bytes{50, 50, 50, 4}));
}

// The weights add up to 256, and nothing is added before the division.
TEST_F(ScaleFast, WeighsColorsIntoGrayWithoutRounding) {
    auto source = New("PictureTQX", 258, 1, kRGB);
    Bytes pixels;
    for (int v = 0; v < 256; ++v) pixels.insert(pixels.end(), 3, static_cast<std::uint8_t>(v));
    pixels.insert(pixels.end(), {0, 1, 0, 0, 255, 0});
    WritePixels(source, pixels);
    Bytes expected(256);
    for (std::size_t v = 0; v < 256; ++v) expected[v] = static_cast<std::uint8_t>(v);
    expected.insert(expected.end(), {0, 150});
    auto dest = New("PictureTQX", 258, 1, kG);
    EXPECT_TRUE(CallBool(dest, "ScaleFast", source, 258, 1));
    EXPECT_EQ(ReadPixels(dest), expected);
}

// One pixel of every layout to every other, over a destination of 100s.
TEST_F(ScaleFast, ConvertsBetweenLayouts) {
    const struct {
        int from, to;
        Bytes source, expected;
    } cases[] = {
        {kRGB, 6, {10, 20, 30}, {30, 20, 10}},
        {kRGBA, kRGB, {10, 20, 30, 40}, {10, 20, 30}},
        {kRGB, kG, {255, 0, 0}, {76}},
        {kRGBA, kG, {0, 0, 255, 9}, {27}},
        {kG, kRGB, {10}, {10, 10, 10}},
        {kGA, kRGB, {10, 40}, {10, 10, 10}},
        {kG, kG, {10}, {10}},
        {kGA, kG, {10, 40}, {10}},
        {kRGB, kRGBA, {10, 20, 30}, {10, 20, 30, 100}},
        {kRGB, kGA, {0, 255, 0}, {150, 100}},
        {kG, kRGBA, {10}, {10, 10, 10, 100}},
        {kG, kGA, {10}, {10, 100}},
        {kRGBA, 9, {10, 20, 30, 40}, {40, 30, 20, 10}},
        {kRGBA, kGA, {255, 255, 255, 40}, {255, 40}},
        {kGA, kRGBA, {10, 40}, {10, 10, 10, 100}},
        {kGA, 13, {10, 40}, {40, 10}},
        {3, 5, {10, 20, 30, 77}, {100, 10, 20, 30}},
        {16, 20, {1, 2, 3}, {100, 100, 2, 100}},
    };
    for (const auto& c : cases) {
        auto source = New("PictureTQX", 1, 1, c.from), dest = New("PictureTQX", 1, 1, c.to);
        WritePixels(source, c.source);
        WritePixels(dest, Bytes(c.expected.size(), 100));
        EXPECT_TRUE(CallBool(dest, "ScaleFast", source, 1, 1));
        EXPECT_EQ(ReadPixels(dest), c.expected) << kFormats[c.from].name << " to " << kFormats[c.to].name;
    }
}

TEST_F(ScaleFast, SamplesWithTheStepOfTheCutSize) {
    auto source = New("PictureTQX", 9, 1, kG);
    WritePixels(source, {0, 1, 2, 3, 4, 5, 6, 7, 8});
    auto dest = New("PictureTQX", 6, 1, kG);
    EXPECT_TRUE(CallBool(dest, "ScaleFast", source, 9, 1));
    EXPECT_EQ(ReadPixels(dest), (Bytes{0, 1, 3, 4, 6, 7}));
    auto large = New("PictureTQX", 3, 3, kG), one = New("PictureTQX", 1, 1, kG);
    WritePixels(one, {9});
    EXPECT_TRUE(CallBool(large, "ScaleFast", one, 3, 3));
    EXPECT_EQ(ReadPixels(large), Bytes(9, 9));
}

// Wider than the columns that are kept from row to row.
TEST_F(ScaleFast, ScalesVeryWidePictures) {
    Scene scene(2);
    const Twin source = scene.Memory(7001, 2, kRGB), dest = scene.Memory(19001, 3, kRGBA);
    EXPECT_TRUE(CallBool(dest.live, "ScaleFast", source.live, 19001, 3));
    ReferenceScale(dest.model, source.model, 19001, 3);
    EXPECT_TRUE(scene.Same());
}

// So large that rows are written past the cache, each of the source's several times.
TEST_F(ScaleFast, RepeatsRowsOfLargePictures) {
    for (const int format : {kRGB, kRGBA}) {
        Scene scene(6);
        const Twin source = scene.Memory(111, 70, format), dest = scene.Memory(3001, 3800, format);
        EXPECT_TRUE(CallBool(dest.live, "ScaleFast", source.live, 3001, 3800));
        ReferenceScale(dest.model, source.model, 3001, 3800);
        EXPECT_TRUE(scene.Same());
    }
}

// Rows of one source row, between which a yield changes it.
TEST_F(ScaleFast, SeesWhatAYieldDidToTheRow) {
    FakeClock clock{100};
    clock.AdvancePerReading(10);  // late enough for a yield each time
    auto source = New("PictureTQX", 40, 1, kG), dest = New("PictureTQX", 40, 3, kG);
    Set(dest, "YieldTicks", Value(1));
    int yields = 0;
    const OnYield onYield([&] { WritePixels(source, Bytes(40, static_cast<std::uint8_t>(++yields))); });
    EXPECT_TRUE(CallBool(dest, "ScaleFast", source, 40, 3));
    const Bytes pixels = ReadPixels(dest);
    EXPECT_EQ(yields, 4);
    EXPECT_EQ((Bytes{pixels[0], pixels[40], pixels[80]}), (Bytes{1, 2, 3}));
}

TEST_F(ScaleFast, WorksOnMappedPictures) {
    Scene scene(3);
    const Twin source = scene.Mapped(30, 20, kRGB, ScratchPath("source")),
               dest = scene.Mapped(50, 9, kG, ScratchPath("dest"));
    EXPECT_TRUE(CallBool(dest.live, "ScaleFast", source.live, 50, 9));
    ReferenceScale(dest.model, source.model, 50, 9);
    EXPECT_TRUE(CallBool(source.live, "ScaleFast", source.live, 20, 30));
    ReferenceScale(source.model, source.model, 20, 30);
    EXPECT_TRUE(scene.Same());
}

TEST_F(ScaleFast, RefusesWhatItCannotScale) {
    Scene scene(4);
    const Twin dest = scene.Memory(4, 4, kRGB), source = scene.Memory(3, 3, kRGB);
    auto closed = New("PictureTQX", 3, 3, kRGB);
    Call(closed, "Close");
    EXPECT_FALSE(CallBool(dest.live, "ScaleFast", nullptr, 2, 2));
    EXPECT_FALSE(CallBool(dest.live, "ScaleFast", closed, 2, 2));
    EXPECT_FALSE(CallBool(closed, "ScaleFast", source.live, 2, 2));
    EXPECT_FALSE(CallBool(dest.live, "ScaleFast", New("PictureTQX", 3, 3, 0), 2, 2));
    EXPECT_FALSE(CallBool(dest.live, "ScaleFast", scene.Memory(3, 3, kScaling).live, 2, 2));
    EXPECT_FALSE(CallBool(scene.Memory(3, 3, kScaling).live, "ScaleFast", source.live, 2, 2));
    EXPECT_FALSE(CallBool(dest.live, "ScaleFast", New("PictureTQX", 3, 0, kRGB), 2, 2));
    for (const int size : {0, -1, kLeast}) {
        EXPECT_FALSE(CallBool(dest.live, "ScaleFast", source.live, size, 2));
        EXPECT_FALSE(CallBool(dest.live, "ScaleFast", source.live, 2, size));
    }
    EXPECT_TRUE(scene.Same());
}

TEST_F(ScaleFast, GivesTrueAndWritesNothingFromAPictureWithoutPixels) {
    Scene scene(5);
    const Twin dest = scene.Memory(4, 4, kRGB), root = scene.Memory(5, 5, kRGB);
    EXPECT_TRUE(CallBool(dest.live, "ScaleFast", New("PictureTQX", 0, 3, kRGB), 2, 2));
    EXPECT_TRUE(CallBool(dest.live, "ScaleFast", scene.View(root, "ClipImage", 9, 0, 2, 2).live, 2, 2));
    EXPECT_TRUE(CallBool(dest.live, "ScaleFast", scene.View(root, "ClipImage", 0, 9, 2, 2).live, 2, 2));
    EXPECT_TRUE(scene.Same());
}

void ScaleToSameSize(const Ref<Object>& destination, const Ref<Object>& source) {
    CallBool(destination, "ScaleFast", source, GetInt(source, "Width"), GetInt(source, "Height"));
}

TEST_F(ScaleFast, YieldsForBothFirstAndForItselfAfterEachRow) { ExpectYieldsForBothAndAfterEachRow(&ScaleToSameSize); }

TEST_F(ScaleFast, EndsWhenAYieldTakesEitherPicture) { ExpectEndWhenAYieldTakesEither(&ScaleToSameSize); }

}  // namespace
