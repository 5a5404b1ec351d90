// Filtered scaling beside the reference, kernel by kernel and path by path.
#include <tuple>

#include "tests/plugin/geometry/ScaleReference.h"
#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;
using scale_test::Middle;
using scale_test::Plane;

struct Sizes {
    int fromWidth, fromHeight, toWidth, toHeight;
};

// Enlarging, shrinking, mixed, to one pixel, from one pixel, equal, and past the wide forms' pieces.
constexpr Sizes kSizes[] = {{5, 4, 13, 11}, {23, 19, 7, 6},   {7, 21, 20, 5}, {21, 7, 5, 20},   {9, 11, 1, 1},
                            {1, 1, 6, 9},   {12, 10, 12, 10}, {40, 9, 39, 8}, {70, 20, 33, 41}, {8, 8, 70, 3}};

Plane RandomPlane(const Format& format, int width, int height, std::uint64_t seed) {
    return {format, width, height, Random(seed).NextBytes(static_cast<std::size_t>(width) * height * format.pixelSize)};
}

Ref<Object> PictureOf(const Plane& plane) {
    const auto picture = New("PictureTQX", plane.width, plane.height, plane.format.code);
    WritePixels(picture, plane.bytes);
    return picture;
}

// The reference's result in a self of random bytes, and the same self as a picture.
struct Expected {
    Plane plane;
    Ref<Object> picture;
};

Expected ExpectedOf(const Plane& source, const Format& self, int selfWidth, int selfHeight, int mode, int width,
                    int height) {
    Plane plane = RandomPlane(self, selfWidth, selfHeight, 99);
    const auto picture = PictureOf(plane);
    scale_test::Scale(source, plane, mode, width, height);
    return {plane, picture};
}

class ScaleKernels : public PluginTest, public ::testing::WithParamInterface<int> {};

TEST_P(ScaleKernels, GiveTheBytesOfTheReferenceForAllPairsOfLayouts) {
    for (const Format& from : ChannelFormats())
        for (const Format& to : ChannelFormats()) {
            const Sizes& size = kSizes[(from.code + to.code * 3) % std::size(kSizes)];
            const Plane source = RandomPlane(from, size.fromWidth, size.fromHeight, 7);
            const Expected expected =
                ExpectedOf(source, to, size.toWidth, size.toHeight, GetParam(), size.toWidth, size.toHeight);
            ASSERT_TRUE(CallBool(expected.picture, "Scale", PictureOf(source), nullptr, GetParam(), size.toWidth,
                                 size.toHeight));
            ASSERT_TRUE(SameBytes(ReadPixels(expected.picture), expected.plane.bytes, size.toWidth * to.pixelSize,
                                  to.pixelSize))
                << from.name << " to " << to.name;
        }
}

TEST_P(ScaleKernels, GiveTheBytesOfTheReferenceAtEverySize) {
    for (const int code : {1, 2, 11, 12})
        for (const Sizes& size : kSizes) {
            const Plane source = RandomPlane(kFormats[code], size.fromWidth, size.fromHeight, 8);
            const Expected expected = ExpectedOf(source, kFormats[code], size.toWidth, size.toHeight, GetParam(),
                                                 size.toWidth, size.toHeight);
            ASSERT_TRUE(CallBool(expected.picture, "Scale", PictureOf(source), nullptr, GetParam(), size.toWidth,
                                 size.toHeight));
            ASSERT_TRUE(SameBytes(ReadPixels(expected.picture), expected.plane.bytes,
                                  size.toWidth * kFormats[code].pixelSize, kFormats[code].pixelSize))
                << kFormats[code].name << " " << size.fromWidth << "x" << size.fromHeight << " to " << size.toWidth
                << "x" << size.toHeight;
        }
}

// A supplied intermediate must hold exactly these floats, slots that no value goes to included.
TEST_P(ScaleKernels, LeaveTheValuesOfTheFirstPassInASuppliedIntermediate) {
    for (const auto& [from, to] : {std::pair{1, 1}, {1, 11}, {2, 2}, {2, 12}, {11, 11}, {12, 12}, {12, 2}, {7, 13}})
        for (const Sizes& size : kSizes) {
            const Plane source = RandomPlane(kFormats[from], size.fromWidth, size.fromHeight, 9);
            const auto temp = New("PictureTQX", size.toWidth, size.fromHeight, 14);
            Middle middle{size.toWidth, size.fromHeight, {}};
            middle.pixels.assign(static_cast<std::size_t>(middle.width) * middle.height, {1.5F, 2.5F, 3.5F, 4.5F});
            const auto bytesOf = [&] {
                const auto* const first = reinterpret_cast<const std::uint8_t*>(middle.pixels.data());
                return Bytes(first, first + middle.pixels.size() * 16);
            };
            WritePixels(temp, bytesOf());
            const Expected expected =
                ExpectedOf(source, kFormats[to], size.toWidth, size.toHeight, GetParam(), size.toWidth, size.toHeight);
            scale_test::PassAcross(source, kFormats[to], GetParam(), middle);
            ASSERT_TRUE(
                CallBool(expected.picture, "Scale", PictureOf(source), temp, GetParam(), size.toWidth, size.toHeight));
            ASSERT_TRUE(SameBytes(ReadPixels(temp), bytesOf(), size.toWidth * 16, 16)) << from << " to " << to;
            ASSERT_TRUE(SameBytes(ReadPixels(expected.picture), expected.plane.bytes)) << from << " to " << to;
        }
}

TEST_P(ScaleKernels, KeepConstantPicturesConstantBarTruncation) {
    const auto source = New("PictureTQX", 17, 23, 11);
    WritePixels(source, Bytes(17 * 23, 200));
    for (int size = 1; size <= 70; ++size) {
        const auto self = New("PictureTQX", size, 71 - size, 11);
        ASSERT_TRUE(CallBool(self, "Scale", source, nullptr, GetParam(), size, 71 - size));
        for (const std::uint8_t byte : ReadPixels(self)) ASSERT_TRUE(byte == 200 || byte == 199) << int{byte};
    }
}

TEST_P(ScaleKernels, KeepSymmetryWithinOne) {
    Plane plane = RandomPlane(kFormats[11], 30, 1, 3);
    for (int x = 0; x < 15; ++x) *plane.Pixel(29 - x, 0) = *plane.Pixel(x, 0);
    for (const int width : {1, 7, 22, 30, 61}) {
        const auto self = New("PictureTQX", width, 1, 11);
        ASSERT_TRUE(CallBool(self, "Scale", PictureOf(plane), nullptr, GetParam(), width, 1));
        const Bytes row = ReadRow(self, 0);
        for (int x = 0; x < width; ++x) ASSERT_NEAR(row[x], row[width - 1 - x], 1);
    }
}

INSTANTIATE_TEST_SUITE_P(Every, ScaleKernels, ::testing::Range(1, scale_test::kModes + 1),
                         [](const auto& kernel) { return scale_test::kModeNames[kernel.param]; });

class Scale : public PluginTest {};

TEST_F(Scale, RefusesWhatItCannotScale) {
    const auto source = New("PictureTQX", 4, 4, 1);
    const auto self = New("PictureTQX", 4, 4, 1);
    FillRandom(source, 1);
    FillRandom(self, 2);
    const Bytes before = ReadPixels(self);
    EXPECT_FALSE(CallBool(self, "Scale", nullptr, nullptr, 1, 4, 4));
    for (const int size : {0, -1, -2147483647 - 1}) {
        EXPECT_FALSE(CallBool(self, "Scale", source, nullptr, 1, size, 4));
        EXPECT_FALSE(CallBool(self, "Scale", source, nullptr, 1, 4, size));
    }
    for (const int mode : {0, 8, -1, 2147483647}) EXPECT_FALSE(CallBool(self, "Scale", source, nullptr, mode, 4, 4));
    EXPECT_FALSE(CallBool(self, "Scale", source, nullptr, 1, 2147483647, 4));  // no such intermediate
    EXPECT_FALSE(CallBool(self, "Scale", source, New("PictureTQX", 4, 4, 2), 1, 4, 4));
    EXPECT_FALSE(CallBool(self, "Scale", source, New("PictureTQX", 4, -4, 14), 1, 4, 4));
    EXPECT_FALSE(CallBool(self, "Scale", source, New("PictureTQX", 4, 0, 14), 1, 4, 4));
    EXPECT_FALSE(CallBool(self, "Scale", New("PictureTQX", 4, -4, 1), nullptr, 1, 4, 4));
    EXPECT_FALSE(CallBool(self, "Scale", New("PictureTQX", 4, 0, 1), nullptr, 1, 4, 4));
    EXPECT_FALSE(CallBool(self, "Scale", New("PictureTQX", 4, 4, 14), nullptr, 1, 4, 4));
    EXPECT_FALSE(CallBool(New("PictureTQX", 4, 4, 14), "Scale", source, nullptr, 1, 4, 4));
    EXPECT_EQ(ReadPixels(self), before);
}

TEST_F(Scale, OfClosedPicturesIsRefused) {
    const auto open = New("PictureTQX", 4, 4, 1);
    const auto closed = New("PictureTQX", 4, 4, 1);
    Call(closed, "Close");
    EXPECT_FALSE(CallBool(open, "Scale", closed, nullptr, 1, 4, 4));
    EXPECT_FALSE(CallBool(closed, "Scale", open, nullptr, 1, 4, 4));
    const auto temp = New("PictureTQX", 4, 4, 14);
    Call(temp, "Close");
    EXPECT_FALSE(CallBool(open, "Scale", open, temp, 1, 4, 4));
}

TEST_F(Scale, AsksTheFactoryOfSelfForItsIntermediateAndReleasesIt) {
    const auto source = New("PictureTQX", 6, 9, 1);
    const auto self = New("PictureTQX", 4, 4, 1);
    const auto given = New("PictureTQX", 4, 9, 14);
    std::vector<std::string> asked;
    Set(self, "Factory", NewFactory([&](int width, int height, int format) {
            asked.push_back(std::to_string(width) + "x" + std::to_string(height) + " " + std::to_string(format));
            return given;
        }));
    FillRandom(source, 4);
    EXPECT_TRUE(CallBool(self, "Scale", source, nullptr, 3, 4, 4));
    EXPECT_FALSE(CallBool(self, "Scale", source, nullptr, 8, 4, 4));  // asks before it looks at the mode
    EXPECT_EQ(asked, (std::vector<std::string>{"4x9 14", "4x9 14"}));
    EXPECT_EQ(given->references, 1);
    EXPECT_NE(ReadPixels(given), Bytes(4 * 9 * 16));  // a script may look at it, so it is written
}

TEST_F(Scale, RefusesAnIntermediateOfAnotherFormatFromAFactory) {
    const auto self = New("PictureTQX", 4, 4, 1);
    Set(self, "Factory", NewFactory([](int width, int height, int) { return New("PictureTQX", width, height, 2); }));
    EXPECT_FALSE(CallBool(self, "Scale", New("PictureTQX", 6, 9, 1), nullptr, 3, 4, 4));
}

TEST_F(Scale, SkipsWhatSelfDoesNotHave) {
    const Plane source = RandomPlane(kFormats[1], 9, 8, 5);
    for (const auto& [width, height] : {std::pair{30, 20}, {6, 5}, {12, 3}}) {
        const Expected expected = ExpectedOf(source, kFormats[1], 11, 7, 5, width, height);
        ASSERT_TRUE(CallBool(expected.picture, "Scale", PictureOf(source), nullptr, 5, width, height));
        EXPECT_TRUE(SameBytes(ReadPixels(expected.picture), expected.plane.bytes, 33, 3)) << width << "x" << height;
    }
}

// Columns and rows that the intermediate does not have add nothing, but rows keep their weight.
TEST_F(Scale, CountsWhatASmallIntermediateLacksAsAbsent) {
    const Plane source = RandomPlane(kFormats[1], 9, 8, 6);
    Plane wanted = RandomPlane(kFormats[1], 10, 10, 98);
    const auto self = PictureOf(wanted);
    const auto temp = New("PictureTQX", 7, 5, 14);
    Middle middle{10, 8, {}};
    middle.pixels.resize(80);
    scale_test::PassAcross(source, kFormats[1], 3, middle);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 10; ++x)
            if (x >= 7 || y >= 5) middle.At(x, y) = {};
    scale_test::PassDown(middle, kFormats[1], 3, 10, wanted);
    ASSERT_TRUE(CallBool(self, "Scale", PictureOf(source), temp, 3, 10, 10));
    EXPECT_TRUE(SameBytes(ReadPixels(self), wanted.bytes, 30, 3));
}

TEST_F(Scale, HugeSizesIntoASmallSelfAndIntermediateTouchOnlyWhatIsThere) {
    const auto source = New("PictureTQX", 5, 5, 1);
    FillRandom(source, 3);
    const auto self = New("PictureTQX", 4, 4, 1);
    const auto temp = New("PictureTQX", 3, 2, 14);
    for (const int mode : {1, 2, 3, 4, 5, 6, 7})
        EXPECT_TRUE(CallBool(self, "Scale", source, temp, mode, 2147483647, 2147483647));
}

// The luma of colours goes to a gray picture's red, green and blue positions: byte 0, which in
// this layout is alpha.
TEST_F(Scale, PutsLumaIntoTheFirstByteOfAlphaAndGray) {
    const auto source = New("PictureTQX", 1, 1, 1);
    WritePixels(source, {100, 100, 100});
    const auto self = New("PictureTQX", 1, 1, 13);
    WritePixels(self, {7, 8});
    ASSERT_TRUE(CallBool(self, "Scale", source, nullptr, 1, 1, 1));
    EXPECT_EQ(ReadPixels(self)[1], 8);
    EXPECT_NEAR(ReadPixels(self)[0], 100, 1);
    const auto second = New("PictureTQX", 1, 1, 16);  // the second of three
    WritePixels(second, {7, 8, 9});
    ASSERT_TRUE(CallBool(second, "Scale", source, nullptr, 1, 1, 1));
    EXPECT_EQ(ReadPixels(second), (Bytes{ReadPixels(self)[0], 8, 9}));
}

TEST_F(Scale, LeavesAlphaOfColoursFromGrayWithAlpha) {
    const auto source = New("PictureTQX", 1, 1, 12);
    WritePixels(source, {50, 60});
    const auto self = New("PictureTQX", 1, 1, 2);
    WritePixels(self, {1, 2, 3, 77});
    ASSERT_TRUE(CallBool(self, "Scale", source, nullptr, 1, 1, 1));
    EXPECT_EQ(ReadPixels(self), (Bytes{50, 50, 50, 77}));
}

TEST_F(Scale, BoxTakesBothSamplesHalfWay) {
    const auto source = New("PictureTQX", 4, 1, 11);
    WritePixels(source, {10, 20, 40, 80});
    const auto self = New("PictureTQX", 2, 1, 11);
    ASSERT_TRUE(CallBool(self, "Scale", source, nullptr, 2, 2, 1));
    EXPECT_EQ(ReadPixels(self), (Bytes{15, 60}));
}

TEST_F(Scale, BoxOfTheSameWidthIsACopyAndOneAndAHalfTimesMeansTheMiddle) {
    const auto source = New("PictureTQX", 2, 1, 11);
    WritePixels(source, {10, 20});
    const auto same = New("PictureTQX", 2, 1, 11), wider = New("PictureTQX", 3, 1, 11);
    ASSERT_TRUE(CallBool(same, "Scale", source, nullptr, 2, 2, 1));
    EXPECT_EQ(ReadPixels(same), (Bytes{10, 20}));
    ASSERT_TRUE(CallBool(wider, "Scale", source, nullptr, 2, 3, 1));
    EXPECT_EQ(ReadPixels(wider), (Bytes{10, 15, 20})) << "its centre lies half-way and takes both";
}

// What lies outside is dropped and the rest made up to its own total.
TEST_F(Scale, EdgesDoNotDarken) {
    const auto source = New("PictureTQX", 2, 1, 11);
    WritePixels(source, {100, 200});
    const auto self = New("PictureTQX", 4, 1, 11);
    ASSERT_TRUE(CallBool(self, "Scale", source, nullptr, 1, 4, 1));
    EXPECT_EQ(ReadPixels(self), (Bytes{100, 125, 175, 200}));
}

TEST_F(Scale, TruncatesInsteadOfRounding) {
    const auto source = New("PictureTQX", 2, 1, 11);
    WritePixels(source, {254, 255});
    const auto self = New("PictureTQX", 1, 1, 11);
    ASSERT_TRUE(CallBool(self, "Scale", source, nullptr, 2, 1, 1));
    EXPECT_EQ(ReadPixels(self), Bytes{254});
}

TEST_F(Scale, IntoItselfReadsTheWholeSourceFirst) {
    const Plane source = RandomPlane(kFormats[1], 33, 20, 11);
    Plane wanted = source;
    const auto picture = PictureOf(source);
    scale_test::Scale(source, wanted, 4, 33, 20);
    ASSERT_TRUE(CallBool(picture, "Scale", picture, nullptr, 4, 33, 20));
    EXPECT_TRUE(SameBytes(ReadPixels(picture), wanted.bytes, 99, 3));
}

}  // namespace
