// Box and fractional blurs beside models that sum every window anew.
#include <climits>
#include <cmath>
#include <limits>

#include "tests/plugin/filters/FilterScenes.h"
#include "tests/plugin/filters/RandomScenes.h"
#include "tests/support/Interpose.h"
#include "tests/support/MappedPictures.h"
#include "tests/support/Yields.h"

namespace {

using namespace support;
using namespace scenes;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr int kMissing = -1;

// One channel of a picture as numbers; kMissing where the picture has no row.
using Plane = std::vector<std::vector<int>>;

struct Extent {
    int width, height;
};

Plane ReadPlane(const Pixels& pixels, Channel channel, Extent extent) {
    Plane plane(static_cast<std::size_t>(extent.height), std::vector<int>(static_cast<std::size_t>(extent.width)));
    for (int y = 0; y < extent.height; ++y)
        for (int x = 0; x < extent.width; ++x)
            plane[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] =
                pixels.Has(x, y) ? pixels.Value(x, y, channel) : kMissing;
    return plane;
}

using Mix = std::function<int(const Plane& plane, int x, int y)>;

// Two passes, each over all rows: down the columns from the source as it was, then along the
// destination's rows, a row at a time.
Reference TwoPasses(const Mix& down, const Mix& along) {
    return [=](const Pixels& source, const Pixels& destination) {
        const Extent extent{std::min(source.width, destination.width), std::min(source.height, destination.height)};
        if (extent.width < 1 || extent.height < 1) return;
        std::vector<Plane> before;
        for (const Channel channel : source.channels) before.push_back(ReadPlane(source, channel, extent));
        const auto present = [&](int y) { return source.Has(0, y) && destination.Has(0, y); };
        for (int y = 0; y < extent.height; ++y)
            for (int x = 0; x < extent.width && present(y); ++x)
                for (std::size_t c = 0; c < before.size(); ++c)
                    *destination.At(x, y, source.channels[c]) = static_cast<std::uint8_t>(down(before[c], x, y));
        for (int y = 0; y < extent.height; ++y) {
            if (!present(y)) continue;
            std::vector<Plane> row;
            for (const Channel channel : source.channels) {
                Plane one(1);
                for (int x = 0; x < extent.width; ++x) one[0].push_back(destination.Value(x, y, channel));
                row.push_back(one);
            }
            for (int x = 0; x < extent.width; ++x)
                for (std::size_t c = 0; c < row.size(); ++c)
                    *destination.At(x, y, source.channels[c]) = static_cast<std::uint8_t>(along(row[c], x, 0));
        }
    };
}

int Get(const Plane& plane, int x, int y) {
    return std::max(plane[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)], 0);
}

int Width(const Plane& plane) { return static_cast<int>(plane[0].size()); }
int Height(const Plane& plane) { return static_cast<int>(plane.size()); }

Reference BoxWalk(std::int64_t radius) {
    const auto window = [radius](int centre, int last, const auto& value) {
        std::int64_t sum = 0;
        const std::int64_t from = centre - radius, to = centre + radius;
        for (std::int64_t i = std::max<std::int64_t>(from, 0); i <= std::min<std::int64_t>(to, last); ++i)
            sum += value(static_cast<int>(i));
        if (from < 0) sum += -from * value(0);
        if (to > last) sum += (to - last) * value(last);
        return static_cast<int>(sum / (2 * radius + 1));
    };
    return TwoPasses([=](const Plane& plane, int x,
                         int y) { return window(y, Height(plane) - 1, [&](int i) { return Get(plane, x, i); }); },
                     [=](const Plane& plane, int x, int y) {
                         return window(x, Width(plane) - 1, [&](int i) { return Get(plane, i, y); });
                     });
}

int Mixed(double fraction, int neighbours, int centre) {
    const double norm = 1 / (2 * fraction + 1);
    const double value = norm * std::fma(fraction, static_cast<double>(neighbours), static_cast<double>(centre));
    return std::isnan(value) ? 0 : static_cast<int>(value);
}

// A radius that is no finite number copies.
Reference FractionalWalk(double radius) {
    const double fraction = std::isfinite(radius) ? radius - std::floor(radius) : 0;
    return TwoPasses(
        [=](const Plane& plane, int x, int y) {
            const int centre = Get(plane, x, y);
            if (y == 0) return Mixed(fraction, 2 * centre, centre);
            const int below = y == Height(plane) - 1 ? centre : Get(plane, x, y + 1);
            return Mixed(fraction, Get(plane, x, y - 1) + below, centre);
        },
        [=](const Plane& plane, int x, int y) {
            const int centre = Get(plane, x, y);
            if (x == Width(plane) - 1) return Mixed(fraction, 2 * centre, centre);
            return Mixed(fraction, (x == 0 ? centre : Get(plane, x - 1, y)) + Get(plane, x + 1, y), centre);
        });
}

Filter Box(double radius) {
    return [=](const auto& picture, const auto& to) { return CallObject(picture, "BoxBlurFilter", to, radius); };
}

Filter Fractional(double radius) {
    return
        [=](const auto& picture, const auto& to) { return CallObject(picture, "BoxBlurFractionalFilter", to, radius); };
}

Ref<Object> GrayPicture(int width, int height, const Bytes& pixels) {
    const auto picture = New("PictureTQX", width, height, 11);
    WritePixels(picture, pixels);
    return picture;
}

class BoxBlur : public PluginTest {};

TEST_F(BoxBlur, ServesEveryViewSharingAndFormat) {
    for (const int radius : {1, 3, 40}) ExpectScenes(AllScenes(), Box(radius), BoxWalk(radius));
}

TEST_F(BoxBlur, ServesRandomScenes) {
    const auto draw = [](Random& random) {
        const int radius = random.Between(0, random.Below(4) == 0 ? 4210751 : 30);
        return Trial{Box(radius), BoxWalk(radius)};
    };
    ExpectRandomScenes(1000, draw);
}

TEST_F(BoxBlur, TakesEveryRadius) {
    const std::pair<double, int> radii[] = {
        {0, 0},     {0.9, 0},   {-0.5, 0},    {-1e9, 0},      {-kInfinity, 0},    {kNotANumber, 0},
        {1.99, 1},  {2, 2},     {5, 5},       {63, 63},       {64, 64},           {127, 127},
        {128, 128}, {129, 129}, {1000, 1000}, {65535, 65535}, {4000000, 4000000}, {4210751.9, 4210751}};
    for (const auto& [radius, whole] : radii)
        for (const int format : {11, 1, 12, 2}) {
            SCOPED_TRACE(radius);
            ExpectScene(Plain(format, 75, 9), Box(radius), BoxWalk(whole));
            ExpectScene(Plain(format, 1, 5), Box(radius), BoxWalk(whole));
            ExpectScene(Plain(format, 5, 1), Box(radius), BoxWalk(whole));
        }
}

TEST_F(BoxBlur, LeavesTheDestinationForARadiusThatIsTooLarge) {
    const auto picture = GrayPicture(2, 1, {10, 20});
    for (const double radius : {4210752.0, 1e9, 1e300, kInfinity}) {
        const auto destination = GrayPicture(2, 1, {1, 2});
        EXPECT_EQ(CallObject(picture, "BoxBlurFilter", destination, radius), destination);
        EXPECT_EQ(ReadPixels(destination), (Bytes{1, 2}));
    }
    EXPECT_EQ(ReadPixels(CallObject(picture, "BoxBlurFilter", nullptr, 4210751.0)), (Bytes{14, 15}));
}

TEST_F(BoxBlur, TruncatesAfterEachDirection) {
    Bytes dot(25, 0);
    dot[12] = 255;
    EXPECT_EQ(ByteAt(CallObject(GrayPicture(5, 5, dot), "BoxBlurFilter", nullptr, 1.0), 2, 2, 0), 28);
    EXPECT_EQ(ByteAt(CallObject(GrayPicture(1, 5, {0, 0, 255, 0, 0}), "BoxBlurFilter", nullptr, 1.0), 0, 2, 0), 85);
    Bytes corner(25, 0);
    corner[0] = 90;
    EXPECT_EQ(ByteAt(CallObject(GrayPicture(5, 5, corner), "BoxBlurFilter", nullptr, 1.0), 0, 0, 0), 40);
    EXPECT_EQ(ByteAt(CallObject(GrayPicture(1, 5, {90, 0, 0, 0, 0}), "BoxBlurFilter", nullptr, 1.0), 0, 0, 0), 60);
}

TEST_F(BoxBlur, KeepsAFlatPicture) {
    for (const int radius : {1, 7, 200}) {
        const auto result = CallObject(GrayPicture(100, 20, Bytes(2000, 77)), "BoxBlurFilter", nullptr, radius);
        EXPECT_EQ(ReadPixels(result), Bytes(2000, 77));
    }
}

TEST_F(BoxBlur, RepeatsIntoNewPictures) {
    const auto picture = New("PictureTQX", 12, 9, 2);
    FillRandom(picture, 1);
    auto expected = picture;
    for (int i = 0; i < 5; ++i) expected = CallObject(expected, "BoxBlurFilter", nullptr, 2.0);
    const auto destination = New("PictureTQX", 12, 9, 2);
    const auto result = CallObject(picture, "BoxBlurFilter", destination, 2.0, 5);
    EXPECT_EQ(ReadPixels(result), ReadPixels(expected));
    EXPECT_NE(result, destination);
    EXPECT_EQ(ReadPixels(destination), ReadPixels(CallObject(picture, "BoxBlurFilter", nullptr, 2.0)));
    EXPECT_EQ(CallObject(picture, "BoxBlurFilter", destination, 2.0, 1), destination);
}

TEST_F(BoxBlur, GivesThePictureItselfForLessThanOneIteration) {
    const auto picture = New("PictureTQX", 4, 4, 1);
    const auto destination = New("PictureTQX", 4, 4, 1);
    FillRandom(picture, 2);
    for (const int iterations : {0, -1, INT_MIN})
        EXPECT_EQ(CallObject(picture, "BoxBlurFilter", destination, 1.0, iterations), picture);
    EXPECT_EQ(ReadPixels(destination), Bytes(48, 0));
}

TEST_F(BoxBlur, IterationsEndWithTheFirstThatGivesNothing) {
    const auto picture = New("PictureTQX", 4, 4, 1);
    const FailingHostFunction failing("PluginNewInstance", 3);
    EXPECT_FALSE(CallObject(picture, "BoxBlurFilter", nullptr, 1.0, 5));
    EXPECT_EQ(failing.calls(), 3);
}

// Rows that were overwritten are kept only so far; then the columns are blurred strip by strip.
TEST_F(BoxBlur, BlursLargePicturesInPlaceByStrips) {
    const auto picture = New("PictureTQX", 4300, 4000, 11);
    for (int y = 0; y < 4000; ++y) {
        std::uint8_t* const row = RowAddress(picture, y);
        for (int x = 0; x < 4300; ++x) row[x] = static_cast<std::uint8_t>(x * 7 + y * y / 16 + x * y / 512);
    }
    const auto expected = CallObject(picture, "BoxBlurFilter", nullptr, 4000.0);
    EXPECT_EQ(CallObject(picture, "BoxBlurFilter", picture, 4000.0), picture);
    for (int y = 0; y < 4000; y += 37) ASSERT_TRUE(SameBytes(ReadRow(picture, y), ReadRow(expected, y))) << y;
}

// No allocation that fails leaves half a blur behind.
TEST_F(BoxBlur, LeavesTheDestinationWhenMemoryIsShort) {
    const auto picture = New("PictureTQX", 600, 40, 1);
    FillRandom(picture, 3);
    const Bytes before = ReadPixels(picture);
    const auto view = CallObject(picture, "RGBChannels");
    const Bytes blurred = [&] {
        const auto copy = CallObject(picture, "Clone");
        CallObject(copy, "BoxBlurFilter", copy, 3.0);
        return ReadPixels(copy);
    }();
    int failures = 0;
    for (int nth = 1;; ++nth) {
        const FailingCall failing(SystemCall::Calloc, nth);
        CallObject(picture, "BoxBlurFilter", view, 3.0);
        if (failing.failed() == 0) break;
        ++failures;
        ASSERT_TRUE(SameBytes(ReadPixels(picture), before));
    }
    EXPECT_GE(failures, 3);
    EXPECT_TRUE(SameBytes(ReadPixels(picture), blurred));
}

TEST_F(BoxBlur, YieldsOnceForEachPicture) {
    ExpectOneYieldForEach([](const auto& picture, const auto& to) { CallObject(picture, "BoxBlurFilter", to, 1.0); });
}

class FractionalBlur : public PluginTest {};

TEST_F(FractionalBlur, ServesEveryViewSharingAndFormat) {
    for (const double radius : {0.4, 1.75}) ExpectScenes(AllScenes(), Fractional(radius), FractionalWalk(radius));
}

TEST_F(FractionalBlur, ServesRandomScenes) {
    const auto draw = [](Random& random) {
        const double radius = random.Below(2) == 0 ? random.Below(1000) / 1000.0 : AnyDouble(random);
        return Trial{Fractional(radius), FractionalWalk(radius)};
    };
    ExpectRandomScenes(1000, draw);
}

TEST_F(FractionalBlur, TakesEveryRadius) {
    for (const double radius : {0.0, 0.1, 0.25, 0.3, 0.5, 0.9, 0.999999, 1.0, 2.0, 7.4, -0.25, -1e-20, -7.9, 1e300,
                                -1e300, kInfinity, -kInfinity, kNotANumber})
        for (const int format : {11, 1, 12, 2}) {
            SCOPED_TRACE(radius);
            ExpectScene(Plain(format, 75, 9), Fractional(radius), FractionalWalk(radius));
            ExpectScene(Plain(format, 1, 3), Fractional(radius), FractionalWalk(radius));
            ExpectScene(Plain(format, 3, 1), Fractional(radius), FractionalWalk(radius));
            ExpectScene(Plain(format, 1, 1), Fractional(radius), FractionalWalk(radius));
            ExpectScene(Plain(format, 2, 2), Fractional(radius), FractionalWalk(radius));
        }
}

TEST_F(FractionalBlur, CountsOnlyTheFraction) {
    const auto picture = New("PictureTQX", 30, 20, 1);
    FillRandom(picture, 5);
    const auto blur = [&](double radius) {
        return ReadPixels(CallObject(picture, "BoxBlurFractionalFilter", nullptr, radius));
    };
    EXPECT_EQ(blur(0.5), blur(7.5));
    EXPECT_EQ(blur(2.0), ReadPixels(picture));
    EXPECT_NE(blur(0.5), ReadPixels(picture));
}

TEST_F(FractionalBlur, MixesNeighbours) {
    const auto column = CallObject(GrayPicture(1, 3, {0, 100, 200}), "BoxBlurFractionalFilter", nullptr, 0.5);
    EXPECT_EQ(ReadPixels(column), (Bytes{0, 100, 175}));  // the last row counts itself once beyond the edge
    const auto row = CallObject(GrayPicture(3, 1, {0, 100, 200}), "BoxBlurFractionalFilter", nullptr, 0.5);
    EXPECT_EQ(ReadPixels(row), (Bytes{25, 100, 200}));  // here it is the first pixel, and the last stays
}

TEST_F(FractionalBlur, LeavesTheDestinationWhenMemoryIsShort) {
    const auto picture = New("PictureTQX", 600, 40, 1);
    FillRandom(picture, 6);
    const Bytes before = ReadPixels(picture);
    int nth = 1;
    for (;; ++nth) {
        const FailingCall failing(SystemCall::Calloc, nth);
        CallObject(picture, "BoxBlurFractionalFilter", picture, 0.5);
        if (failing.failed() == 0) break;
        ASSERT_TRUE(SameBytes(ReadPixels(picture), before));
    }
    EXPECT_GE(nth, 3);
}

}  // namespace
