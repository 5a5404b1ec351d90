// Tone curves beside tables made here.
#include <cmath>
#include <limits>
#include <numeric>

#include "tests/plugin/filters/FilterScenes.h"
#include "tests/plugin/filters/RandomScenes.h"
#include "tests/support/Interpose.h"
#include "tests/support/TrueValues.h"
#include "tests/support/Yields.h"

namespace {

using namespace support;
using namespace scenes;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

// Truncation toward zero, then the clamp; not-a-number is 0.
int ClampedByte(double value) {
    if (std::isnan(value) || value < 0) return 0;
    return value > 255 ? 255 : static_cast<int>(value);
}

int Gamma(double gamma, int i) { return ClampedByte(std::fma(TruePow(i / 255.0, 1.0 / gamma), 255.0, 0.5)); }

// One row with every byte value in every channel, through a filter into a new picture.
class ToneCurves : public PluginTest {
  protected:
    static Ref<Object> Ramp(int format) {
        const auto picture = New("PictureTQX", 256, 1, format);
        const auto pixelSize = static_cast<int>(GetInt(picture, "PixelSize"));
        std::uint8_t* const row = RowAddress(picture, 0);
        for (int i = 0; i < 256 * pixelSize; ++i) row[i] = static_cast<std::uint8_t>(i / pixelSize);
        return picture;
    }

    template <class... Arguments>
    static Bytes CurveOf(int format, const char* method, const Arguments&... arguments) {
        return ReadPixels(CallObject(Ramp(format), method, nullptr, arguments...));
    }

    static Bytes GammaCurve(double gamma) {
        Bytes curve(256);
        for (int i = 0; i < 256; ++i) curve[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(Gamma(gamma, i));
        return curve;
    }

    static Bytes Identity() {
        Bytes curve(256);
        std::iota(curve.begin(), curve.end(), std::uint8_t{0});
        return curve;
    }

    static std::vector<int> RandomArray(std::uint64_t seed) {
        Random random(seed);
        std::vector<int> array(256);
        for (int& element : array) element = random.Between(-1000, 1000);
        return array;
    }
};

TEST_F(ToneCurves, GammaOneIsTheIdentity) { EXPECT_EQ(CurveOf(11, "GammaFilter", 1.0), Identity()); }

TEST_F(ToneCurves, GammaIsThePowerCurveRounded) {
    for (const double gamma : {0.1, 0.45, 0.999, 1.8, 2.0, 2.2, 17.0, 1e-300, 1e300}) {
        SCOPED_TRACE(gamma);
        EXPECT_EQ(CurveOf(11, "GammaFilter", gamma), GammaCurve(gamma));
    }
    EXPECT_EQ(CurveOf(11, "GammaFilter", 2.0)[64], 128);
}

TEST_F(ToneCurves, GammaTakesValuesWithoutMeaning) {
    const Bytes zero = CurveOf(11, "GammaFilter", 0.0);
    EXPECT_EQ(std::accumulate(zero.begin(), zero.end() - 1, 0), 0);
    EXPECT_EQ(zero[255], 255);
    EXPECT_EQ(CurveOf(11, "GammaFilter", kInfinity), Bytes(256, 255));  // everything to the power 0
    EXPECT_EQ(CurveOf(11, "GammaFilter", kNotANumber)[100], 0);
    EXPECT_EQ(CurveOf(11, "GammaFilter", -1.0)[0], 255);
    for (const double gamma : {-2.2, -0.001, -kInfinity, -0.0, 4.9e-324})
        EXPECT_EQ(CurveOf(11, "GammaFilter", gamma), GammaCurve(gamma)) << gamma;
}

TEST_F(ToneCurves, OneGammaLeavesAlpha) {
    for (const int format : {2, 4, 12}) {
        const auto result = CallObject(Ramp(format), "GammaFilter", nullptr, 2.2);
        const Pixels pixels(result);
        for (int x = 0; x < 256; ++x) {
            EXPECT_EQ(pixels.Value(x, 0, kAlpha), 0);
            EXPECT_EQ(pixels.Value(x, 0, pixels.channels[0]), Gamma(2.2, x));
        }
    }
}

TEST_F(ToneCurves, ThreeGammasLeaveAlpha) {
    for (const int format : {2, 4, 12}) {
        const auto result = CallObject(Ramp(format), "GammaFilter", nullptr, 2.0, 2.0, 2.0);
        const Pixels pixels(result);
        for (int x = 0; x < 256; ++x) {
            EXPECT_EQ(pixels.Value(x, 0, kAlpha), 0);
            EXPECT_EQ(pixels.Value(x, 0, pixels.channels[0]), Gamma(2.0, x));
        }
    }
}

TEST_F(ToneCurves, GammaServesRandomScenes) {
    const auto draw = [](Random& random) {
        const double red = AnyDouble(random), green = AnyDouble(random), blue = AnyDouble(random),
                     alpha = AnyDouble(random);
        const auto whole = [](double gamma) {
            return std::isnan(gamma) ? -2147483648.0 : std::trunc(std::clamp(gamma, -2147483648.0, 2147483647.0));
        };
        const double gray = std::trunc((77 * whole(red) + 151 * whole(green) + 28 * whole(blue)) / 256) + 0.0;  // no -0
        return Trial{
            [=](const auto& p, const auto& to) { return CallObject(p, "GammaFilter", to, red, green, blue, alpha); },
            EachPixel([=](int value, Channel channel, int, int) {
                const double gamma[] = {red, green, blue, gray, alpha};
                return Gamma(gamma[channel], value);
            })};
    };
    ExpectRandomScenes(800, draw);
}

TEST_F(ToneCurves, EachGammaReachesItsChannel) {
    for (const FilterScene& scene : AllScenes()) {
        const auto gammaOf = [](double red, double green, double blue, double gray, double alpha) {
            return [=](int value, Channel channel, int, int) {
                const double gamma[] = {red, green, blue, gray, alpha};
                return Gamma(gamma[channel], value);
            };
        };
        ExpectScene(
            scene, [](const auto& p, const auto& to) { return CallObject(p, "GammaFilter", to, 1.4, 0.7); },
            EachPixel(gammaOf(1.4, 1.4, 1.4, 1.4, 0.7)));
        ExpectScene(
            scene, [](const auto& p, const auto& to) { return CallObject(p, "GammaFilter", to, 2.5, 3.0, 1.5, 0.3); },
            EachPixel(gammaOf(2.5, 3.0, 1.5, 2.0, 0.3)));  // (77·2 + 151·3 + 28·1) / 256 = 2 for gray
        if (HasFailure()) return;
    }
}

// Where a curve leaves alpha alone, the destination's alpha stays: where a channel's byte is
// shared, only the channels that are written count.
TEST_F(ToneCurves, ChannelsWithoutCurveStay) {
    const auto reference = [](const Pixels& source, const Pixels& destination) {
        for (int y = 0; y < source.height; ++y)
            for (int x = 0; x < source.width; ++x) {
                if (!source.Has(x, y) || !destination.Has(x, y)) continue;
                std::vector<int> values;
                for (const Channel channel : source.channels) values.push_back(source.Value(x, y, channel));
                for (std::size_t c = 0; c < values.size(); ++c)
                    if (source.channels[c] != kAlpha)
                        *destination.At(x, y, source.channels[c]) = static_cast<std::uint8_t>(Gamma(2.0, values[c]));
            }
    };
    ExpectScenes(
        AllScenes(), [](const auto& p, const auto& to) { return CallObject(p, "GammaFilter", to, 2.0); }, reference);
}

TEST_F(ToneCurves, ThreeGammasOfAGrayPictureLoseTheirFractions) {
    EXPECT_EQ(CurveOf(11, "GammaFilter", 2.2, 2.2, 2.2), GammaCurve(2));
    EXPECT_EQ(CurveOf(11, "GammaFilter", 2.9, 2.9, 2.9), GammaCurve(2));
    EXPECT_EQ(CurveOf(11, "GammaFilter", 1.5, 1.5, 1.5), Identity());
    EXPECT_EQ(CurveOf(11, "GammaFilter", 4.0, 2.0, 1.0), GammaCurve(2));  // 638 / 256
    EXPECT_EQ(CurveOf(11, "GammaFilter", 0.9, 0.9, 0.9), GammaCurve(0));
    EXPECT_EQ(CurveOf(11, "GammaFilter", -0.9, 0.9, -0.9), GammaCurve(0));
    EXPECT_EQ(CurveOf(11, "GammaFilter", -2.5, -2.5, -2.5), GammaCurve(-2));
    EXPECT_EQ(CurveOf(11, "GammaFilter", 0.0, 1.0, 0.0), GammaCurve(0));  // 151 / 256
    EXPECT_EQ(CurveOf(11, "GammaFilter", 1e30, 1e30, 1e30), GammaCurve(2147483647));
    EXPECT_EQ(CurveOf(11, "GammaFilter", kNotANumber, kNotANumber, kNotANumber), GammaCurve(-2147483648.0));
}

TEST_F(ToneCurves, GainAndBiasOfOneHalfAreTheIdentity) { EXPECT_EQ(CurveOf(11, "GainFilter", 0.5, 0.5), Identity()); }

int Gain(double gain, double bias, int i) {
    const double p = TrueLog(1 - gain) / TrueLog(0.5);
    const double k = 1 / bias - 2;
    const double t = i / 255.0;
    double x, rest;
    if (t < 0.001) {
        x = 0, rest = 1;
    } else if (t > 0.999) {
        return 255;
    } else {
        x = t < 0.5 ? 0.5 * TruePow(2 * t, p) : 1 - 0.5 * TruePow(2 * (1 - t), p);
        rest = 1 - x;
    }
    const double product = rest == 0 ? 0 : rest * k;
    return ClampedByte(x / (product + 1) * 255.0);
}

TEST_F(ToneCurves, GainServesEveryChannel) {
    ExpectScenes(
        AllScenes(), [](const auto& p, const auto& to) { return CallObject(p, "GainFilter", to, 0.7, 0.3); },
        EachPixel([](int value, Channel, int, int) { return Gain(0.7, 0.3, value); }));
}

TEST_F(ToneCurves, GainPinsBothEnds) {
    const double values[] = {-kInfinity, -5, -1, 0, 1e-9, 0.2, 0.5, 0.999, 1, 1.5, 7, kInfinity, kNotANumber};
    for (const double gain : values)
        for (const double bias : values) {
            SCOPED_TRACE(testing::Message() << gain << ", " << bias);
            const Bytes curve = CurveOf(11, "GainFilter", gain, bias);
            EXPECT_EQ(curve[255], 255);
            for (int i = 0; i < 256; ++i) EXPECT_EQ(curve[static_cast<std::size_t>(i)], Gain(gain, bias, i)) << i;
        }
    EXPECT_EQ(CurveOf(11, "GainFilter", 0.9, 0.1)[0], 0);
    EXPECT_EQ(CurveOf(11, "GainFilter", kNotANumber, 0.5)[100], 0);
}

TEST_F(ToneCurves, TransferStoresTheLowByteOfEachElement) {
    const auto red = RandomArray(1), green = RandomArray(2), blue = RandomArray(3), alpha = RandomArray(4);
    const auto reference = [&](bool three, bool withAlpha) {
        return [=](const Pixels& source, const Pixels& destination) {
            const std::vector<int>* tables[] = {three ? &red : &green, &green, three ? &blue : &green, &green, &alpha};
            for (int y = 0; y < source.height; ++y)
                for (int x = 0; x < source.width; ++x) {
                    if (!source.Has(x, y) || !destination.Has(x, y)) continue;
                    std::vector<int> values;
                    for (const Channel channel : source.channels) values.push_back(source.Value(x, y, channel));
                    for (std::size_t c = 0; c < values.size(); ++c) {
                        const Channel channel = source.channels[c];
                        if (channel == kAlpha && !withAlpha) continue;
                        const int element = (*tables[channel])[static_cast<std::size_t>(values[c])];
                        *destination.At(x, y, channel) = static_cast<std::uint8_t>(element & 255);
                    }
                }
        };
    };
    for (const FilterScene& scene : AllScenes()) {
        ExpectScene(
            scene, [&](const auto& p, const auto& to) { return CallObject(p, "TransferFilter", to, green); },
            reference(false, false));
        ExpectScene(
            scene, [&](const auto& p, const auto& to) { return CallObject(p, "TransferFilter", to, green, alpha); },
            reference(false, true));
        ExpectScene(
            scene, [&](const auto& p, const auto& to) { return CallObject(p, "TransferFilter", to, red, green, blue); },
            reference(true, false));
        ExpectScene(
            scene,
            [&](const auto& p, const auto& to) { return CallObject(p, "TransferFilter", to, red, green, blue, alpha); },
            reference(true, true));
        if (HasFailure()) return;
    }
}

TEST_F(ToneCurves, TransferFillsUpShortArraysWithZeros) {
    std::vector<int> ten(10, 77);
    Bytes expected(256, 0);
    std::fill_n(expected.begin(), 10, std::uint8_t{77});
    EXPECT_EQ(CurveOf(11, "TransferFilter", ten), expected);
    EXPECT_EQ(CurveOf(11, "TransferFilter", std::vector<int>{}), Bytes(256, 0));
    std::vector<int> longer(300, 5);
    EXPECT_EQ(CurveOf(11, "TransferFilter", longer), Bytes(256, 5));
    EXPECT_EQ(CurveOf(11, "TransferFilter", std::vector<int>{256, 300, -1, INT32_MIN, INT32_MAX})[1], 44);
    EXPECT_EQ(CurveOf(11, "TransferFilter", std::vector<int>{256, 300, -1, INT32_MIN, INT32_MAX})[2], 255);
    EXPECT_EQ(CurveOf(11, "TransferFilter", std::vector<int>{256, 300, -1, INT32_MIN, INT32_MAX})[0], 0);
}

TEST_F(ToneCurves, TransferTakesANilArrayAsAllZero) {
    const auto ones = std::vector<int>(256, 1);
    const auto result = CallObject(Ramp(2), "TransferFilter", nullptr, ones, nullptr, ones, nullptr);
    EXPECT_EQ(ReadRow(result, 0)[100 * 4], 1);
    EXPECT_EQ(ReadRow(result, 0)[100 * 4 + 1], 0);
    EXPECT_EQ(ReadRow(result, 0)[100 * 4 + 2], 1);
    EXPECT_EQ(ReadRow(result, 0)[100 * 4 + 3], 0);
}

TEST_F(ToneCurves, TransferOfAGrayPictureGoesByTheGreenArray) {
    EXPECT_EQ(
        CurveOf(11, "TransferFilter", std::vector<int>(256, 1), std::vector<int>(256, 2), std::vector<int>(256, 3)),
        Bytes(256, 2));
}

// The arrays are read when both pictures have had their yields.
TEST_F(ToneCurves, TransferSeesArraysThatAYieldChanged) {
    for (int form = 1; form <= 4; ++form) {
        FakeClock clock;
        const auto picture = New("PictureTQX", 1, 1, 2);
        Set(picture, "YieldTicks", 1);
        std::vector<host::Ref<host::Array>> arrays;
        for (int i = 0; i < form; ++i) arrays.push_back(host::MakeIntegerArray(std::vector<int>(256, 1)));
        const OnYield changing([&] {
            for (const auto& array : arrays) array->values[0] = support::Value(7);
        });
        Values arguments{Value(nullptr)};
        for (const auto& array : arrays) arguments.push_back(Value(array));
        const int alpha = form % 2 == 0 ? 7 : 0;
        const auto result = Ref<Object>::Share(CallWith(picture, "TransferFilter", arguments).object());
        EXPECT_EQ(ReadPixels(result), (Bytes{7, 7, 7, static_cast<std::uint8_t>(alpha)})) << form;
    }
}

// The curve as published: V-shaped with steps that no formula gives.
TEST_F(ToneCurves, SolarizeKeepsItsIrregularSteps) {
    const Bytes curve = CurveOf(11, "SolarizeFilter");
    const std::pair<int, int> points[] = {{0, 255},  {1, 253},  {36, 183}, {37, 180},  {38, 179},  {45, 164},
                                          {66, 122}, {100, 55}, {126, 2},  {127, 0},   {128, 0},   {129, 2},
                                          {132, 9},  {160, 65}, {162, 68}, {200, 145}, {250, 244}, {255, 255}};
    for (const auto& [in, out] : points) EXPECT_EQ(curve[static_cast<std::size_t>(in)], out) << in;
    // Sums of the table's sixteen rows of sixteen.
    const int sums[] = {3840, 3328, 2814, 2302, 1788, 1276, 760, 248, 248, 760, 1274, 1786, 2300, 2812, 3324, 3836};
    for (int row = 0; row < 16; ++row)
        EXPECT_EQ(std::accumulate(curve.begin() + 16 * row, curve.begin() + 16 * row + 16, 0), sums[row]) << row;
}

TEST_F(ToneCurves, SolarizeServesEveryChannel) {
    const Bytes curve = CurveOf(11, "SolarizeFilter");
    ExpectScenes(
        AllScenes(), [](const auto& p, const auto& to) { return CallObject(p, "SolarizeFilter", to); },
        EachPixel([&](int value, Channel, int, int) { return curve[static_cast<std::size_t>(value)]; }));
}

TEST_F(ToneCurves, WorkOnWideRows) {
    for (const Format& format : ChannelFormats())
        for (const int width : {63, 64, 65, 200, 257})
            ExpectScene(
                Plain(format.code, width, 3),
                [](const auto& p, const auto& to) { return CallObject(p, "GammaFilter", to, 1.4, 2.5, 0.6, 3.0); },
                EachPixel([](int value, Channel channel, int, int) {
                    const double gamma[] = {1.4, 2.5, 0.6, 1, 3.0};  // gray: (77·1 + 151·2 + 28·0) / 256 = 1
                    return Gamma(gamma[channel], value);
                }));
}

TEST_F(ToneCurves, RefuseUnusablePictures) {
    const auto picture = New("PictureTQX", 4, 4, 1);
    const auto invalid = New("PictureTQX", 4, 4, 0);
    const auto closed = New("PictureTQX", 4, 4, 1);
    Call(closed, "Close");
    const auto empty = New("PictureTQX", 4, 0, 1);
    FillRandom(picture, 3);
    const Bytes before = ReadPixels(picture);
    for (const auto& refused : {invalid, closed, empty}) {
        EXPECT_FALSE(CallObject(refused, "GammaFilter", nullptr, 2.2));
        EXPECT_FALSE(CallObject(refused, "SolarizeFilter", picture));
        EXPECT_FALSE(CallObject(picture, "SolarizeFilter", refused));
        EXPECT_FALSE(CallObject(picture, "GainFilter", refused, 0.2, 0.2));
        EXPECT_FALSE(CallObject(picture, "TransferFilter", refused, std::vector<int>{1}));
    }
    EXPECT_EQ(ReadPixels(picture), before);
}

TEST_F(ToneCurves, GiveThePlainDestinationOfAPictureWithoutChannels) {
    const auto scaling = New("PictureTQX", 4, 4, 14);
    const auto destination = New("PictureTQX", 4, 4, 2);
    FillRandom(destination, 4);
    const Bytes before = ReadPixels(destination);
    EXPECT_EQ(CallObject(scaling, "GammaFilter", destination, 2.2), destination);
    EXPECT_EQ(ReadPixels(destination), before);
    EXPECT_TRUE(CallObject(scaling, "SolarizeFilter", nullptr));
}

TEST_F(ToneCurves, YieldOnceForEachPicture) {
    ExpectOneYieldForEach([](const auto& picture, const auto& to) { CallObject(picture, "SolarizeFilter", to); });
}

TEST_F(ToneCurves, EndWhenAYieldClosesAPicture) {
    FakeClock clock;
    const auto picture = New("PictureTQX", 4, 4, 1);
    const auto destination = New("PictureTQX", 4, 4, 1);
    Set(destination, "YieldTicks", 1);
    const OnYield closing([&] { Call(picture, "Close"); });
    EXPECT_EQ(CallObject(picture, "GammaFilter", destination, 2.2), destination);
    EXPECT_EQ(ReadPixels(destination), Bytes(48, 0));
}

}  // namespace
