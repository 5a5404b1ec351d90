// Mirrors and half turns in place.
#include "tests/plugin/geometry/ReferenceTurns.h"
#include "tests/support/Interpose.h"
#include "tests/support/Scene.h"
#include "tests/support/Yields.h"

namespace {

using namespace support;
using namespace geometry_test;

constexpr int kRGB = 1, kRGBX = 3, kG = 11;

class MirrorsEverywhere : public PluginTest, public ::testing::WithParamInterface<int> {};

TEST_P(MirrorsEverywhere, MoveTheChannelsOfEveryView) {
    Scene scene(static_cast<std::uint64_t>(GetParam()));
    Random& random = scene.random();
    for (int kind = 0; kind < Scene::kKinds; ++kind)
        for (int round = 0; round < 12; ++round) {
            scene.Clear();
            const int width = round < 3 ? round + 1 : random.Between(1, 150);
            const Twin twin = scene.Kind(kind, width, random.Between(1, 9), GetParam());
            Call(twin.live, "HMirror");
            ReferenceHMirror(twin.model);
            ASSERT_TRUE(scene.Same()) << "HMirror of kind " << kind << ", width " << width;
            Call(twin.live, "VMirror");
            ReferenceTradeRows(twin.model, false);
            ASSERT_TRUE(scene.Same()) << "VMirror of kind " << kind << ", width " << width;
            Call(twin.live, "Rotate180");
            ReferenceTradeRows(twin.model, true);
            ASSERT_TRUE(scene.Same()) << "Rotate180 of kind " << kind << ", width " << width;
        }
}

TEST_P(MirrorsEverywhere, TwiceAreTheIdentity) {
    Scene scene(static_cast<std::uint64_t>(GetParam()) + 30);
    for (const char* const mirror : {"HMirror", "VMirror", "Rotate180"})
        for (const auto& [width, height] : {std::pair(1, 1), {1, 7}, {9, 1}, {64, 5}, {65, 8}}) {
            const Twin twin = scene.Memory(width, height, GetParam());
            Call(twin.live, mirror);
            Call(twin.live, mirror);
        }
    EXPECT_TRUE(scene.Same());
}

INSTANTIATE_TEST_SUITE_P(Formats, MirrorsEverywhere, ::testing::Range(1, kFormatCount), CodeName);

class Mirrors : public PluginTest {
  protected:
    Bytes After(const char* mirror, int width, int height, const Bytes& pixels) {
        auto picture = New("PictureTQX", width, height, kG);
        WritePixels(picture, pixels);
        Call(picture, mirror);
        return ReadPixels(picture);
    }
};

TEST_F(Mirrors, LeaveTheMiddleColumnAndRow) {
    EXPECT_EQ(After("HMirror", 3, 2, {1, 2, 3, 4, 5, 6}), (Bytes{3, 2, 1, 6, 5, 4}));
    EXPECT_EQ(After("HMirror", 1, 2, {1, 2}), (Bytes{1, 2}));
    EXPECT_EQ(After("VMirror", 2, 3, {1, 2, 3, 4, 5, 6}), (Bytes{5, 6, 3, 4, 1, 2}));
}

TEST_F(Mirrors, Rotate180InPlaceDoesNotReverseTheMiddleRow) {
    EXPECT_EQ(After("Rotate180", 2, 3, {1, 2, 3, 4, 5, 6}), (Bytes{6, 5, 3, 4, 2, 1}));
    EXPECT_EQ(After("Rotate180", 3, 1, {1, 2, 3}), (Bytes{1, 2, 3}));
    EXPECT_EQ(After("Rotate180", 2, 2, {1, 2, 3, 4}), (Bytes{4, 3, 2, 1}));
}

TEST_F(Mirrors, KeepFillerBytesInTheirPlace) {
    for (const char* const mirror : {"HMirror", "VMirror", "Rotate180"}) {
        auto picture = New("PictureTQX", 2, 2, kRGBX);
        WritePixels(picture, {1, 1, 1, 91, 2, 2, 2, 92, 3, 3, 3, 93, 4, 4, 4, 94});
        Call(picture, mirror);
        const Bytes pixels = ReadPixels(picture);
        EXPECT_EQ((Bytes{pixels[3], pixels[7], pixels[11], pixels[15]}), (Bytes{91, 92, 93, 94})) << mirror;
    }
}

TEST_F(Mirrors, ChangeNothingWithoutMemoryForTwoRows) {
    Scene scene(3);
    const Twin twin = scene.Memory(5000, 4, kRGB);
    for (const char* const mirror : {"VMirror", "Rotate180"})
        for (const std::int64_t nth : {1, 2}) {
            const FailingCall failing(SystemCall::Calloc, nth);
            Call(twin.live, mirror);
            EXPECT_EQ(failing.failed(), 1) << mirror;
        }
    EXPECT_TRUE(scene.Same());
}

TEST_F(Mirrors, WorkOnMappedPictures) {
    Scene scene(4);
    const Twin root = scene.Mapped(70, 9, kRGB, ScratchPath("pixels"));
    for (const Twin& twin : {root, scene.View(root, "MirroredView"), scene.View(root, "ClipImage", 3, 2, 60, 6)}) {
        Call(twin.live, "HMirror");
        ReferenceHMirror(twin.model);
        Call(twin.live, "VMirror");
        ReferenceTradeRows(twin.model, false);
        Call(twin.live, "Rotate180");
        ReferenceTradeRows(twin.model, true);
        ASSERT_TRUE(scene.Same());
    }
}

// 16 MiB is the least window: 4096 rows of a page each.
TEST_F(Mirrors, SlideTheWindowBetweenTheRowsOfAPair) {
    Scene scene(5);
    const Twin twin = scene.Mapped(3, 4500, kG, ScratchPath("pixels"));
    Call(twin.live, "VMirror");
    ReferenceTradeRows(twin.model, false);
    EXPECT_TRUE(scene.Same());
    Call(twin.live, "Rotate180");
    ReferenceTradeRows(twin.model, true);
    EXPECT_TRUE(scene.Same());
}

TEST_F(Mirrors, LeaveUnusablePicturesAlone) {
    for (const char* const mirror : {"HMirror", "VMirror", "Rotate180"}) {
        auto closed = New("PictureTQX", 2, 2, kRGB);
        Call(closed, "Close");
        Call(closed, mirror);
        Call(New("PictureTQX", 2, 2, 0), mirror);
        Call(New("PictureTQX", 0, 0, kRGB), mirror);
        Scene scene(6);
        Call(scene.View(scene.Memory(5, 5, kRGB), "ClipImage", 9, 0, 2, 2).live, mirror);
        Call(scene.Memory(5, 5, 14).live, mirror);
        EXPECT_TRUE(scene.Same());
    }
}

TEST_F(Mirrors, YieldFirstAndAfterEachRowOrPair) {
    FakeClock clock(100);
    clock.AdvancePerReading(10);
    auto picture = New("PictureTQX", 4, 7, kRGB);
    Set(picture, "YieldTicks", Value(1));
    const auto yields = [&](const char* mirror) {
        const auto before = CallsOf("REALYieldToRB");
        Call(picture, mirror);
        return CallsOf("REALYieldToRB") - before;
    };
    EXPECT_EQ(yields("HMirror"), 8);
    EXPECT_EQ(yields("VMirror"), 4);
    EXPECT_EQ(yields("Rotate180"), 4);
}

TEST_F(Mirrors, EndWhenAYieldTakesThePicture) {
    for (const char* const mirror : {"HMirror", "VMirror", "Rotate180"})
        ExpectEndWhenAYieldTakesThePicture(kRGB, [&](const auto& picture) { Call(picture, mirror); });
}

}  // namespace
