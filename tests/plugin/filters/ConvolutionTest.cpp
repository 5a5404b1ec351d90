// Convolution beside a model, with kernels of every shape.
#include <climits>
#include <cmath>
#include <limits>

#include "tests/plugin/filters/FilterScenes.h"
#include "tests/plugin/filters/RandomScenes.h"
#include "tests/support/Interpose.h"
#include "tests/support/Yields.h"

namespace {

using namespace support;
using namespace scenes;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

struct Arguments {
    std::vector<int> weights;
    int delta;
    double scale;
};

int ScaledByte(int sum, double scale) {
    if (scale == 1.0) return std::clamp(sum, 0, 255);
    const double value = scale * sum;
    if (std::isnan(value) || value < 0) return 0;
    return value > 255 ? 255 : static_cast<int>(value);
}

Reference Walk(const Arguments& arguments) {
    return InPixelOrder([=](const Pixels& source, Channel channel, int x, int y) {
        std::uint32_t sum = 0;
        for (int k = 0; k < 25; ++k) {
            const int weight = arguments.weights[static_cast<std::size_t>(k)];
            if (weight > 254) continue;
            int sx = x + k % 5 - 2, sy = y + k / 5 - 2;
            if (sx < 0 || sx >= source.width) sx = x;
            if (sy < 0 || sy >= source.height) sy = y;
            if (source.Has(sx, sy))
                sum += static_cast<std::uint32_t>(weight) * static_cast<std::uint32_t>(source.Value(sx, sy, channel));
        }
        sum += static_cast<std::uint32_t>(arguments.delta);
        return ScaledByte(static_cast<int>(sum), arguments.scale);
    });
}

Filter Apply(const Arguments& arguments) {
    return [=](const auto& picture, const auto& to) {
        return CallObject(picture, "ApplyMatrix", to, arguments.weights, arguments.delta, arguments.scale);
    };
}

Size Turned(const Pixels& source) { return {source.height, source.width}; }

std::vector<int> Single(int at, int weight) {
    std::vector<int> weights(25, 0);
    weights[static_cast<std::size_t>(at)] = weight;
    return weights;
}

std::vector<int> RandomWeights(std::uint64_t seed, int least, int most) {
    Random random(seed);
    std::vector<int> weights(25);
    const auto span = static_cast<std::uint64_t>(std::int64_t{most} - least + 1);
    for (int& weight : weights) weight = static_cast<int>(least + static_cast<std::int64_t>(random.Next() % span));
    return weights;
}

class Convolution : public PluginTest {
  protected:
    static void Expect(const std::vector<FilterScene>& all, const Arguments& arguments) {
        ExpectScenes(all, Apply(arguments), Walk(arguments), Turned);
    }

    // A few formats and a width that exceeds the widest registers.
    static std::vector<FilterScene> WideScenes() {
        return {Plain(11, 150, 9), Plain(12, 130, 7), Plain(1, 97, 8), Plain(2, 70, 6), Plain(8, 75, 6)};
    }
};

TEST_F(Convolution, ServesEveryViewSharingAndFormat) {
    Expect(AllScenes(), {RandomWeights(1, -9, 12), 3, 0.11});
    Expect(AllScenes(), {RandomWeights(2, -3, 3), 128, 1.0});
}

TEST_F(Convolution, ServesRandomScenes) {
    const auto draw = [](Random& random) {
        const std::pair<int, int> ranges[] = {{-3, 3}, {-300, 300}, {-40000, 40000}, {INT_MIN, INT_MAX}};
        const auto& [least, most] = ranges[random.Below(4)];
        const double scale = random.Below(3) == 0   ? 1.0
                             : random.Below(2) == 0 ? 1.0 / random.Between(1, 60)
                                                    : AnyDouble(random);
        const int delta = random.Below(2) == 0 ? 0 : AnyInteger(random);
        const Arguments arguments{RandomWeights(random.Next(), least, most), delta, scale};
        return Trial{Apply(arguments), Walk(arguments)};
    };
    ExpectRandomScenes(1000, draw, {}, Turned);
}

TEST_F(Convolution, OfOneIsACopyWithAlpha) {
    for (const Format& format : ChannelFormats())
        ExpectScene(
            Plain(format.code, 9, 9),
            [](const auto& picture, const auto& to) { return CallObject(picture, "ApplyMatrix", to, Single(12, 1)); },
            EachPixel([](int value, Channel, int, int) { return value; }), Turned);
}

TEST_F(Convolution, TakesWeightsOfEverySize) {
    const std::pair<int, int> ranges[] = {{-1, 1},       {0, 1},          {-128, 127},        {-300, 254},
                                          {-40000, 254}, {-1000000, 254}, {INT_MIN, INT_MAX}, {INT_MIN, -1000000000},
                                          {255, INT_MAX}};
    std::uint64_t seed = 10;
    for (const auto& [least, most] : ranges)
        for (const double scale : {1.0, 1.0 / 25, 1e-6})
            Expect(WideScenes(), {RandomWeights(++seed, least, most), static_cast<int>(seed), scale});
}

TEST_F(Convolution, TakesEveryDeltaAndFactor) {
    const auto weights = RandomWeights(30, -20, 20);
    for (const int delta : {INT_MIN, INT_MIN + 1, -70000, -1, 0, 1, 70000, INT_MAX})
        for (const double scale :
             {0.0, -0.0, 1.0, -1.0, 0.5, -0.3, 1e300, -1e300, 4.9e-324, kInfinity, -kInfinity, kNotANumber})
            Expect({Plain(1, 40, 6)}, {weights, delta, scale});
}

TEST_F(Convolution, TakesTinyPictures) {
    const auto weights = RandomWeights(31, -4, 9);
    for (int width = 1; width <= 6; ++width)
        for (int height = 1; height <= 6; ++height)
            for (const int format : {11, 1, 12, 2}) Expect({Plain(format, width, height)}, {weights, 5, 0.2});
}

TEST_F(Convolution, MakesHolesOfWeightsAbove254) {
    const auto picture = New("PictureTQX", 5, 5, 11);
    WritePixels(picture, Bytes(25, 1));
    const auto at = [&](int weight) {
        auto weights = Single(12, 0);
        weights[7] = weight;
        return ByteAt(CallObject(picture, "ApplyMatrix", nullptr, weights), 2, 2, 0);
    };
    EXPECT_EQ(at(253), 253);
    EXPECT_EQ(at(254), 254);
    EXPECT_EQ(at(255), 0);
    EXPECT_EQ(at(256), 0);
    EXPECT_EQ(at(INT_MAX), 0);
}

// What lies outside counts as the pixel's own column or row, not as the nearest edge.
TEST_F(Convolution, TakesTheCentreWhereSamplesAreMissing) {
    const auto picture = New("PictureTQX", 7, 7, 11);
    Bytes pixels(49, 0);
    pixels[0] = 250;
    WritePixels(picture, pixels);
    const auto result = CallObject(picture, "ApplyMatrix", nullptr, std::vector<int>(25, 1), 0, 1.0 / 25);
    EXPECT_EQ(ByteAt(result, 0, 0, 0), 90);  // nine of twenty-five
    EXPECT_EQ(ByteAt(result, 1, 1, 0), 10);
    EXPECT_EQ(ByteAt(result, 1, 0, 0), 30);
    EXPECT_EQ(ByteAt(result, 3, 0, 0), 0);
}

TEST_F(Convolution, TruncatesTowardZero) {
    const auto picture = New("PictureTQX", 1, 1, 11);
    WritePixels(picture, {3});
    const auto value = [&](int weight, int delta, double scale) {
        return ByteAt(CallObject(picture, "ApplyMatrix", nullptr, Single(12, weight), delta, scale), 0, 0, 0);
    };
    EXPECT_EQ(value(1, 0, 0.5), 1);
    EXPECT_EQ(value(-1, 0, 0.5), 0);
    EXPECT_EQ(value(1, 10, 0.5), 6);  // delta is scaled as well
    EXPECT_EQ(value(1, 10, -0.5), 0);
    EXPECT_EQ(value(-7, 0, -1.0), 21);
    EXPECT_EQ(value(100, 0, 1.0), 255);
}

TEST_F(Convolution, ShortFormsTakeNoDeltaAndFactorOne) {
    const auto picture = New("PictureTQX", 6, 6, 1);
    FillRandom(picture, 32);
    const auto weights = RandomWeights(33, -1, 1);
    EXPECT_EQ(ReadPixels(CallObject(picture, "ApplyMatrix", nullptr, weights)),
              ReadPixels(CallObject(picture, "ApplyMatrix", nullptr, weights, 0, 1.0)));
    EXPECT_EQ(ReadPixels(CallObject(picture, "ApplyMatrix", nullptr, weights, 7)),
              ReadPixels(CallObject(picture, "ApplyMatrix", nullptr, weights, 7, 1.0)));
}

TEST_F(Convolution, ExchangesTheSidesOfANewPicture) {
    const auto result = CallObject(New("PictureTQX", 40, 30, 2), "ApplyMatrix", nullptr, Single(12, 1));
    EXPECT_EQ(GetInt(result, "Width"), 30);
    EXPECT_EQ(GetInt(result, "Height"), 40);
    EXPECT_EQ(GetInt(result, "ImageFormat"), 2);
    const auto square = CallObject(New("PictureTQX", 32, 32, 2), "ApplyMatrix", nullptr, Single(12, 1));
    EXPECT_EQ(GetInt(square, "Width"), 32);
    EXPECT_EQ(GetInt(square, "Height"), 32);
    EXPECT_FALSE(CallObject(New("PictureTQX", 0, 30, 2), "ApplyMatrix", nullptr, Single(12, 1)));
}

// No copy of the picture is made: what was written above and to the left is read.
TEST_F(Convolution, IntoItselfReadsWhatItHasWritten) {
    const auto picture = New("PictureTQX", 3, 2, 11);
    WritePixels(picture, {1, 2, 3, 4, 5, 6});
    std::vector<int> weights(25, 0);
    weights[7] = weights[11] = weights[12] = 1;  // above, to the left, the pixel
    EXPECT_EQ(CallObject(picture, "ApplyMatrix", picture, weights), picture);
    EXPECT_EQ(ReadPixels(picture), (Bytes{3, 7, 13, 11, 23, 42}));
}

// The kernel is read before anything else happens.
TEST_F(Convolution, KeepsTheKernelThatAYieldChanges) {
    FakeClock clock;
    const auto picture = New("PictureTQX", 1, 1, 11);
    WritePixels(picture, {9});
    Set(picture, "YieldTicks", 1);
    const auto weights = host::MakeIntegerArray(Single(12, 2));
    const OnYield changing([&] { weights->values[12] = support::Value(5); });
    EXPECT_EQ(ReadPixels(CallObject(picture, "ApplyMatrix", nullptr, weights)), Bytes{18});
}

TEST_F(Convolution, RefusesOtherArrays) {
    const auto picture = New("PictureTQX", 5, 5, 1);
    const auto destination = New("PictureTQX", 5, 5, 1);
    EXPECT_FALSE(CallObject(picture, "ApplyMatrix", destination, nullptr));
    for (const std::size_t size : {0U, 9U, 24U, 26U, 49U})
        EXPECT_FALSE(CallObject(picture, "ApplyMatrix", destination, std::vector<int>(size, 1))) << size;
}

TEST_F(Convolution, RefusesUnusablePictures) {
    const auto picture = New("PictureTQX", 5, 5, 1);
    const auto invalid = New("PictureTQX", 5, 5, 0);
    EXPECT_FALSE(CallObject(invalid, "ApplyMatrix", nullptr, Single(12, 1)));
    EXPECT_FALSE(CallObject(picture, "ApplyMatrix", invalid, Single(12, 1)));
    EXPECT_TRUE(CallObject(New("PictureTQX", 5, 5, 14), "ApplyMatrix", nullptr, Single(12, 1)));
}

TEST_F(Convolution, LeavesTheDestinationWhenMemoryIsShort) {
    const auto picture = New("PictureTQX", 5000, 3, 1);
    const auto destination = New("PictureTQX", 5000, 3, 1);
    FillRandom(picture, 34);
    {
        const FailingAllocations failing(4096);
        EXPECT_EQ(CallObject(picture, "ApplyMatrix", destination, Single(12, 1)), destination);
        EXPECT_GT(failing.failed(), 0);
    }
    EXPECT_EQ(ReadPixels(destination), Bytes(45000, 0));
}

TEST_F(Convolution, YieldsOnceForEachPicture) {
    ExpectOneYieldForEach(
        [](const auto& picture, const auto& to) { CallObject(picture, "ApplyMatrix", to, Single(12, 1)); });
}

}  // namespace
