// Filtered scaling both ways: quickly, where no intermediate is given, and by the doubles of its definition,
// where one is. Pictures that leave nothing undecided, a little, much and nearly everything.
#include <functional>

#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

constexpr int kTriangle = 1, kBox = 2, kCubic = 7, kScaling = 14;

// The byte of a channel at a place.
using Painting = std::function<int(Random& random, int x, int y, int channel)>;

struct Painted {
    const char* name;
    Painting paint;
};

const Painted kPaintings[] = {
    {"noise", [](Random& random, int, int, int) { return static_cast<int>(random.Next() & 255); }},
    {"white", [](Random&, int, int, int) { return 255; }},
    {"three flat fields", [](Random&, int x, int y, int channel) { return (x / 97 + y / 61 + channel) % 3 * 100 + 7; }},
    {"ramp across", [](Random&, int x, int, int channel) { return (x + channel) & 255; }},
    {"ramp down", [](Random&, int, int y, int channel) { return (y + 3 * channel) & 255; }},
    {"slow diagonal ramp", [](Random&, int x, int y, int) { return (x + y) / 7 & 255; }},
    {"saturated chessboard", [](Random&, int x, int y, int) { return ((x / 5 + y / 3) & 1) * 255; }},
    {"columns of full contrast", [](Random&, int x, int, int) { return (x & 1) * 255; }},
    {"a flat channel beside noise",
     [](Random& random, int, int, int channel) { return channel == 0 ? 255 : static_cast<int>(random.Next() & 255); }},
    {"paper with specks", [](Random& random, int, int,
                             int) { return random.Next() % 400 == 0 ? static_cast<int>(random.Next() & 255) : 255; }},
    {"black but for single steps", [](Random&, int x, int y, int) { return x % 83 == 0 || y % 71 == 0 ? 1 : 0; }},
};

Ref<Object> PictureOf(const Painted& painted, const Format& format, int width, int height) {
    Random random(static_cast<std::uint64_t>(width) * 31 + static_cast<std::uint64_t>(height));
    const auto picture = New("PictureTQX", width, height, format.code);
    Bytes bytes;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < format.pixelSize; ++c)
                bytes.push_back(static_cast<std::uint8_t>(painted.paint(random, x, y, c)));
    WritePixels(picture, bytes);
    return picture;
}

struct Sizes {
    int fromWidth, fromHeight, toWidth, toHeight;
};

// Powers of two and simple ratios, whose sums fall on whole numbers, and others; parts of bands and of
// pieces at the ends; from very few samples and from very many.
constexpr Sizes kSizes[] = {{400, 300, 100, 75},  {400, 300, 300, 225}, {100, 75, 400, 300}, {211, 157, 423, 101},
                            {333, 217, 333, 217}, {640, 480, 21, 16},   {17, 9, 500, 333},   {3000, 40, 64, 200}};

class ScaleQuickly : public PluginTest, public ::testing::WithParamInterface<int> {
  protected:
    // Both ways, with one kernel.
    void ExpectSame(const Painted& painted, const Format& format, const Sizes& sizes) {
        const auto source = PictureOf(painted, format, sizes.fromWidth, sizes.fromHeight);
        const auto quick = New("PictureTQX", sizes.toWidth, sizes.toHeight, format.code);
        const auto defined = New("PictureTQX", sizes.toWidth, sizes.toHeight, format.code);
        const auto between = New("PictureTQX", sizes.toWidth, sizes.fromHeight, kScaling);
        ASSERT_TRUE(CallBool(quick, "Scale", source, nullptr, GetParam(), sizes.toWidth, sizes.toHeight));
        ASSERT_TRUE(CallBool(defined, "Scale", source, between, GetParam(), sizes.toWidth, sizes.toHeight));
        ASSERT_TRUE(
            SameBytes(ReadPixels(quick), ReadPixels(defined), sizes.toWidth * format.pixelSize, format.pixelSize))
            << painted.name << " in " << format.name << ", " << sizes.fromWidth << " x " << sizes.fromHeight << " to "
            << sizes.toWidth << " x " << sizes.toHeight;
    }
};

TEST_P(ScaleQuickly, GivesTheBytesOfTheDoubles) {
    for (const Painted& painted : kPaintings)
        for (const int format : {1, 2, 11, 12, 10})
            for (const Sizes& sizes : kSizes) ExpectSame(painted, kFormats[format], sizes);
}

// Whole numbers serve where both factors are powers of two, up to 32.
constexpr Sizes kPowersOfTwo[] = {{301, 203, 602, 406}, {77, 31, 308, 248}, {61, 37, 488, 37}, {9, 70, 288, 70},
                                  {40, 5, 80, 160},     {1, 1, 32, 32},     {2, 3, 32, 48},    {50, 7, 50, 7},
                                  {13, 11, 832, 22},    {13, 11, 26, 704},  {13, 11, 78, 44},  {500, 2, 1000, 5},
                                  {211, 3, 1266, 24},   {1000, 3, 4000, 12}};

class ScaleInWholeNumbers : public ScaleQuickly {};

TEST_P(ScaleInWholeNumbers, GivesTheBytesOfTheDoubles) {
    for (const Painted& painted : kPaintings)
        for (const int format : {1, 2, 6, 8, 11, 12, 10})
            for (const Sizes& sizes : kPowersOfTwo) ExpectSame(painted, kFormats[format], sizes);
}

Bytes Enlarged(const Ref<Object>& source, const Format& format, int mode, int width, int height) {
    const auto self = New("PictureTQX", width, height, format.code);
    EXPECT_TRUE(CallBool(self, "Scale", source, nullptr, mode, width, height));
    return ReadPixels(self);
}

// What is large enough to be stored past the cache, beside the same in another order of channels, which isn't.
TEST_P(ScaleQuickly, WritesLargeResultsLikeOthers) {
    constexpr int kWidth = 4000, kHeight = 3000, kRgb = 1, kBgr = 6;
    const auto source = PictureOf(kPaintings[0], kFormats[kRgb], 250, 190);
    const Bytes large = Enlarged(source, kFormats[kRgb], GetParam(), kWidth, kHeight);
    Bytes turned = Enlarged(source, kFormats[kBgr], GetParam(), kWidth, kHeight);
    for (std::size_t i = 0; i < turned.size(); i += 3) std::swap(turned[i], turned[i + 2]);
    EXPECT_TRUE(SameBytes(large, turned, kWidth * 3, 3));
}

INSTANTIATE_TEST_SUITE_P(EveryKernel, ScaleQuickly, ::testing::Range(kTriangle, kCubic + 1));

INSTANTIATE_TEST_SUITE_P(TriangleAndBox, ScaleInWholeNumbers, ::testing::Range(kTriangle, kBox + 1));

}  // namespace
