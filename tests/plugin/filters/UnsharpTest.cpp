// Sharpening beside a model, and what it refuses.
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

int Sharpened(int a, int b, double amount, int threshold) {
    if (std::abs(a - b) < threshold) return a;
    const double k = std::fma(4.0, amount, 1.0);
    const double value = b + k * (a - b);
    if (std::isnan(value) || value < 0) return 0;
    return value > 255 ? 255 : static_cast<int>(value);
}

// The picture that changes is the scene's destination, the reference its source.
Reference Walk(double amount, int threshold) {
    return [=](const Pixels& reference, const Pixels& picture) {
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x) {
                if (!picture.Has(x, y) || !reference.Has(x, y)) continue;
                std::vector<int> values;
                for (const Channel channel : picture.channels)
                    values.push_back(
                        Sharpened(picture.Value(x, y, channel), reference.Value(x, y, channel), amount, threshold));
                for (std::size_t c = 0; c < values.size(); ++c)
                    *picture.At(x, y, picture.channels[c]) = static_cast<std::uint8_t>(values[c]);
            }
    };
}

bool AreAlike(const Ref<Object>& a, const Ref<Object>& b) {
    for (const char* name : {"Width", "Height", "ImageFormat"})
        if (GetInt(a, name) != GetInt(b, name)) return false;
    return true;
}

class Unsharp : public PluginTest {
  protected:
    static void Expect(const std::vector<FilterScene>& all, double amount, int threshold) {
        const Filter filter = [=](const auto& reference, const auto& picture) {
            EXPECT_TRUE(CallBool(picture, "UnsharpFilter", reference, amount, threshold));
            return picture;
        };
        int compared = 0;
        for (const FilterScene& scene : all) {
            const Pictures pictures = scene.make();
            if (!pictures.destination || !AreAlike(pictures.source, pictures.destination)) continue;
            ++compared;
            ExpectScene(scene, filter, Walk(amount, threshold));
            if (HasFailure()) return;
        }
        EXPECT_GT(compared, 0);
    }

    // Every sample against every reference, a row for each reference.
    static FilterScene EveryPair() {
        return {"every pair", [] {
                    const auto picture = New("PictureTQX", 256, 256, 11);
                    const auto reference = New("PictureTQX", 256, 256, 11);
                    for (int y = 0; y < 256; ++y) {
                        std::uint8_t* const samples = RowAddress(picture, y);
                        std::uint8_t* const references = RowAddress(reference, y);
                        for (int x = 0; x < 256; ++x) samples[x] = static_cast<std::uint8_t>(x);
                        std::fill_n(references, 256, static_cast<std::uint8_t>(y));
                    }
                    return Pictures{reference, picture, {picture, reference}};
                }};
    }
};

TEST_F(Unsharp, ServesEveryViewSharingAndFormat) {
    Expect(AllScenes(), 0.4, 3);
    Expect(AllScenes(), -1.3, 0);
}

TEST_F(Unsharp, ServesRandomScenes) {
    for (std::uint64_t seed = 0; seed < 40; ++seed) {
        std::vector<FilterScene> some;
        for (std::uint64_t i = 0; i < 15; ++i) some.push_back(RandomScene(15 * seed + i));
        Random random(seed);
        Expect(some, AnyDouble(random), AnyInteger(random));
    }
}

TEST_F(Unsharp, IsExactForEveryPairOfSamples) {
    for (const double amount : {0.0, 0.1, 0.25, 0.4, 0.5, 1.0, 1.0 / 3, 7.7, 1e-18, -1e-18, -0.1, -0.25, -0.5, -3.3,
                                1e9, -1e300, kInfinity, -kInfinity, kNotANumber})
        for (const int threshold : {0, 5, -1}) {
            SCOPED_TRACE(testing::Message() << amount << ", " << threshold);
            Expect({EveryPair()}, amount, threshold);
        }
}

// Of a size for which whole steps are worth finding.
TEST_F(Unsharp, IsExactOnLargePictures) {
    for (const int format : {1, 11})
        for (const double amount : {0.1, 0.3}) {
            SCOPED_TRACE(testing::Message() << format << ", " << amount);
            const auto large = [format](int seed) {
                const auto picture = New("PictureTQX", 1100, 1000, format);
                FillRandom(picture, seed);
                return picture;
            };
            Expect({{"large",
                     [&] {
                         const auto picture = large(5), reference = large(6);
                         return Pictures{reference, picture, {picture, reference}};
                     }}},
                   amount, 4);
        }
}

TEST_F(Unsharp, TakesEveryThreshold) {
    for (const int threshold : {1, 2, 254, 255, 256, INT_MAX, INT_MIN})
        for (const double amount : {0.7, -0.7}) Expect({EveryPair()}, amount, threshold);
}

TEST_F(Unsharp, WithoutAmountChangesNothing) {
    const auto picture = New("PictureTQX", 9, 9, 2);
    const auto reference = New("PictureTQX", 9, 9, 2);
    FillRandom(picture, 1);
    FillRandom(reference, 2);
    const Bytes before = ReadPixels(picture);
    EXPECT_TRUE(CallBool(picture, "UnsharpFilter", reference, 0.0, 0));
    EXPECT_EQ(ReadPixels(picture), before);
    EXPECT_TRUE(CallBool(picture, "UnsharpFilter", reference, 1.0, 256));
    EXPECT_EQ(ReadPixels(picture), before);
}

TEST_F(Unsharp, RefusesAReferenceThatDiffers) {
    const auto picture = New("PictureTQX", 9, 9, 1);
    FillRandom(picture, 3);
    const Bytes before = ReadPixels(picture);
    const auto closed = New("PictureTQX", 9, 9, 1);
    Call(closed, "Close");
    EXPECT_FALSE(CallBool(picture, "UnsharpFilter", nullptr, 1.0, 0));
    for (const auto& reference : {New("PictureTQX", 8, 9, 1), New("PictureTQX", 9, 10, 1), New("PictureTQX", 9, 9, 6),
                                  New("PictureTQX", 9, 9, 0), closed}) {
        EXPECT_FALSE(CallBool(picture, "UnsharpFilter", reference, 1.0, 0));
        EXPECT_FALSE(CallBool(reference, "UnsharpFilter", picture, 1.0, 0));
    }
    EXPECT_FALSE(CallBool(New("PictureTQX", 9, 0, 1), "UnsharpFilter", New("PictureTQX", 9, 0, 1), 1.0, 0));
    EXPECT_EQ(ReadPixels(picture), before);
}

TEST_F(Unsharp, IsTrueForAPictureWithoutChannels) {
    EXPECT_TRUE(CallBool(New("PictureTQX", 9, 9, 14), "UnsharpFilter", New("PictureTQX", 9, 9, 14), 1.0, 0));
}

TEST_F(Unsharp, YieldsOnceForEachPicture) {
    ExpectOneYieldForEach([](const auto& picture, const auto& reference) {
        EXPECT_TRUE(CallBool(picture, "UnsharpFilter", reference, 1.0, 0));
    });
}

TEST_F(Unsharp, EndsWhenAYieldClosesThePicture) {
    FakeClock clock;
    const auto picture = New("PictureTQX", 4, 4, 1);
    const auto reference = New("PictureTQX", 4, 4, 1);
    Set(picture, "YieldTicks", 1);
    const OnYield closing([&] { Call(reference, "Close"); });
    EXPECT_FALSE(CallBool(picture, "UnsharpFilter", reference, 1.0, 0));
}

}  // namespace
