// Inversion of rectangles anywhere.
#include "tests/plugin/ops/Rectangles.h"
#include "tests/support/Scene.h"

namespace {

using namespace support;
using ops_test::Area;
using ops_test::Clip;
using ops_test::RandomNumber;

void ReferenceInvert(const ModelPicture& p, const Area& area) {
    std::vector<int> offsets = p.Channels();
    if (p.isRGB && p.hasAlpha) offsets = {p.red, p.blue};
    std::sort(offsets.begin(), offsets.end());
    offsets.erase(std::unique(offsets.begin(), offsets.end()), offsets.end());  // a shared byte, once
    for (std::int64_t y = area.y; y < area.y + area.h; ++y)
        for (std::int64_t x = area.x; x < area.x + area.w && p.Row(y); ++x)
            for (const int offset : offsets) {
                std::uint8_t& byte = p.Pixel(x, y)[offset];
                byte = static_cast<std::uint8_t>(255 - byte);
            }
}

class InvertEverywhere : public PluginTest, public ::testing::WithParamInterface<int> {};

TEST_P(InvertEverywhere, ComplementsTheChannelsOfTheRectangle) {
    Scene scene(static_cast<std::uint64_t>(GetParam()));
    for (int kind = 0; kind < Scene::kKinds; ++kind)
        for (int round = 0; round < 15; ++round) {
            scene.Clear();
            Random& random = scene.random();
            const Twin twin = scene.Kind(kind, random.Between(1, 90), random.Between(1, 6), GetParam());
            const int x = RandomNumber(random), y = RandomNumber(random);
            const int w = RandomNumber(random), h = RandomNumber(random);
            Call(twin.live, "Invert", x, y, w, h);
            ReferenceInvert(twin.model, Clip({x, y, w, h}, twin.model.width, twin.model.height));
            ASSERT_TRUE(scene.Same()) << "kind " << kind << ": " << x << ", " << y << ", " << w << ", " << h;
            Call(twin.live, "Invert");
            ReferenceInvert(twin.model, {0, 0, twin.model.width, twin.model.height});
            ASSERT_TRUE(scene.Same()) << "kind " << kind << ", whole";
        }
}

INSTANTIATE_TEST_SUITE_P(Formats, InvertEverywhere, ::testing::Range(1, kFormatCount), CodeName);

class Invert : public PluginTest {
  protected:
    Bytes InvertedPixel(int format, const Bytes& pixel) {
        auto picture = New("PictureTQX", 1, 1, format);
        WritePixels(picture, pixel);
        Call(picture, "Invert");
        return ReadPixels(picture);
    }
};

TEST_F(Invert, LeavesGreenAndAlphaOfColorsWithAlpha) {
    EXPECT_EQ(InvertedPixel(2, {10, 20, 30, 40}), (Bytes{245, 20, 225, 40}));
    EXPECT_EQ(InvertedPixel(9, {40, 30, 20, 10}), (Bytes{40, 225, 20, 245}));
}

TEST_F(Invert, ComplementsEveryChannelOfOtherLayouts) {
    EXPECT_EQ(InvertedPixel(1, {10, 20, 30}), (Bytes{245, 235, 225}));
    EXPECT_EQ(InvertedPixel(11, {10}), (Bytes{245}));
    EXPECT_EQ(InvertedPixel(12, {10, 40}), (Bytes{245, 215}));
}

TEST_F(Invert, KeepsTheFillerByte) { EXPECT_EQ(InvertedPixel(3, {10, 20, 30, 77}), (Bytes{245, 235, 225, 77})); }

TEST_F(Invert, TwiceIsThePictureAgain) {
    Scene scene(9);
    for (int format = 1; format < kFormatCount; ++format) {
        const Twin twin = scene.Memory(33, 5, format);
        Call(twin.live, "Invert");
        Call(twin.live, "Invert");
    }
    EXPECT_TRUE(scene.Same());
}

}  // namespace
