// Copies beside a model of the cut, in every pair of layouts.
#include <limits>

#include "tests/plugin/ops/Rectangles.h"
#include "tests/support/Scene.h"
#include "tests/support/Yields.h"

namespace {

using namespace support;
using ops_test::RandomNumber;

constexpr int kRGB = 1, kRGBA = 2, kG = 11, kGA = 12, kScaling = 14;
constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();

// --- Plain reference --------------------------------------------------------------------------

struct Copy {
    std::int64_t dx, dy, dw, dh, sx, sy;
};

void ClipCopyAxis(std::int64_t& d, std::int64_t& size, std::int64_t& s, std::int64_t extent,
                  std::int64_t sourceExtent) {
    if (s < 0) {
        d = d + s;
        size = size + s;
        s = 0;
    }
    if (size < 0) {
        d = d + size;
        size = -size;
    }
    if (d < 0) {
        size = size + d;
        s = s - d;
        d = 0;
    }
    if (static_cast<std::uint64_t>(extent) <= static_cast<std::uint64_t>(d)) size = 0;
    if (static_cast<std::uint64_t>(extent) < static_cast<std::uint64_t>(d + size)) size = extent - d;
    if (sourceExtent < s + size) size = sourceExtent - s;
}

int GrayOf(const std::uint8_t* pixel, const ModelPicture& p) {
    return p.isRGB ? (77 * pixel[p.red] + 151 * pixel[p.green] + 28 * pixel[p.blue]) / 256 : pixel[p.gray];
}

void CopyPixel(const ModelPicture& source, const std::uint8_t* from, const ModelPicture& dest, std::uint8_t* to) {
    const int gray = GrayOf(from, source);
    const int red = source.isRGB ? from[source.red] : gray;
    const int green = source.isRGB ? from[source.green] : gray;
    const int blue = source.isRGB ? from[source.blue] : gray;
    const int alpha = source.hasAlpha ? from[source.alpha] : 0;
    if (dest.isGray) {
        to[dest.gray] = static_cast<std::uint8_t>(gray);
    } else {
        to[dest.red] = static_cast<std::uint8_t>(red);
        to[dest.green] = static_cast<std::uint8_t>(green);
        to[dest.blue] = static_cast<std::uint8_t>(blue);
    }
    if (source.hasAlpha && dest.hasAlpha) to[dest.alpha] = static_cast<std::uint8_t>(alpha);
}

void ReferenceCopy(const ModelPicture& dest, const ModelPicture& source, Copy c) {
    if (dest.width <= 0 || dest.height <= 0 || source.width <= 0 || source.height <= 0) return;
    if (!(dest.isGray || dest.isRGB) || !(source.isGray || source.isRGB)) return;
    ClipCopyAxis(c.dx, c.dw, c.sx, dest.width, source.width);
    ClipCopyAxis(c.dy, c.dh, c.sy, dest.height, source.height);
    for (std::int64_t j = 0; j < c.dh && c.dw > 0; ++j)
        for (std::int64_t i = 0; i < c.dw; ++i)
            if (source.Row(c.sy + j) && dest.Row(c.dy + j))
                CopyPixel(source, source.Pixel(c.sx + i, c.sy + j), dest, dest.Pixel(c.dx + i, c.dy + j));
}

void CopyBoth(const Twin& dest, const Twin& source, int dx, int dy, int dw, int dh, int sx, int sy) {
    Call(dest.live, "CopyPixels", source.live, dx, dy, dw, dh, sx, sy);
    ReferenceCopy(dest.model, source.model, {dx, dy, dw, dh, sx, sy});
}

// --- Every format, view and rectangle ---------------------------------------------------------

class CopyEverywhere : public PluginTest, public ::testing::WithParamInterface<int> {};

TEST_P(CopyEverywhere, ConvertsFromEveryFormat) {
    Scene scene(static_cast<std::uint64_t>(GetParam()));
    Random& random = scene.random();
    for (int format = 1; format < kFormatCount; ++format)
        for (int round = 0; round < 12; ++round) {
            scene.Clear();
            const Twin source =
                scene.Kind(random.Below(Scene::kKinds), random.Between(1, 80), random.Between(1, 5), format);
            const Twin dest =
                scene.Kind(random.Below(Scene::kKinds), random.Between(1, 80), random.Between(1, 5), GetParam());
            const bool near = random.Below(2) == 0;
            const auto number = [&] { return near ? random.Between(-2, 2) : RandomNumber(random); };
            const int dx = number(), dy = number(), sx = number(), sy = number();
            const int dw = near ? 70 : RandomNumber(random), dh = near ? 5 : RandomNumber(random);
            CopyBoth(dest, source, dx, dy, dw, dh, sx, sy);
            ASSERT_TRUE(scene.Same()) << "from " << kFormats[format].name << ": " << dx << ", " << dy << ", " << dw
                                      << ", " << dh << ", " << sx << ", " << sy;
        }
}

// Source and destination are the same picture, or views of one.
TEST_P(CopyEverywhere, ReadsWhatItHasWrittenWithinOnePicture) {
    Scene scene(static_cast<std::uint64_t>(GetParam()) + 50);
    Random& random = scene.random();
    const char* const channels[] = {"RedChannel",  "GreenChannel", "BlueChannel",
                                    "GrayChannel", "AlphaChannel", "RGBChannels"};
    for (int round = 0; round < 60; ++round) {
        scene.Clear();
        const Twin root = scene.Kind(round % Scene::kKinds, random.Between(20, 90), random.Between(2, 6), GetParam());
        const auto viewOf = [&](const Twin& twin) {
            const int choice = random.Below(9);
            const Twin view = choice < 6    ? scene.View(twin, channels[choice])
                              : choice == 6 ? scene.View(twin, "MirroredView")
                              : choice == 7 ? scene.View(twin, "ClipImage", random.Below(4), random.Below(2), 70, 4)
                                            : twin;
            return view.live ? view : twin;
        };
        const Twin source = viewOf(root), dest = viewOf(root);
        const int dx = random.Between(-3, 6), dy = random.Between(-1, 2), sx = random.Between(-1, 6),
                  sy = random.Below(2);
        CopyBoth(dest, source, dx, dy, 80, 6, sx, sy);
        ASSERT_TRUE(scene.Same()) << "round " << round << ": " << dx << ", " << dy << ", " << sx << ", " << sy;
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, CopyEverywhere, ::testing::Range(1, kFormatCount), CodeName);

class CopyPixels : public PluginTest {};

// One file seen through one window or two: the same results as in memory.
TEST_F(CopyPixels, KeepsThePixelOrderWithinOneMappedFile) {
    Scene scene(21);
    Random& random = scene.random();
    for (const int format : {kRGB, kRGBA, kG, kGA}) {
        const Twin root = scene.Mapped(90, 7, format, ScratchPath("pixels" + std::to_string(format)));
        const Twin views[] = {root, scene.View(root, "ClipImage", 3, 1, 80, 5), scene.View(root, "MirroredView"),
                              scene.View(root, "ClipImage", 0, 0, 90, 7)};
        for (const Twin& source : views)
            for (const Twin& dest : views)
                for (int round = 0; round < 4; ++round) {
                    const int dx = random.Between(0, 4), dy = random.Between(-1, 2), sx = random.Between(0, 4);
                    CopyBoth(dest, source, dx, dy, 80, 7, sx, random.Below(2));
                    ASSERT_TRUE(scene.Same());
                }
    }
}

TEST_F(CopyPixels, CopiesBetweenMemoryAndMappedPictures) {
    Scene scene(22);
    const Twin mapped = scene.Mapped(40, 7, kRGB, ScratchPath("pixels"));
    const Twin memory = scene.Memory(40, 7, kRGBA);
    CopyBoth(mapped, memory, 1, 2, 30, 4, 0, 1);
    CopyBoth(memory, mapped, 0, 0, 40, 7, 5, 1);
    EXPECT_TRUE(scene.Same());
}

// --- Forms and refusals -----------------------------------------------------------------------

TEST_F(CopyPixels, ShorterFormsStartAtTheCorner) {
    Scene scene(1);
    const Twin source = scene.Memory(9, 8, kRGB), five = scene.Memory(6, 5, kRGB), one = scene.Memory(6, 5, kG);
    Call(five.live, "CopyPixels", source.live, 2, 1, 3, 3);
    ReferenceCopy(five.model, source.model, {2, 1, 3, 3, 0, 0});
    Call(one.live, "CopyPixels", source.live);
    ReferenceCopy(one.model, source.model, {0, 0, 6, 5, 0, 0});
    EXPECT_TRUE(scene.Same());
}

TEST_F(CopyPixels, ANegativeSourceOffsetMovesTheDestination) {
    auto source = New("PictureTQX", 20, 1, kG);
    auto dest = New("PictureTQX", 20, 1, kG);
    Bytes pixels(20);
    for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint8_t>(i + 1);
    WritePixels(source, pixels);
    Call(dest, "CopyPixels", source, 0, 0, 10, 10, -3, 0);
    Bytes expected(20);
    for (std::size_t i = 0; i < 4; ++i) expected[i] = static_cast<std::uint8_t>(i + 4);
    EXPECT_EQ(ReadPixels(dest), expected);
}

TEST_F(CopyPixels, ARectangleWhollyLeftOfThePictureCoversItsWholeWidth) {
    auto source = New("PictureTQX", 40, 1, kG);
    Call(source, "FillRect", 5);
    auto dest = New("PictureTQX", 4, 1, kG);
    Call(dest, "CopyPixels", source, -20, 0, 10, 1, 0, 0);
    EXPECT_EQ(ReadPixels(dest), (Bytes{5, 5, 5, 5}));
}

TEST_F(CopyPixels, ACopyToTheRightRepeatsWhatItReads) {
    auto picture = New("PictureTQX", 6, 1, kG);
    WritePixels(picture, {1, 2, 3, 4, 5, 6});
    Call(picture, "CopyPixels", picture, 2, 0, 4, 1, 0, 0);
    EXPECT_EQ(ReadPixels(picture), (Bytes{1, 2, 1, 2, 1, 2}));
    WritePixels(picture, {1, 2, 3, 4, 5, 6});
    Call(picture, "CopyPixels", picture, 0, 0, 4, 1, 2, 0);
    EXPECT_EQ(ReadPixels(picture), (Bytes{3, 4, 5, 6, 5, 6}));
}

TEST_F(CopyPixels, ACopyDownRepeatsWhatItReads) {
    auto picture = New("PictureTQX", 1, 5, kG);
    WritePixels(picture, {1, 2, 3, 4, 5});
    Call(picture, "CopyPixels", picture, 0, 2, 1, 3, 0, 0);
    EXPECT_EQ(ReadPixels(picture), (Bytes{1, 2, 1, 2, 1}));
    WritePixels(picture, {1, 2, 3, 4, 5});
    Call(picture, "CopyPixels", picture, 0, 0, 1, 3, 0, 2);
    EXPECT_EQ(ReadPixels(picture), (Bytes{3, 4, 5, 4, 5}));
}

// Every way from one kind of layout to another.
TEST_F(CopyPixels, ConvertsBetweenLayouts) {
    const struct {
        int from, to;
        Bytes source, expected;  // over a destination of 100s
    } cases[] = {
        {kRGBA, 9, {10, 20, 30, 40}, {40, 30, 20, 10}},
        {kGA, kRGBA, {10, 40}, {10, 10, 10, 40}},
        {kGA, 13, {10, 40}, {40, 10}},
        {kRGBA, kGA, {255, 0, 0, 40}, {76, 40}},
        {kG, kG, {10}, {10}},
        {kG, kGA, {10}, {10, 100}},
        {kRGB, kG, {0, 255, 0}, {150}},
        {kRGBA, kG, {0, 0, 255, 40}, {27}},
        {kRGB, kGA, {255, 255, 255}, {255, 100}},
        {kRGB, 6, {10, 20, 30}, {30, 20, 10}},
        {kRGB, kRGBA, {10, 20, 30}, {10, 20, 30, 100}},
        {kRGBA, kRGB, {10, 20, 30, 40}, {10, 20, 30}},
        {kRGBA, 3, {10, 20, 30, 40}, {10, 20, 30, 100}},
        {kG, kRGB, {10}, {10, 10, 10}},
        {kGA, 5, {10, 40}, {100, 10, 10, 10}},
        {kG, kRGBA, {10}, {10, 10, 10, 100}},
        {5, kRGBA, {77, 10, 20, 30}, {10, 20, 30, 100}},
        {kScaling, kRGB, Bytes(16, 9), {100, 100, 100}},
        {kRGB, kScaling, {1, 2, 3}, Bytes(16, 100)},
        {16, 20, {1, 2, 3}, {100, 100, 2, 100}},
    };
    for (const auto& c : cases) {
        auto source = New("PictureTQX", 1, 1, c.from), dest = New("PictureTQX", 1, 1, c.to);
        WritePixels(source, c.source);
        WritePixels(dest, Bytes(c.expected.size(), 100));
        Call(dest, "CopyPixels", source);
        EXPECT_EQ(ReadPixels(dest), c.expected) << kFormats[c.from].name << " to " << kFormats[c.to].name;
    }
}

TEST_F(CopyPixels, TakesTheEndsOf32Bits) {
    Scene scene(2);
    const Twin source = scene.Memory(7, 5, kRGB), dest = scene.Memory(6, 6, kRGB);
    const int numbers[] = {kLeast, kLeast + 1, -1, 0, 1, kMost - 1, kMost};
    for (const int d : numbers)
        for (const int size : numbers)
            for (const int s : numbers) {
                CopyBoth(dest, source, d, 0, size, 6, s, 0);
                CopyBoth(dest, source, 0, d, 6, size, 0, s);
                ASSERT_TRUE(scene.Same()) << d << ", " << size << ", " << s;
            }
}

TEST_F(CopyPixels, LeavesTheDestinationForUnusablePictures) {
    Scene scene(3);
    const Twin dest = scene.Memory(3, 3, kRGB);
    auto closed = New("PictureTQX", 3, 3, kRGB);
    Call(closed, "Close");
    Call(dest.live, "CopyPixels", nullptr);
    Call(dest.live, "CopyPixels", closed);
    Call(dest.live, "CopyPixels", New("PictureTQX", 3, 3, 0));
    Call(dest.live, "CopyPixels", New("PictureTQX", 0, 0, kRGB));
    Call(dest.live, "CopyPixels", New("PictureTQX", 3, 3, kScaling));
    Call(closed, "CopyPixels", dest.live);
    Call(New("PictureTQX", 0, 0, kRGB), "CopyPixels", dest.live);
    EXPECT_TRUE(scene.Same());
}

// --- Yields -----------------------------------------------------------------------------------

void CopyWhole(const Ref<Object>& destination, const Ref<Object>& source) { Call(destination, "CopyPixels", source); }

TEST_F(CopyPixels, YieldsForBothAtTheStartAndForTheDestinationAfterEachRow) {
    ExpectYieldsForBothAndAfterEachRow(&CopyWhole);
}

TEST_F(CopyPixels, EndsWhenAYieldTakesEitherPicture) { ExpectEndWhenAYieldTakesEither(&CopyWhole); }

}  // namespace
