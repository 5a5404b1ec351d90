// Filtered scaling between views, mirrored and mapped pictures, in shared memory, and with script
// code that runs in yields.
#include <cstring>

#include "tests/plugin/geometry/ScaleReference.h"
#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"
#include "tests/support/MappedPictures.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;
using scale_test::Middle;
using scale_test::Plane;

constexpr int kFromWidth = 23, kFromHeight = 19, kToWidth = 31, kToHeight = 14, kMode = 3;

class ScaleStorage : public PluginTest {
  protected:
    static Plane RandomPlane(const Format& format, int width, int height, std::uint64_t seed) {
        return {format, width, height,
                Random(seed).NextBytes(static_cast<std::size_t>(width) * height * format.pixelSize)};
    }

    static Ref<Object> PictureOf(const Plane& plane) {
        const auto picture = New("PictureTQX", plane.width, plane.height, plane.format.code);
        WritePixels(picture, plane.bytes);
        return picture;
    }

    static Plane PlaneOf(const Ref<Object>& picture, const Format& format) {
        return {format, static_cast<int>(GetInt(picture, "Width")), static_cast<int>(GetInt(picture, "Height")),
                ReadPixels(picture)};
    }

    static Plane Wanted(const Plane& source, const Format& format, std::uint64_t seed) {
        Plane wanted = RandomPlane(format, kToWidth, kToHeight, seed);
        scale_test::Scale(source, wanted, kMode, kToWidth, kToHeight);
        return wanted;
    }

    static bool Scale(const Ref<Object>& self, const Ref<Object>& source, const Ref<Object>& temp) {
        return CallBool(self, "Scale", source, temp, kMode, kToWidth, kToHeight);
    }

    static const Format& Rgb() { return kFormats[1]; }
};

TEST_F(ScaleStorage, MirroredPicturesAreScaledAsTheyLook) {
    const Plane source = RandomPlane(Rgb(), kFromWidth, kFromHeight, 1);
    const auto upsideDown = CallObject(PictureOf(source), "MirroredView");
    const auto self = PictureOf(RandomPlane(Rgb(), kToWidth, kToHeight, 2));
    const auto mirroredSelf = CallObject(self, "MirroredView");
    const auto temp = New("PictureTQX", kToWidth, kFromHeight, 14);
    for (const auto& intermediate : {Ref<Object>(), CallObject(temp, "MirroredView")}) {
        ASSERT_TRUE(Scale(mirroredSelf, upsideDown, intermediate));
        EXPECT_TRUE(SameBytes(ReadPixels(mirroredSelf), Wanted(PlaneOf(upsideDown, Rgb()), Rgb(), 2).bytes));
    }
}

TEST_F(ScaleStorage, ClipsReadAndWriteTheirPartAlone) {
    const auto large = PictureOf(RandomPlane(kFormats[2], 40, 30, 3));
    const auto source = CallObject(large, "ClipImage", 5, 4, kFromWidth, kFromHeight);
    Plane cut{kFormats[2], kFromWidth, kFromHeight, Bytes(kFromWidth * kFromHeight * 4)};
    for (int y = 0; y < kFromHeight; ++y)
        std::memcpy(cut.Pixel(0, y), RowAddress(source, y) + 5 * 4, static_cast<std::size_t>(kFromWidth) * 4);
    Plane canvas = RandomPlane(Rgb(), 50, 40, 4);
    const auto target = PictureOf(canvas);
    ASSERT_TRUE(Scale(CallObject(target, "ClipImage", 7, 9, kToWidth, kToHeight), source, {}));
    const Plane wanted = Wanted(cut, Rgb(), 5);
    for (int y = 0; y < kToHeight; ++y)
        std::memcpy(canvas.Pixel(7, y + 9), wanted.Pixel(0, y), static_cast<std::size_t>(kToWidth) * 3);
    EXPECT_TRUE(SameBytes(ReadPixels(target), canvas.bytes, 150, 3));
}

TEST_F(ScaleStorage, ChannelViewsAreGray) {
    const Plane source = RandomPlane(Rgb(), kFromWidth, kFromHeight, 6);
    Plane green{kFormats[16], kFromWidth, kFromHeight, source.bytes};
    Plane canvas = RandomPlane(kFormats[2], kToWidth, kToHeight, 7);
    const auto target = PictureOf(canvas);
    ASSERT_TRUE(Scale(CallObject(target, "AlphaChannel"), CallObject(PictureOf(source), "GreenChannel"), {}));
    canvas.format = kFormats[21];
    scale_test::Scale(green, canvas, kMode, kToWidth, kToHeight);
    EXPECT_TRUE(SameBytes(ReadPixels(target), canvas.bytes, kToWidth * 4, 4));
}

// The luma of colours goes to byte 0 of a gray view's pixels, not to the channel that it shows.
TEST_F(ScaleStorage, LumaIntoAGrayClipLandsAtTheStartOfTheParentsRow) {
    const auto source = New("PictureTQX", 1, 1, 1);
    WritePixels(source, {90, 90, 90});
    const auto target = New("PictureTQX", 4, 1, 11);
    ASSERT_TRUE(CallBool(CallObject(target, "ClipImage", 2, 0, 1, 1), "Scale", source, nullptr, 1, 1, 1));
    EXPECT_NEAR(ReadPixels(target)[0], 90, 1);
    EXPECT_EQ(ReadPixels(target)[2], 0);
}

TEST_F(ScaleStorage, MappedPicturesWithSmallWindowsGiveTheSame) {
    const Plane source = RandomPlane(Rgb(), kFromWidth, kFromHeight, 8);
    const auto mappedSource = NewMapped(ScratchPath("source"), kFromWidth, kFromHeight, 1);
    WritePixels(mappedSource, source.bytes);
    const auto mappedSelf = NewMapped(ScratchPath("self"), kToWidth, kToHeight, 1);
    const auto mappedTemp = NewMapped(ScratchPath("temp"), kToWidth, kFromHeight, 14);
    const Plane wanted = Wanted(source, Rgb(), 9);
    for (const auto& temp : {Ref<Object>(), mappedTemp})
        for (const auto& from : {mappedSource, CallObject(CallObject(mappedSource, "MirroredView"), "MirroredView")}) {
            WritePixels(mappedSelf, Bytes(static_cast<std::size_t>(kToWidth) * kToHeight * 3));
            ASSERT_TRUE(Scale(mappedSelf, from, temp));
            EXPECT_TRUE(SameBytes(ReadPixels(mappedSelf), wanted.bytes, kToWidth * 3, 3));
        }
}

// Shrinking by so much that rows under way are carried from band to band.
TEST_F(ScaleStorage, StrongShrinkingOfATallPictureGivesTheSame) {
    const Plane source = RandomPlane(kFormats[2], 9, 3000, 10);
    Plane wanted = RandomPlane(kFormats[2], 600, 5, 11);
    const auto self = PictureOf(wanted);
    scale_test::Scale(source, wanted, 4, 600, 5);
    const auto from = PictureOf(source);
    ASSERT_TRUE(CallBool(self, "Scale", from, nullptr, 4, 600, 5));
    EXPECT_TRUE(SameBytes(ReadPixels(self), wanted.bytes, 2400, 4));
    ASSERT_TRUE(CallBool(self, "Scale", from, New("PictureTQX", 600, 3000, 14), 4, 600, 5));
    EXPECT_TRUE(SameBytes(ReadPixels(self), wanted.bytes, 2400, 4));
}

// The intermediate lies where self does: every pixel of self is summed from what is there when its
// turn comes.
TEST_F(ScaleStorage, SelfInTheIntermediatesMemoryIsWrittenPixelByPixel) {
    const Plane source = RandomPlane(kFormats[11], 4, 6, 12);
    const int width = 8, height = 6, rowSize = width * 16;
    const auto block = MakeBlock(static_cast<std::size_t>(rowSize * height));
    const auto temp = New("PictureTQX", block, width, height, 14, rowSize);
    const auto self = New("PictureTQX", block, width, height, 11, rowSize);
    Middle middle{width, height, {}};
    middle.pixels.resize(static_cast<std::size_t>(width * height));
    scale_test::PassAcross(source, kFormats[11], 5, middle);
    const auto lists = scale_test::ListsOf(5, height, height, false);
    auto* const bytes = reinterpret_cast<std::uint8_t*>(middle.pixels.data());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            double sum = 0;
            for (const auto& entry : lists[static_cast<std::size_t>(y)].entries)
                sum += entry.weight * middle.At(x, entry.index)[1];
            const double value = sum / lists[static_cast<std::size_t>(y)].total;
            bytes[y * rowSize + x] = static_cast<std::uint8_t>(value > 255 ? 255 : value > 0 ? value : 0);
        }
    ASSERT_TRUE(CallBool(self, "Scale", PictureOf(source), temp, 5, width, height));
    EXPECT_TRUE(SameBytes(BlockBytes(block), Bytes(bytes, bytes + rowSize * height), rowSize, 16));
}

// Rows of a supplied intermediate may lie over each other. What the last of them left there is read
// back then, and may be any number.
TEST_F(ScaleStorage, RowsOfTheIntermediateMayLieOverEachOther) {
    const Plane source = RandomPlane(Rgb(), kFromWidth, kFromHeight, 19);
    Middle middle{kToWidth, kFromHeight, {}};
    middle.pixels.resize(static_cast<std::size_t>(kToWidth) * kFromHeight);
    for (const int rowSize : {0, 67, kToWidth * 16 - 4, kToWidth * 16 - 1}) {
        const auto at = [&](int x, int y) { return static_cast<std::size_t>(y * rowSize + x * 16); };
        Bytes bytes(at(kToWidth, kFromHeight));
        Plane wanted = RandomPlane(Rgb(), kToWidth, kToHeight, 20);
        const auto self = PictureOf(wanted);
        scale_test::PassAcross(source, Rgb(), kMode, middle);
        for (int y = 0; y < kFromHeight; ++y)
            for (int x = 0; x < kToWidth; ++x) std::memcpy(&bytes[at(x, y)], &middle.At(x, y), 3 * 4);  // no alpha
        for (int y = 0; y < kFromHeight; ++y)
            for (int x = 0; x < kToWidth; ++x) std::memcpy(&middle.At(x, y), &bytes[at(x, y)], 3 * 4);
        scale_test::PassDown(middle, Rgb(), kMode, kToHeight, wanted);
        const auto block = MakeBlock(bytes.size());
        const auto temp = New("PictureTQX", block, kToWidth, kFromHeight, 14, rowSize);
        ASSERT_TRUE(Scale(self, PictureOf(source), temp));
        EXPECT_TRUE(SameBytes(BlockBytes(block), bytes)) << rowSize;
        EXPECT_TRUE(SameBytes(ReadPixels(self), wanted.bytes, kToWidth * 3, 3)) << rowSize;
    }
}

// --- Yields ------------------------------------------------------------------------------------

class ScaleYields : public ScaleStorage {
  protected:
    // Yields counted with a clock that moves on by a tick at each reading.
    static std::int64_t YieldsOf(const std::function<bool()>& scale) {
        FakeClock clock;
        clock.AdvancePerReading(1);
        const std::int64_t before = CallsOf("REALYieldToRB");
        EXPECT_TRUE(scale());
        return CallsOf("REALYieldToRB") - before;
    }
};

TEST_F(ScaleYields, ComeAtTheStartAndAfterEachListAndEachRowForEachPictureThatAsks) {
    const Plane plane = RandomPlane(Rgb(), kFromWidth, kFromHeight, 13);
    const Plane wanted = Wanted(plane, Rgb(), 14);
    constexpr int kOnce = 1 + kToWidth + kFromHeight + kToHeight + kToHeight;
    for (int asking = 0; asking < 8; ++asking) {
        const auto source = PictureOf(plane);
        const auto self = New("PictureTQX", kToWidth, kToHeight, 1);
        const auto temp = New("PictureTQX", kToWidth, kFromHeight, 14);
        int pictures = 0;
        for (const auto& [bit, picture] : {std::pair{1, source}, {2, self}, {4, temp}})
            if (asking & bit) {
                Set(picture, "YieldTicks", Value(1));
                ++pictures;
            }
        EXPECT_EQ(YieldsOf([&] { return Scale(self, source, temp); }), pictures * kOnce) << asking;
        EXPECT_TRUE(SameBytes(ReadPixels(self), wanted.bytes)) << asking;
    }
}

// A script that draws into the source between rows is seen by the rows still to come.
TEST_F(ScaleYields, RowsAreReadWhenTheirTurnComes) {
    const auto source = New("PictureTQX", 4, 20, 11);
    const auto self = New("PictureTQX", 4, 20, 11);
    Set(source, "YieldTicks", Value(1));
    FakeClock clock;
    clock.AdvancePerReading(1);
    int yields = 0;
    const OnYield drawing([&] {
        if (++yields == 1 + 4 + 10) WritePixels(source, Bytes(80, 200));  // ten rows are done
    });
    ASSERT_TRUE(CallBool(self, "Scale", source, nullptr, 1, 4, 20));
    for (int y = 0; y < 20; ++y) EXPECT_EQ(ReadRow(self, y)[0], y < 10 ? 0 : 200) << y;
}

TEST_F(ScaleYields, EndTheScalingWhenAPictureIsClosedOrBuiltAnew) {
    for (const int which : {0, 1, 2})
        for (const bool anew : {false, true})
            for (const int when : {1, 10, 40, 60, 78, 79}) {
                const auto source = PictureOf(RandomPlane(Rgb(), kFromWidth, kFromHeight, 15));
                const auto self = New("PictureTQX", kToWidth, kToHeight, 1);
                const auto temp = New("PictureTQX", kToWidth, kFromHeight, 14);
                const auto& victim = which == 0 ? source : which == 1 ? self : temp;
                Set(source, "YieldTicks", Value(1));
                FakeClock clock;
                clock.AdvancePerReading(1);
                int yields = 0;
                const OnYield closing([&] {
                    if (++yields != when) return;
                    if (anew)
                        Call(victim, "Constructor", 2, 2, which == 2 ? 14 : 1);
                    else
                        Call(victim, "Close");
                });
                constexpr int kLast = 1 + kToWidth + kFromHeight + kToHeight + kToHeight;
                EXPECT_EQ(Scale(self, source, temp), when == kLast) << which << " " << when;
                EXPECT_EQ(yields, when);
            }
}

TEST_F(ScaleYields, NeverComeWithoutTicks) {
    const auto source = PictureOf(RandomPlane(Rgb(), kFromWidth, kFromHeight, 16));
    Set(source, "YieldTicks", Value(-5));
    const auto self = New("PictureTQX", kToWidth, kToHeight, 1);
    EXPECT_EQ(YieldsOf([&] { return Scale(self, source, {}); }), 0);
}

// --- Failing memory ----------------------------------------------------------------------------

TEST_F(ScaleStorage, WithoutMemoryForBandsTheBytesAreTheSame) {
    const Plane source = RandomPlane(Rgb(), 300, 40, 17);
    Plane wanted = RandomPlane(Rgb(), 250, 30, 18);
    const auto self = PictureOf(wanted);
    const auto temp = New("PictureTQX", 250, 40, 14);
    scale_test::Scale(source, wanted, 5, 250, 30);
    const auto from = PictureOf(source);
    for (int nth = 1; nth <= 24; ++nth) {
        WritePixels(self, Bytes(250 * 30 * 3));
        const bool scaled = [&] {
            const FailingCall failing(SystemCall::Calloc, nth);
            return CallBool(self, "Scale", from, temp, 5, 250, 30);
        }();
        if (scaled) {
            EXPECT_TRUE(SameBytes(ReadPixels(self), wanted.bytes, 750, 3)) << nth;
        }
    }
    const FailingAllocations failing(4096);  // not even the lists
    EXPECT_FALSE(CallBool(self, "Scale", from, temp, 5, 250, 30));
}

// A column or row whose weights find no memory comes out 0 and the call goes on.
TEST_F(ScaleStorage, WithoutMemoryForWeightsTheResultIsZero) {
    const auto self = PictureOf(RandomPlane(Rgb(), kToWidth, kToHeight, 21));
    const auto from = PictureOf(RandomPlane(Rgb(), kFromWidth, kFromHeight, 22));
    for (const bool given : {false, true}) {
        const auto temp = given ? New("PictureTQX", kToWidth, kFromHeight, 14) : Ref<Object>();
        WritePixels(self, Bytes(kToWidth * kToHeight * 3, 9));
        const FailingAllocations failing(100'000);
        EXPECT_TRUE(Scale(self, from, temp));
        EXPECT_GT(failing.failed(), 0);
        EXPECT_EQ(ReadPixels(self), Bytes(kToWidth * kToHeight * 3)) << given;
    }
}

}  // namespace
