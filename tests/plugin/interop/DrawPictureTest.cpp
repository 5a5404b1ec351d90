// Draws beside a model of the cut and of each blend.
#include <string>

#include "tests/plugin/interop/HostModels.h"
#include "tests/plugin/ops/Rectangles.h"
#include "tests/support/Interpose.h"

namespace {

using namespace interop_test;
using ops_test::RandomNumber;

constexpr int kRGB = 1, kRGBA = 2, kRGBX = 3, kARGB = 4, kXRGB = 5, kBGR = 6, kXBGR = 10, kG = 11, kGA = 12;

// --- Plain reference --------------------------------------------------------------------------

struct Area {
    std::int64_t dx, dy, dw, dh, sx, sy;
};

void ClipAxis(std::int64_t& d, std::int64_t& size, std::int64_t& s, std::int64_t extent, std::int64_t hostExtent) {
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
        s = s - d;
        size = size + d;
        d = 0;
    }
    if (static_cast<std::uint64_t>(extent) <= static_cast<std::uint64_t>(d)) size = 0;
    if (static_cast<std::uint64_t>(extent) < static_cast<std::uint64_t>(d + size)) size = extent - d;
    if (hostExtent < s + size) size = hostExtent - s;
}

struct Kind {
    const char* method;
    bool toGray, masked, blended;
    int color;  // host byte that goes to gray
};

constexpr Kind kKinds[] = {
    {"DrawPictureRGB", false, false, false, 0},
    {"DrawPictureRedToGrayChannel", true, false, false, 1},
    {"DrawPictureGreenToGrayChannel", true, false, false, 2},
    {"DrawPictureBlueToGrayChannel", true, false, false, 3},
    {"DrawMaskedPictureRGB", false, true, false, 0},
    {"DrawMaskedPictureApplyMaskRGB", false, true, true, 0},
};

void DrawPixel(const Kind& kind, bool invert, const ModelPicture& dest, std::uint8_t* to, const std::uint8_t* picture,
               const std::uint8_t* mask) {
    if (kind.toGray) {
        to[dest.gray] = picture[kind.color];
        return;
    }
    const int offsets[] = {dest.red, dest.green, dest.blue};
    int value[3];
    for (int c = 0; c < 3; ++c) {
        const int p = picture[c + 1];
        const int m = kind.blended ? (invert ? 255 - mask[c + 1] : mask[c + 1]) : 0;
        value[c] = kind.blended ? (m * to[offsets[c]] + (255 - m) * p) / 255 : p;
    }
    if (kind.masked && !kind.blended) {
        const int alpha = mask ? mask[1] : 255;
        to[dest.alpha] = static_cast<std::uint8_t>(invert ? 255 - alpha : alpha);
    }
    for (int c = 0; c < 3; ++c) to[offsets[c]] = static_cast<std::uint8_t>(value[c]);
}

void ReferenceDraw(const Kind& kind, bool invert, const ModelPicture& dest, const HostModel& picture,
                   const HostModel* mask, Area area) {
    if (!(kind.toGray ? dest.hasGray : dest.hasColors) || dest.width <= 0 || dest.height <= 0) return;
    if (!kind.masked) mask = nullptr;
    if (kind.blended && !mask) return;
    const int width = mask ? std::min(picture.width, mask->width) : picture.width;
    const int height = mask ? std::min(picture.height, mask->height) : picture.height;
    ClipAxis(area.dx, area.dw, area.sx, dest.width, width);
    ClipAxis(area.dy, area.dh, area.sy, dest.height, height);
    if (area.dw <= 0 || area.dh <= 0) return;
    for (std::int64_t j = 0; j < area.dh; ++j)
        for (std::int64_t i = 0; i < area.dw; ++i)
            if (dest.Row(area.dy + j))
                DrawPixel(kind, invert, dest, dest.Pixel(area.dx + i, area.dy + j),
                          picture.Pixel(area.sx + i, area.sy + j),
                          mask ? mask->Pixel(area.sx + i, area.sy + j) : nullptr);
}

// --- The live call, in each of its argument forms ----------------------------------------------

// Calls the form with so many numbers: 6, 4, 2 or 0. What is left out is set in the area as the
// form has it.
void DrawLive(const Kind& kind, bool invert, const Ref<Object>& dest, const Ref<Object>& picture, int numbers,
              Area& area) {
    if (numbers < 6) area.sx = area.sy = 0;
    if (numbers < 4) {
        area.dw = StorageOf(picture).width;
        area.dh = StorageOf(picture).height;
    }
    if (numbers < 2) area.dx = area.dy = 0;
    const std::int64_t all[] = {area.dx, area.dy, area.dw, area.dh, area.sx, area.sy};
    Values arguments{Value(picture)};
    for (int i = 0; i < numbers; ++i) arguments.push_back(Value(static_cast<int>(all[i])));
    if (kind.masked) arguments.push_back(Value(invert));
    CallWith(dest, kind.method, arguments);
}

int RandomForm(const Kind& kind, Random& random) { return kind.toGray ? 4 + 2 * random.Below(2) : 2 * random.Below(4); }

void DrawBoth(const Kind& kind, bool invert, const Twin& dest, const Ref<Object>& picture, int numbers, Area area) {
    const HostModel model = ModelOf(picture);
    const Ref<Object> mask = MaskOf(picture);
    const HostModel maskModel = mask ? ModelOf(mask) : HostModel{};
    DrawLive(kind, invert, dest.live, picture, numbers, area);
    ReferenceDraw(kind, invert, dest.model, model, mask ? &maskModel : nullptr, area);
}

std::string Describe(const Kind& kind, const Area& a) {
    std::string text = kind.method;
    for (const std::int64_t number : {a.dx, a.dy, a.dw, a.dh, a.sx, a.sy}) text += " " + std::to_string(number);
    return text;
}

Area RandomArea(Random& random) {
    const bool near = random.Below(2) == 0;
    const auto number = [&] { return near ? random.Between(-2, 2) : RandomNumber(random); };
    const int dx = number(), dy = number(), sx = number(), sy = number();
    return {dx, dy, near ? 70 : RandomNumber(random), near ? 6 : RandomNumber(random), sx, sy};
}

// A host picture; at times with a mask, at times one of another size, depths mostly 32.
Ref<Object> RandomSource(Random& random) {
    constexpr int kDepths[] = {32, 32, 32, 32, 24, 16, 8, 1};
    const int width = random.Between(1, 70), height = random.Between(1, 6);
    const auto picture = RandomHostPicture(random, width, height, kDepths[random.Below(8)]);
    const int choice = random.Below(4);
    if (choice == 0) return picture;
    const bool other = choice == 1;
    const auto mask = RandomHostPicture(random, other ? random.Between(1, 75) : width,
                                        other ? random.Between(1, 7) : height, kDepths[random.Below(8)]);
    Set(picture, "Mask", Value(mask));
    return picture;
}

// --- Every format, view, form and rectangle ---------------------------------------------------

class DrawEverywhere : public PluginTest, public ::testing::WithParamInterface<int> {};

TEST_P(DrawEverywhere, GivesThePlainBytes) {
    Scene scene(static_cast<std::uint64_t>(GetParam()));
    Random& random = scene.random();
    for (const Kind& kind : kKinds)
        for (int round = 0; round < 40; ++round) {
            scene.Clear();
            const Twin dest =
                scene.Kind(round % Scene::kKinds, random.Between(1, 80), random.Between(1, 5), GetParam());
            const auto picture = RandomSource(random);
            const Area area = RandomArea(random);
            DrawBoth(kind, random.Below(2) == 0, dest, picture, RandomForm(kind, random), area);
            ASSERT_TRUE(scene.Same()) << Describe(kind, area) << " round " << round;
            ASSERT_TRUE(NothingIsLocked(picture));
        }
}

INSTANTIATE_TEST_SUITE_P(Formats, DrawEverywhere, ::testing::Range(1, kFormatCount), CodeName);

// --- Single rules -----------------------------------------------------------------------------

class DrawPicture : public PluginTest {
  protected:
    Random random{7};
};

Ref<Object> FlatPicture(int width, int height, std::uint32_t color) {
    const auto picture = New("Picture", width, height, 32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) host::StoreColors(StorageOf(picture), x, y, 1, &color);
    return picture;
}

TEST_F(DrawPicture, ANegativeSourceOffsetMovesTheDestinationLeft) {
    const auto picture = RandomHostPicture(random, 10, 10);
    const auto buffer = New("PictureTQX", 10, 10, kRGB);
    Call(buffer, "DrawPictureRGB", picture, 0, 0, 10, 10, -2, 0);
    for (int x = 0; x < 6; ++x)
        EXPECT_EQ(ByteAt(buffer, x, 0, 0), StorageOf(picture).bytes[4 * (x + 2) + 1]) << "column " << x;
    for (int x = 6; x < 10; ++x) EXPECT_EQ(ByteAt(buffer, x, 0, 0), 0) << "column " << x;
}

TEST_F(DrawPicture, WithoutAMaskIsOpaque) {
    const auto picture = FlatPicture(2, 2, 0x102030);
    const auto buffer = New("PictureTQX", 2, 2, kRGBA);
    Call(buffer, "DrawMaskedPictureRGB", picture);
    EXPECT_EQ(ReadRow(buffer, 1), (Bytes{16, 32, 48, 255, 16, 32, 48, 255}));
    Call(buffer, "DrawMaskedPictureRGB", picture, true);
    EXPECT_EQ(ReadRow(buffer, 1), (Bytes{16, 32, 48, 0, 16, 32, 48, 0}));
}

TEST_F(DrawPicture, AlphaGoesToTheUnusedFirstByteAndNowhereElse) {
    const auto picture = FlatPicture(1, 1, 0x102030);
    Set(picture, "Mask", Value(FlatPicture(1, 1, 0x50A0F0)));
    const auto drawn = [&](int format) {
        const auto buffer = New("PictureTQX", 1, 1, format);
        Bytes pixel(4, 9);
        pixel.resize(static_cast<std::size_t>(kFormats[format].pixelSize));
        WritePixels(buffer, pixel);
        Call(buffer, "DrawMaskedPictureRGB", picture);
        return ReadRow(buffer, 0);
    };
    EXPECT_EQ(drawn(kARGB), (Bytes{80, 16, 32, 48}));
    EXPECT_EQ(drawn(kXRGB), (Bytes{80, 16, 32, 48})) << "the unused byte keeps the mask";
    EXPECT_EQ(drawn(kXBGR), (Bytes{80, 48, 32, 16}));
    EXPECT_EQ(drawn(kRGBX), (Bytes{16, 32, 48, 9})) << "red replaces it";
    EXPECT_EQ(drawn(kRGB), (Bytes{16, 32, 48}));
    EXPECT_EQ(drawn(kBGR), (Bytes{48, 32, 16}));
}

// The clip's own alpha offset stays 0, so alpha lands left of the clip: intended.
TEST_F(DrawPicture, AlphaOfAClipWithoutAlphaLandsAtTheRowsStart) {
    const auto picture = FlatPicture(1, 1, 0x102030);
    Set(picture, "Mask", Value(FlatPicture(1, 1, 0x500000)));
    const auto buffer = New("PictureTQX", 4, 1, kRGB);
    Call(CallObject(buffer, "ClipImage", 2, 0, 2, 1), "DrawMaskedPictureRGB", picture);
    EXPECT_EQ(ReadRow(buffer, 0), (Bytes{80, 0, 0, 0, 0, 0, 16, 32, 48, 0, 0, 0}));
}

TEST_F(DrawPicture, ABlackMaskTakesThePictureAndAWhiteOneKeepsTheBuffer) {
    const auto picture = FlatPicture(1, 1, 0x102030);
    const auto blended = [&](std::uint32_t mask, bool invert) {
        Set(picture, "Mask", Value(FlatPicture(1, 1, mask)));
        const auto buffer = New("PictureTQX", 1, 1, kRGBA);
        WritePixels(buffer, {200, 100, 50, 77});
        Call(buffer, "DrawMaskedPictureApplyMaskRGB", picture, invert);
        return ReadRow(buffer, 0);
    };
    EXPECT_EQ(blended(0x000000, false), (Bytes{16, 32, 48, 77}));
    EXPECT_EQ(blended(0xFFFFFF, false), (Bytes{200, 100, 50, 77}));
    EXPECT_EQ(blended(0xFFFFFF, true), (Bytes{16, 32, 48, 77}));
    EXPECT_EQ(blended(0xFF0000, false), (Bytes{200, 32, 48, 77})) << "each colour has its own mask channel";
}

TEST_F(DrawPicture, ASmallerMaskCutsTheArea) {
    const auto picture = FlatPicture(4, 4, 0x102030);
    Set(picture, "Mask", Value(FlatPicture(2, 3, 0xFFFFFF)));
    const auto buffer = New("PictureTQX", 4, 4, kRGBA);
    Call(buffer, "DrawMaskedPictureRGB", picture);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_EQ(ByteAt(buffer, x, y, 3), x < 2 && y < 3 ? 255 : 0) << x << ", " << y;
}

TEST_F(DrawPicture, NeedsTheChannelsItWrites) {
    const auto picture = RandomHostPicture(random, 3, 3);
    const auto rgb = New("PictureTQX", 3, 3, kRGB), gray = New("PictureTQX", 3, 3, kGA);
    Call(rgb, "DrawPictureBlueToGrayChannel", picture, 0, 0, 3, 3);
    Call(gray, "DrawPictureRGB", picture);
    Call(gray, "DrawMaskedPictureRGB", picture);
    EXPECT_EQ(ReadPixels(rgb), Bytes(27));
    EXPECT_EQ(ReadPixels(gray), Bytes(18));
}

TEST_F(DrawPicture, OfNilDrawsNothing) {
    const auto rgb = New("PictureTQX", 2, 2, kRGBA), gray = New("PictureTQX", 2, 2, kG);
    for (const Kind& kind : kKinds)
        for (int numbers = kind.toGray ? 4 : 0; numbers <= 6; numbers += 2) {
            Values arguments{Value(nullptr)};
            for (int i = 0; i < numbers; ++i) arguments.push_back(Value(i % 4 / 2 * 2));
            if (kind.masked) arguments.push_back(Value(false));
            CallWith(kind.toGray ? gray : rgb, kind.method, arguments);
        }
    EXPECT_EQ(ReadPixels(rgb), Bytes(16));
    EXPECT_EQ(ReadPixels(gray), Bytes(4));
}

// --- A picture drawn into itself --------------------------------------------------------------

// A buffer that wraps the picture, or its mask: each pixel is read when its turn comes.
TEST_F(DrawPicture, IntoABufferAroundItselfKeepsThePixelOrder) {
    for (const Kind& kind : kKinds)
        for (int round = 0; round < 60; ++round) {
            if (kind.toGray) continue;
            const int width = random.Between(20, 80), height = random.Between(2, 6);
            const auto picture = RandomHostPicture(random, width, height);
            Set(picture, "Mask", Value(RandomHostPicture(random, width, height)));
            const auto mask = MaskOf(picture);
            const bool aroundMask = random.Below(3) == 0, alpha = random.Below(2) == 0, invert = random.Below(2) == 0;
            const auto target = aroundMask ? mask : picture;
            const auto live = New("PictureTQX", target, alpha);
            HostModel model = ModelOf(picture), maskModel = ModelOf(mask);
            ModelPicture dest = NewModel(width, height, alpha ? kARGB : kXRGB);
            dest.storage = aroundMask ? maskModel.storage : model.storage;
            const Area area{random.Between(-3, 6), random.Between(-1, 2), 90, 7, random.Below(6), random.Below(2)};
            Area passed = area;
            DrawLive(kind, invert, live, picture, 6, passed);
            ReferenceDraw(kind, invert, dest, model, &maskModel, area);
            ASSERT_TRUE(SameBytes(StorageBytes(picture), model.storage->bytes)) << Describe(kind, area);
            ASSERT_TRUE(SameBytes(StorageBytes(mask), maskModel.storage->bytes)) << Describe(kind, area);
        }
}

// --- Yields -----------------------------------------------------------------------------------

class DrawYields : public DrawPicture {
  protected:
    FakeClock clock;

    Ref<Object> Buffer(int format = kRGBA, int height = 3) {
        const auto buffer = New("PictureTQX", 4, height, format);
        Set(buffer, "YieldTicks", Value(1));
        clock.AdvancePerReading(10);
        return buffer;
    }
};

TEST_F(DrawYields, ComeBeforeTheLockAfterTheCutAfterEveryRowAndAfterTheUnlock) {
    const auto buffer = Buffer();
    const auto picture = RandomHostPicture(random, 4, 3);
    std::vector<int> locks;
    const OnYield watch([&] { locks.push_back(host::PictureLockCount(picture.get())); });
    Call(buffer, "DrawPictureRGB", picture);
    EXPECT_EQ(locks, (std::vector<int>{0, 1, 1, 1, 1, 0}));
}

TEST_F(DrawYields, ComeAlsoWhenTheCutLeavesNothing) {
    const auto buffer = Buffer();
    const auto picture = RandomHostPicture(random, 4, 3);
    std::vector<int> locks;
    const OnYield watch([&] { locks.push_back(host::PictureLockCount(picture.get())); });
    Call(buffer, "DrawPictureRGB", picture, 100, 100);
    EXPECT_EQ(locks, (std::vector<int>{0, 1, 0}));
    EXPECT_EQ(ReadPixels(buffer), Bytes(48));
}

TEST_F(DrawYields, NeverComeUnlessAskedFor) {
    const auto buffer = Buffer();
    const auto picture = RandomHostPicture(random, 4, 3);
    const std::int64_t before = CallsOf("REALYieldToRB");
    for (const int ticks : {0, -5}) {
        Set(buffer, "YieldTicks", Value(ticks));
        Call(buffer, "DrawMaskedPictureRGB", picture);
    }
    EXPECT_EQ(CallsOf("REALYieldToRB"), before);
}

// Script code that closes or rebuilds the buffer, at each of the yields.
TEST_F(DrawYields, MayTakeTheBuffersStorage) {
    for (const Kind& kind : kKinds)
        for (const bool rebuild : {false, true})
            for (int at = 0; at < 6; ++at) {
                const auto buffer = Buffer(kind.toGray ? kG : kRGBA);
                const auto picture = RandomHostPicture(random, 4, 3);
                Set(picture, "Mask", Value(RandomHostPicture(random, 4, 3)));
                int yields = 0;
                const OnYield watch([&] {
                    if (yields++ != at) return;
                    if (rebuild)
                        Call(buffer, "Constructor", 1, 1, kind.toGray ? kG : kRGBA);
                    else
                        Call(buffer, "Close");
                });
                Area area{0, 0, 4, 3, 0, 0};
                DrawLive(kind, false, buffer, picture, 4, area);
                EXPECT_EQ(yields, at + 1) << "the draw ends there";
                EXPECT_TRUE(NothingIsLocked(picture)) << kind.method << " at yield " << at;
                if (rebuild) {
                    EXPECT_EQ(ReadPixels(buffer), Bytes(kind.toGray ? 1 : 4)) << "the new storage is touched";
                }
            }
}

TEST_F(DrawYields, MayReplaceTheMask) {
    const auto buffer = Buffer();
    const auto picture = FlatPicture(4, 3, 0x102030);
    Set(picture, "Mask", Value(FlatPicture(4, 3, 0x500000)));
    const OnYield watch([&] { Set(picture, "Mask", Value(nullptr)); });
    Call(buffer, "DrawMaskedPictureRGB", picture);
    for (int y = 0; y < 3; ++y) EXPECT_EQ(ByteAt(buffer, 3, y, 3), 80) << "row " << y;
}

TEST_F(DrawYields, MayCloseAViewsParent) {
    const auto parent = New("PictureTQX", 4, 3, kRGBA);
    const auto view = CallObject(parent, "ClipImage");
    Set(view, "YieldTicks", Value(1));
    clock.AdvancePerReading(10);
    const auto picture = RandomHostPicture(random, 4, 3);
    const OnYield watch([&] { Call(parent, "Close"); });
    Call(view, "DrawPictureRGB", picture);
    EXPECT_TRUE(NothingIsLocked(picture));
}

}  // namespace
