// Stamps beside a model.
#include <cmath>
#include <limits>

#include "tests/plugin/filters/FilterScenes.h"
#include "tests/plugin/filters/RandomScenes.h"

namespace {

using namespace support;
using namespace scenes;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

constexpr auto kBlack = static_cast<sdk::Color>(0x00102030);
constexpr auto kWhite = static_cast<sdk::Color>(0x00F0C0A0);

int Stamped(int value, double threshold, double softness, int black, int white) {
    const double low = (threshold - 0.5 * softness) * 255, high = (threshold + 0.5 * softness) * 255;
    double share = 1;
    if (value < low) {
        share = 0;
    } else if (value < high) {
        const double u = (value - low) / (high - low);
        share = u * u * (3 - 2 * u);
    }
    const double entry = share * (white - black) + black;
    return std::isnan(entry) ? 0 : static_cast<int>(entry);
}

class Stamp : public PluginTest {
  protected:
    static Ref<Object> Apply(const Ref<Object>& picture, const Ref<Object>& dest, double radius, double threshold,
                             double softness) {
        return CallObject(picture, "StampFilter", dest, radius, threshold, softness, kBlack, kWhite);
    }

    // What the stamp should make of a picture, alpha left 0.
    static void ExpectStamp(const Ref<Object>& picture, double radius, double threshold, double softness) {
        ExpectStamped(CallObject(picture, "BoxBlurFilter", nullptr, radius / 3.0, 3),
                      Apply(picture, nullptr, radius, threshold, softness), threshold, softness);
    }

    static void ExpectStamped(const Ref<Object>& blurred, const Ref<Object>& result, double threshold,
                              double softness) {
        const Pixels from(blurred), to(result);
        ASSERT_EQ(to.format, from.format);
        for (int y = 0; y < from.height; ++y)
            for (int x = 0; x < from.width && from.Has(x, y); ++x)
                for (const Channel channel : from.channels) {
                    const int shift[] = {16, 8, 0, 8};
                    const int expected = channel == kAlpha ? 0
                                                           : Stamped(from.Value(x, y, channel), threshold, softness,
                                                                     static_cast<int>(kBlack) >> shift[channel] & 255,
                                                                     static_cast<int>(kWhite) >> shift[channel] & 255);
                    ASSERT_EQ(to.Value(x, y, channel), expected) << x << ", " << y << ", " << channel;
                }
    }

    static Ref<Object> Ramp(int format) {
        const auto picture = New("PictureTQX", 256, 1, format);
        const auto size = static_cast<int>(GetInt(picture, "PixelSize"));
        for (int i = 0; i < 256 * size; ++i) RowAddress(picture, 0)[i] = static_cast<std::uint8_t>(i / size);
        return picture;
    }
};

TEST_F(Stamp, ServesEveryFormat) {
    for (const Format& format : ChannelFormats()) {
        const auto picture = New("PictureTQX", 20, 11, format.code);
        FillRandom(picture, 1);
        ExpectStamp(picture, 0.0, 0.5, 0.8);
        ExpectStamp(picture, 3.0, 0.5, 0.2);
    }
}

// Any picture as the destination of the first blur; the two after it and the stamp go by that one's
// layout.
TEST_F(Stamp, ServesRandomScenes) {
    for (std::uint64_t seed = 0; seed < 200 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const bool any = random.Below(4) == 0;
        const double radius = any ? AnyDouble(random) : random.Below(300) / 10.0,
                     threshold = any ? AnyDouble(random) : random.Below(100) / 100.0,
                     softness = any ? AnyDouble(random) : random.Below(100) / 100.0;
        const scenes::FilterScene scene = RandomScene(seed);
        const Pictures actual = scene.make(), expected = scene.make();
        const auto blurred = CallObject(expected.source, "BoxBlurFilter", expected.destination, radius / 3.0, 3);
        ExpectStamped(blurred, Apply(actual.source, actual.destination, radius, threshold, softness), threshold,
                      softness);
        EXPECT_TRUE(SameStorage(actual, expected));
    }
}

TEST_F(Stamp, TakesEveryThresholdAndSoftness) {
    const double values[] = {-kInfinity, -1, -0.2, 0, 1e-9, 0.3, 0.5, 1, 1.7, 1e300, kInfinity, kNotANumber};
    for (const double threshold : values)
        for (const double softness : values) {
            SCOPED_TRACE(testing::Message() << threshold << ", " << softness);
            ExpectStamp(Ramp(1), 0, threshold, softness);
        }
}

TEST_F(Stamp, WithoutSoftnessIsAHardThreshold) {
    const auto result = Apply(Ramp(11), nullptr, 0, 0.5, 0);
    EXPECT_EQ(ByteAt(result, 127, 0, 0), 0x20);
    EXPECT_EQ(ByteAt(result, 128, 0, 0), 0xC0);
}

TEST_F(Stamp, GivesTheFirstBlurToItsDestination) {
    const auto picture = New("PictureTQX", 20, 11, 1);
    FillRandom(picture, 2);
    const auto destination = New("PictureTQX", 20, 11, 1);
    const auto result = Apply(picture, destination, 6.0, 0.5, 0.2);
    EXPECT_NE(result, destination);
    EXPECT_EQ(ReadPixels(destination), ReadPixels(CallObject(picture, "BoxBlurFilter", nullptr, 2.0)));
}

TEST_F(Stamp, RefusesUnusablePictures) {
    const auto invalid = New("PictureTQX", 4, 4, 0);
    EXPECT_FALSE(Apply(invalid, nullptr, 1, 0.5, 0.1));
    EXPECT_FALSE(Apply(New("PictureTQX", 4, 4, 1), invalid, 1, 0.5, 0.1));
    const auto picture = New("PictureTQX", 4, 4, 1);
    for (int nth = 1; nth <= 4; ++nth) {
        const FailingHostFunction failing("PluginNewInstance", nth, 1);
        EXPECT_FALSE(Apply(picture, nullptr, 3, 0.5, 0.1)) << nth;
    }
    EXPECT_TRUE(Apply(picture, nullptr, kNotANumber, 0.5, 0.1));
    EXPECT_TRUE(Apply(picture, nullptr, 1e9, 0.5, 0.1));
}

}  // namespace
