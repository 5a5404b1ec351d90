// Clears and fills beside a model, with rectangles anywhere.
#include <limits>

#include "tests/plugin/ops/Rectangles.h"
#include "tests/support/Interpose.h"
#include "tests/support/Scene.h"
#include "tests/support/Yields.h"

namespace {

using namespace support;
using ops_test::Area;
using ops_test::Clip;
using ops_test::RandomNumber;

constexpr int kRGB = 1, kRGBA = 2, kRGBX = 3, kXRGB = 5, kG = 11, kGA = 12, kScaling = 14, k2of3 = 16;
constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();

class Fill : public PluginTest {};

// --- Plain references -------------------------------------------------------------------------

void ReferenceClearAll(const ModelPicture& picture) {
    if (picture.width <= 0 || picture.storage->rowSize <= 0) return;
    for (int y = 0; y < picture.height; ++y)
        if (std::uint8_t* const row = picture.Row(y)) std::fill_n(row, picture.storage->rowSize, std::uint8_t{0});
}

void ReferenceClear(const ModelPicture& picture, const Area& area) {
    for (std::int64_t y = area.y; y < area.y + area.h; ++y)
        if (std::uint8_t* const row = picture.Row(y))
            std::fill_n(row + area.x * picture.pixelSize, area.w * picture.pixelSize, std::uint8_t{0});
}

void ReferenceByteFill(const ModelPicture& picture, const Area& area, int value) {
    const std::int64_t storageEnd = picture.storage->rows * picture.storage->rowSize;
    for (std::int64_t y = area.y; y < area.y + area.h; ++y) {
        std::uint8_t* const row = picture.Row(y);
        if (!row) continue;
        const std::int64_t first = row - picture.storage->bytes.data() + area.x * picture.pixelSize;
        for (std::int64_t at = first; at < std::min(first + picture.storage->rowSize, storageEnd); ++at)
            picture.storage->bytes[static_cast<std::size_t>(at)] = static_cast<std::uint8_t>(value);
    }
}

void ReferenceChannels(const ModelPicture& picture, const Area& area, const std::vector<int>& offsets,
                       const std::vector<int>& values) {
    for (std::int64_t y = area.y; y < area.y + area.h; ++y)
        for (std::int64_t x = area.x; x < area.x + area.w && picture.Row(y); ++x)
            for (std::size_t i = 0; i < offsets.size(); ++i)
                picture.Pixel(x, y)[offsets[i]] = static_cast<std::uint8_t>(values[i]);
}

void ReferenceFill(const ModelPicture& picture, const Area& area, int value) {
    const bool channels = picture.isGray || picture.isRGB;
    const int packed = picture.isGray ? 1 : 3;
    if (!channels || area.w == 0) return;
    if (picture.hasAlpha || picture.pixelSize == packed)
        ReferenceByteFill(picture, area, value);
    else if (picture.isGray)
        ReferenceChannels(picture, area, {picture.gray}, {value});
    else
        ReferenceChannels(picture, area, {picture.red, picture.green, picture.blue}, {value, value, value});
}

void ReferenceColors(const ModelPicture& p, const Area& area, int red, int green, int blue) {
    if (p.hasColors) ReferenceChannels(p, area, {p.red, p.green, p.blue}, {red, green, blue});
}

void ReferenceColors(const ModelPicture& p, const Area& area, int red, int green, int blue, int alpha) {
    if (!p.hasAlpha) return ReferenceColors(p, area, red, green, blue);
    if (p.hasColors) ReferenceChannels(p, area, {p.red, p.green, p.blue, p.alpha}, {red, green, blue, alpha});
}

// --- Every format, view and rectangle ---------------------------------------------------------

class FillEverywhere : public PluginTest, public ::testing::WithParamInterface<int> {
  protected:
    // Runs live(picture, x, y, w, h) and model(picture, clipped) on every kind of picture of the
    // format, and compares all bytes.
    template <class Live, class Model>
    void Check(const Live& live, const Model& model) {
        Scene scene(static_cast<std::uint64_t>(GetParam()) + 100);
        for (int kind = 0; kind < Scene::kKinds; ++kind)
            for (int round = 0; round < 12; ++round) {
                scene.Clear();
                Random& random = scene.random();
                const Twin twin = scene.Kind(kind, random.Between(1, 40), random.Between(1, 9), GetParam());
                const int x = RandomNumber(random), y = RandomNumber(random);
                const int w = RandomNumber(random), h = RandomNumber(random);
                live(twin.live, x, y, w, h);
                model(twin.model, Clip({x, y, w, h}, twin.model.width, twin.model.height));
                ASSERT_TRUE(scene.Same()) << "kind " << kind << ": " << x << ", " << y << ", " << w << ", " << h
                                          << " of " << twin.model.width << " x " << twin.model.height;
            }
    }
};

TEST_P(FillEverywhere, ClearRectClearsTheRectanglesBytes) {
    Check([](const Ref<Object>& p, int x, int y, int w, int h) { Call(p, "ClearRect", x, y, w, h); },
          [](const ModelPicture& p, const Area& area) { ReferenceClear(p, area); });
}

TEST_P(FillEverywhere, ClearRectClearsWholeRows) {
    Check([](const Ref<Object>& p, int, int, int, int) { Call(p, "ClearRect"); },
          [](const ModelPicture& p, const Area&) { ReferenceClearAll(p); });
}

TEST_P(FillEverywhere, FillRectFillsByLayout) {
    Check([](const Ref<Object>& p, int x, int y, int w, int h) { Call(p, "FillRect", x, y, w, h, 0x1A5); },
          [](const ModelPicture& p, const Area& area) { ReferenceFill(p, area, 0xA5); });
}

TEST_P(FillEverywhere, FillRectFillsTheWholePicture) {
    Check([](const Ref<Object>& p, int, int, int, int) { Call(p, "FillRect", -3); },
          [](const ModelPicture& p, const Area&) {
              ReferenceFill(p, {0, 0, p.width, p.height}, 253);
          });
}

TEST_P(FillEverywhere, FillRectRGBSetsTheColorsAlone) {
    Check([](const Ref<Object>& p, int x, int y, int w, int h) { Call(p, "FillRectRGB", x, y, w, h, 1, 2, 3); },
          [](const ModelPicture& p, const Area& area) { ReferenceColors(p, area, 1, 2, 3); });
}

TEST_P(FillEverywhere, FillRectRGBSetsAlphaWhereThereIsOne) {
    Check([](const Ref<Object>& p, int x, int y, int w, int h) { Call(p, "FillRectRGB", x, y, w, h, 1, 2, 3, 4); },
          [](const ModelPicture& p, const Area& area) { ReferenceColors(p, area, 1, 2, 3, 4); });
}

INSTANTIATE_TEST_SUITE_P(Formats, FillEverywhere, ::testing::Range(1, kFormatCount), CodeName);

// --- Forms ------------------------------------------------------------------------------------

TEST_F(Fill, FillRectRGBTakesColorsAndWholePictures) {
    Scene scene(1);
    const auto red = static_cast<sdk::Color>(0xFF8001);
    for (const int format : {kRGB, kRGBA, kXRGB}) {
        const auto check = [&](const auto&... arguments) {
            Twin twin = scene.Memory(5, 3, format);
            Call(twin.live, "FillRectRGB", arguments...);
            return twin.model;
        };
        const Area whole = {0, 0, 5, 3};
        ReferenceColors(check(1, 2, 3), whole, 1, 2, 3);
        ReferenceColors(check(1, 2, 3, 4), whole, 1, 2, 3, 4);
        ReferenceColors(check(red), whole, 255, 128, 1);
        ReferenceColors(check(red, 9), whole, 255, 128, 1, 9);
        ReferenceColors(check(1, 1, 2, 2, red), {1, 1, 2, 2}, 255, 128, 1);
        ReferenceColors(check(1, 1, 2, 2, red, 9), {1, 1, 2, 2}, 255, 128, 1, 9);
        ASSERT_TRUE(scene.Same()) << "format " << format;
    }
}

TEST_F(Fill, KeepsTheLowByteOfValues) {
    auto picture = New("PictureTQX", 1, 1, kRGBA);
    Call(picture, "FillRectRGB", 256, -1, 0x1234, kLeast);
    EXPECT_EQ(ReadPixels(picture), (Bytes{0, 255, 0x34, 0}));
}

TEST_F(Fill, FillRectRGBUnpacksAColor) {
    auto picture = New("PictureTQX", 1, 1, kRGB);
    Call(picture, "FillRectRGB", static_cast<sdk::Color>(0xFF8000), 128);
    EXPECT_EQ(ReadPixels(picture), (Bytes{255, 128, 0})) << "alpha does not count without an alpha channel";
    auto gray = New("PictureTQX", 1, 1, kG);
    Call(gray, "FillRectRGB", 255, 0, 0);
    EXPECT_EQ(ReadPixels(gray), (Bytes{0}));
}

// --- Oddities ---------------------------------------------------------------------------------

TEST_F(Fill, ByteFillRunsOnIntoTheNextRowAndStopsAtTheStoragesEnd) {
    const auto wrapped = WrapBlock(4, 2, kG, 4);
    Call(wrapped.picture, "FillRect", 2, 0, 1, 1, 9);
    EXPECT_EQ(BlockBytes(wrapped.block), (Bytes{0, 0, 9, 9, 9, 9, 0, 0}));
    Call(wrapped.picture, "FillRect", 1, 1, 1, 1, 7);
    EXPECT_EQ(BlockBytes(wrapped.block), (Bytes{0, 0, 9, 9, 9, 7, 7, 7}));
}

TEST_F(Fill, ByteFillOfAMirroredViewRunsOnInTheStoragesOrder) {
    const auto wrapped = WrapBlock(4, 3, kG, 4);
    auto mirrored = CallObject(wrapped.picture, "MirroredView");
    Call(mirrored, "FillRect", 1, 1, 1, 1, 9);
    EXPECT_EQ(BlockBytes(wrapped.block), (Bytes{0, 0, 0, 0, 0, 9, 9, 9, 9, 0, 0, 0}));
    Call(mirrored, "FillRect", 3, 0, 1, 1, 7);  // the storage's last row
    EXPECT_EQ(BlockBytes(wrapped.block), (Bytes{0, 0, 0, 0, 0, 9, 9, 9, 9, 0, 0, 7}));
}

TEST_F(Fill, ByteFillOfAClipRunsOnPastTheClip) {
    const auto wrapped = WrapBlock(4, 3, kG, 4);
    auto clip = CallObject(wrapped.picture, "ClipImage", 0, 0, 4, 1);
    Call(clip, "FillRect", 3, 0, 1, 1, 9);
    EXPECT_EQ(BlockBytes(wrapped.block), (Bytes{0, 0, 0, 9, 9, 9, 9, 0, 0, 0, 0, 0}));
}

TEST_F(Fill, ByteFillFillsTheWholeRowWhateverTheWidth) {
    auto picture = New("PictureTQX", 3, 2, kRGB);
    Call(picture, "FillRect", 0, 0, 1, 1, 7);
    const Bytes row = BlockBytes(CallObject(picture, "Row", 0));
    EXPECT_EQ(row, Bytes(64, 7));
    EXPECT_EQ(BlockBytes(CallObject(picture, "Row", 1)), Bytes(64, 0));
}

TEST_F(Fill, ByteFillReachesAlpha) {
    auto picture = New("PictureTQX", 2, 1, kRGBA);
    Call(picture, "FillRect", 100);
    EXPECT_EQ(ReadPixels(picture), Bytes(8, 100));
}

TEST_F(Fill, ByteFillRunsOnInMappedStorage) {
    Scene scene(3);
    const Twin twin = scene.Mapped(5, 4, kRGB, ScratchPath("pixels"));
    const Twin mirrored = scene.View(twin, "MirroredView");
    Call(twin.live, "FillRect", 2, 1, 1, 1, 9);
    ReferenceByteFill(twin.model, {2, 1, 1, 1}, 9);
    ASSERT_TRUE(scene.Same());
    Call(twin.live, "FillRect", 4, 3, 1, 1, 8);  // the last row
    ReferenceByteFill(twin.model, {4, 3, 1, 1}, 8);
    ASSERT_TRUE(scene.Same());
    Call(mirrored.live, "FillRect", 3, 2, 2, 2, 7);
    ReferenceByteFill(mirrored.model, {3, 2, 2, 2}, 7);
    ASSERT_TRUE(scene.Same());
}

TEST_F(Fill, FillRectKeepsFillerBytesAndOtherChannels) {
    auto filled = New("PictureTQX", 1, 1, kRGBX);
    Call(filled, "FillRect", 9);
    EXPECT_EQ(ReadPixels(filled), (Bytes{9, 9, 9, 0}));
    auto channel = New("PictureTQX", 1, 1, k2of3);
    Call(channel, "FillRect", 9);
    EXPECT_EQ(ReadPixels(channel), (Bytes{0, 9, 0}));
}

TEST_F(Fill, ARectangleWhollyLeftOfThePictureCoversItsWholeWidth) {
    auto picture = New("PictureTQX", 3, 2, kG);
    Call(picture, "FillRect", 8);
    Call(picture, "ClearRect", -20, 0, 10, 1);
    EXPECT_EQ(ReadPixels(picture), (Bytes{0, 0, 0, 8, 8, 8}));
    Call(picture, "FillRect", 8);
    Call(picture, "ClearRect", 0, -20, 1, 10);
    EXPECT_EQ(ReadPixels(picture), (Bytes{0, 8, 8, 0, 8, 8}));
}

TEST_F(Fill, ARectangleThatEndsAtTheLeftEdgeIsEmpty) {
    auto picture = New("PictureTQX", 3, 1, kG);
    Call(picture, "FillRect", 8);
    Call(picture, "ClearRect", -10, 0, 10, 1);
    Call(picture, "ClearRect", 3, 0, 10, 1);
    Call(picture, "ClearRect", kMost, 0, kMost, 1);
    EXPECT_EQ(ReadPixels(picture), (Bytes{8, 8, 8}));
}

TEST_F(Fill, RectanglesAreCutToThePicture) {
    const auto cleared = [](int x, int y, int w, int h) {
        auto picture = New("PictureTQX", 4, 4, kG);
        Call(picture, "FillRect", 1);
        Call(picture, "ClearRect", x, y, w, h);
        return ReadPixels(picture);
    };
    const Bytes corner = {0, 0, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    const Bytes middle = {1, 1, 1, 1, 1, 0, 0, 1, 1, 0, 0, 1, 1, 1, 1, 1};
    EXPECT_EQ(cleared(-2, -2, 4, 4), corner);
    EXPECT_EQ(cleared(3, 3, -2, -2), middle);
    EXPECT_EQ(cleared(kLeast, kLeast, kMost, kMost), Bytes(16, 0));
    EXPECT_EQ(cleared(0, 0, kMost, kMost), Bytes(16, 0));
    EXPECT_EQ(cleared(2, 2, kLeast, kLeast), corner);
}

TEST_F(Fill, ClearRectOfAClipCountsFromTheStoragesRow) {
    Scene scene(5);
    const Twin clip = scene.View(scene.Memory(10, 4, kRGB), "ClipImage", 4, 1, 5, 2);
    Call(clip.live, "ClearRect", 1, 0, 2, 1);
    std::fill_n(clip.model.Row(0) + 3, 6, std::uint8_t{0});
    EXPECT_TRUE(scene.Same());
}

// --- What is left alone -----------------------------------------------------------------------

TEST_F(Fill, LeavesGrayPicturesAndRGBViewsToFillRect) {
    Scene scene(6);
    Call(scene.Memory(3, 2, kG).live, "FillRectRGB", 255, 0, 0);
    Call(scene.Memory(3, 2, kGA).live, "FillRectRGB", 255, 0, 0, 9);
    Call(scene.View(scene.Memory(3, 2, kRGBA), "RGBChannels").live, "FillRectRGB", 255, 0, 0);
    Call(scene.Memory(3, 2, kScaling).live, "FillRect", 9);
    EXPECT_TRUE(scene.Same());
}

TEST_F(Fill, LeavesUnusablePicturesAlone) {
    const auto fillAll = [](const Ref<Object>& picture) {
        Call(picture, "ClearRect");
        Call(picture, "ClearRect", 0, 0, 5, 5);
        Call(picture, "FillRect", 1);
        Call(picture, "FillRectRGB", 1, 2, 3);
        Call(picture, "FillRectRGB", 1, 2, 3, 4);
        Call(picture, "Invert");
    };
    auto closed = New("PictureTQX", 2, 2, kRGBA);
    Call(closed, "Close");
    fillAll(closed);
    fillAll(New("PictureTQX", 2, 2, 0));
    fillAll(New("PictureTQX", 0, 0, kRGB));
    fillAll(New("PictureTQX", 0, 3, kRGB));
    fillAll(New("PictureTQX", 3, 0, kRGB));
    Scene scene(7);
    const Twin root = scene.Memory(5, 5, kRGB);
    fillAll(scene.View(root, "ClipImage", 9, 0, 2, 2).live);  // of negative width
    fillAll(scene.View(root, "ClipImage", 0, 9, 2, 2).live);
    EXPECT_TRUE(scene.Same());
}

// --- Yields -----------------------------------------------------------------------------------

TEST_F(Fill, YieldsBeforeTheFirstRowAndAfterEach) {
    FakeClock clock(100);
    clock.AdvancePerReading(10);
    auto picture = New("PictureTQX", 4, 5, kRGB);
    const auto yieldsOf = [&](auto&&... call) {
        const auto before = CallsOf("REALYieldToRB");
        Call(picture, call...);
        return CallsOf("REALYieldToRB") - before;
    };
    EXPECT_EQ(yieldsOf("ClearRect"), 0);
    Set(picture, "YieldTicks", Value(1));
    EXPECT_EQ(yieldsOf("ClearRect"), 6);
    EXPECT_EQ(yieldsOf("ClearRect", 0, 1, 4, 2), 3);
    EXPECT_EQ(yieldsOf("FillRect", 7), 6);
    EXPECT_EQ(yieldsOf("FillRectRGB", 1, 2, 3), 6);
    EXPECT_EQ(yieldsOf("Invert"), 6);
    EXPECT_EQ(yieldsOf("ClearRect", 9, 1, 4, 2), 0);
}

TEST_F(Fill, EndsWhenAYieldClosesOrRebuildsThePicture) {
    for (const int format : {kRGB, kRGBX}) {
        ExpectEndWhenAYieldTakesThePicture(format, [](const auto& picture) { Call(picture, "ClearRect"); });
        ExpectEndWhenAYieldTakesThePicture(format, [](const auto& picture) { Call(picture, "FillRect", 255); });
        ExpectEndWhenAYieldTakesThePicture(format, [](const auto& picture) { Call(picture, "Invert"); });
    }
}

}  // namespace
