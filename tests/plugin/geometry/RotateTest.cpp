// Rotation beside a model of the three shears.
#include <cmath>
#include <limits>

#include "tests/plugin/geometry/ReferenceTurns.h"
#include "tests/support/Interpose.h"
#include "tests/support/Scene.h"
#include "tests/support/TrueValues.h"

namespace {

using namespace support;
using namespace geometry_test;

constexpr int kRGB = 1, kRGBA = 2, kG = 11, kGA = 12, kScaling = 14;

// --- Plain reference --------------------------------------------------------------------------

struct Colors {
    int red = 10, green = 200, blue = 30, alpha = 140, gray = 90;
};

struct Channel {
    int offset;
    std::uint8_t background;
};

std::vector<Channel> Sheared(const ModelPicture& p, const Colors& colors) {
    const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
    if (p.isGray) return {{p.gray, byte(colors.gray)}};
    std::vector<Channel> channels = {
        {p.red, byte(colors.red)}, {p.green, byte(colors.green)}, {p.blue, byte(colors.blue)}};
    if (p.hasAlpha) channels.push_back({p.alpha, byte(colors.alpha)});
    return channels;
}

std::uint8_t Byte(double value) { return static_cast<std::uint8_t>(static_cast<int>(value)); }

// One line of bytes, `get` and `set` by index, over `length` places of the destination. The value
// after the last goes to its place, or in a column onto the last one that was visited.
template <class GetByte, class SetByte>
void ReferenceSkew(double position, int count, int length, std::uint8_t background, bool column, const GetByte& get,
                   const SetByte& set) {
    const double floor = std::floor(position), weight = position - floor;
    const auto offset = static_cast<std::int64_t>(floor);
    for (int i = 0; i < length; ++i) set(i, background);
    std::uint8_t previous = Byte(weight * background);
    for (int i = 0; i < count; ++i) {
        const std::uint8_t value = get(i), left = Byte(weight * value);
        if (offset + i >= 0 && offset + i < length)
            set(static_cast<int>(offset + i), static_cast<std::uint8_t>(value - (left - previous)));
        previous = left;
    }
    const std::int64_t end = offset + count - (column ? 1 : 0);
    if (end >= 0 && end < length) set(static_cast<int>(end), Byte(background - (weight * background - previous)));
}

void SkewRow(const ModelPicture& source, const ModelPicture& dest, int y, double position, const Colors& colors) {
    const auto from = Sheared(source, colors), to = Sheared(dest, colors);
    for (std::size_t c = 0; c < from.size(); ++c)
        ReferenceSkew(
            position, source.width, dest.width, from[c].background, false,
            [&](int x) { return source.Pixel(x, y)[from[c].offset]; },
            [&](int x, std::uint8_t value) { dest.Pixel(x, y)[to[c].offset] = value; });
}

// `endsLikeARow` puts the last blend below the last pixel, as it is not.
void SkewColumn(const ModelPicture& source, const ModelPicture& dest, int x, double position, const Colors& colors,
                bool endsLikeARow) {
    const auto from = Sheared(source, colors), to = Sheared(dest, colors);
    for (std::size_t c = 0; c < from.size(); ++c)
        ReferenceSkew(
            position, source.height, dest.height, from[c].background, !endsLikeARow,
            [&](int y) { return source.Pixel(x, y)[from[c].offset]; },
            [&](int y, std::uint8_t value) { dest.Pixel(x, y)[to[c].offset] = value; });
}

ModelPicture ReferenceShears(const ModelPicture& p, double r, const Colors& colors, bool endsLikeARow = false) {
    const double theta = r * 3.141592653589793 / 180;
    const double s = TrueSin(theta), t = TrueTan(theta * 0.5), c = TrueCos(theta);
    const int width = p.width, height = p.height;
    const ModelPicture a = NewModel(width + static_cast<int>(height * std::abs(t)), height, p.format);
    for (int y = 0; y < height; ++y) SkewRow(p, a, y, t * ((t >= 0 ? y : y - height) + 0.5), colors);
    const ModelPicture b = NewModel(a.width, static_cast<int>(height * c + width * std::abs(s)) + 1, p.format);
    double o = s <= 0 ? -s * (width - a.width) : s * (width - 1);
    for (int x = 0; x < a.width; ++x, o = o - s) SkewColumn(a, b, x, o, colors, endsLikeARow);
    const int h3 = static_cast<int>(width * std::abs(s) + height * c) + 1;
    const ModelPicture z = NewModel(static_cast<int>(height * std::abs(s) + width * c) + 1, h3, p.format);
    o = s < 0 ? t * (-s * (width - 1) + 1 - h3) : s * (width - 1) * -t;
    for (int u = 0; u < h3; ++u, o = o + t) {
        if (u < b.height)
            SkewRow(b, z, u, o, colors);
        else
            for (const Channel& channel : Sheared(z, colors))
                for (int x = 0; x < z.width; ++x) z.Pixel(x, u)[channel.offset] = channel.background;
    }
    return z;
}

ModelPicture ReferenceRotate(const ModelPicture& p, double angle, const Colors& colors) {
    while (angle >= 360) angle -= 360;
    while (angle < 0) angle += 360;
    ModelPicture turned = p;
    if (angle > 135 && angle <= 225) {
        turned = NewModel(p.width, p.height, p.format);
        ReferenceRotate180(p, turned);
        angle -= 180;
    } else if (angle > 45 && angle <= 315) {
        turned = NewModel(p.height, p.width, p.format);
        ReferenceQuarter(p, turned, angle <= 135, std::numeric_limits<int>::max());
        angle -= angle <= 135 ? 90 : 270;
    }
    return ReferenceShears(turned, angle, colors);
}

Ref<Object> RotateLive(const Ref<Object>& picture, double angle, const Colors& c = {}) {
    return CallObject(picture, "Rotate", angle, c.red, c.green, c.blue, c.alpha, c.gray);
}

// --- Every format, view and angle -------------------------------------------------------------

constexpr double kAngles[] = {10,  -10, 44.9999, 45,  45.0001, 60,  100, 134,   135, 135.5,  200,      224, 225, 225.5,
                              290, 315, 315.001, 350, 359.99,  0.3, 5,   17.25, 365, -1e-20, 1e9 + 0.5};

class RotateEverywhere : public PluginTest, public ::testing::WithParamInterface<int> {};

TEST_P(RotateEverywhere, ShearsThreeTimes) {
    Scene scene(static_cast<std::uint64_t>(GetParam()));
    Random& random = scene.random();
    for (int kind = 0; kind < 9; ++kind)
        for (int round = 0; round < 6; ++round) {
            scene.Clear();
            const Twin twin = scene.Kind(kind, random.Between(1, 40), random.Between(1, 40), GetParam());
            const double angle = round < 3 ? kAngles[random.Below(std::size(kAngles))] : random.Below(360000) / 1000.0;
            if (std::fmod(angle, 90) == 0) continue;
            const Colors colors = {random.Below(600), random.Below(256), -random.Below(256), random.Below(256), 300};
            const auto rotated = RotateLive(twin.live, angle, colors);
            ASSERT_TRUE(SamePicture(rotated, ReferenceRotate(twin.model, angle, colors)))
                << "kind " << kind << ", " << angle << " degrees of " << twin.model.width << " x " << twin.model.height;
            ASSERT_TRUE(scene.Same());
        }
}

INSTANTIATE_TEST_SUITE_P(Formats, RotateEverywhere, ::testing::ValuesIn([] {
                             std::vector<int> codes;
                             for (const Format& format : ChannelFormats()) codes.push_back(format.code);
                             return codes;
                         }()),
                         CodeName);

class Rotate : public PluginTest {};

// Wider than a strip of columns.
TEST_F(Rotate, ShearsWidePictures) {
    Scene scene(1);
    for (const int format : {kRGB, kG})
        for (const double angle : kAngles) {
            const Twin twin = scene.Memory(700, 30, format);
            ASSERT_TRUE(SamePicture(RotateLive(twin.live, angle), ReferenceRotate(twin.model, angle, {}))) << angle;
        }
}

TEST_F(Rotate, GivesThePictureItselfForWholeTurns) {
    auto picture = New("PictureTQX", 3, 2, kRGB);
    for (const double angle : {0.0, -0.0, 360.0, -720.0, 3.6e12}) EXPECT_EQ(RotateLive(picture, angle), picture);
    EXPECT_EQ(RotateLive(New("PictureTQX", 3, 2, 0), 90), nullptr);
}

TEST_F(Rotate, MultiplesOf90AreTheExactTurns) {
    auto picture = New("PictureTQX", 7, 4, kRGBA);
    FillRandom(picture, 1);
    const auto pixels = [&](const char* turn) { return ReadPixels(CallObject(picture, turn, nullptr)); };
    EXPECT_EQ(ReadPixels(RotateLive(picture, 90)), pixels("Rotate90"));
    EXPECT_EQ(ReadPixels(RotateLive(picture, 450)), pixels("Rotate90"));
    EXPECT_EQ(ReadPixels(RotateLive(picture, 180)), pixels("Rotate180"));
    EXPECT_EQ(ReadPixels(RotateLive(picture, -90)), pixels("Rotate270"));
}

TEST_F(Rotate, TurnsByAQuarterFirstWhatIsNearerToIt) {
    auto picture = New("PictureTQX", 17, 11, kRGBA);
    FillRandom(picture, 2);
    const auto pixels = [](const Ref<Object>& from, double angle) { return ReadPixels(RotateLive(from, angle)); };
    EXPECT_EQ(pixels(picture, 100), pixels(CallObject(picture, "Rotate90slow", nullptr), 10));
    EXPECT_EQ(pixels(picture, 190), pixels(CallObject(picture, "Rotate180", nullptr), 10));
    EXPECT_EQ(pixels(picture, 280), pixels(CallObject(picture, "Rotate270slow", nullptr), 10));
    EXPECT_EQ(pixels(picture, 350), pixels(picture, -10));
    EXPECT_EQ(pixels(picture, 370), pixels(picture, 10));
}

TEST_F(Rotate, TakesTheLowBytesOfItsBackground) {
    auto picture = New("PictureTQX", 9, 9, kRGBA);
    FillRandom(picture, 3);
    EXPECT_EQ(ReadPixels(RotateLive(picture, 10, {256 + 1, -255, 2, 1024 + 3, 0})),
              ReadPixels(RotateLive(picture, 10, {1, 1, 2, 3, 0})));
    auto gray = New("PictureTQX", 9, 9, kGA);
    FillRandom(gray, 4);
    EXPECT_EQ(ReadPixels(RotateLive(gray, 10, {1, 2, 3, 4, 300})), ReadPixels(RotateLive(gray, 10, {5, 6, 7, 8, 44})))
        << "of gray only its own counts";
}

TEST_F(Rotate, MakesAPictureThatHoldsTheTurnedOne) {
    const auto rotated = RotateLive(New("PictureTQX", 100, 50, kRGB), 10);
    const double angle = 10 * 3.141592653589793 / 180;
    EXPECT_EQ(GetInt(rotated, "Width"), static_cast<int>(50 * TrueSin(angle) + 100 * TrueCos(angle)) + 1);
    EXPECT_EQ(GetInt(rotated, "Height"), static_cast<int>(100 * TrueSin(angle) + 50 * TrueCos(angle)) + 1);
}

TEST_F(Rotate, AFlatPictureOnItsOwnBackgroundStaysNearlyFlat) {
    auto picture = New("PictureTQX", 60, 40, kG);
    Call(picture, "FillRect", 77);
    Colors colors;
    colors.gray = 77;
    for (const std::uint8_t byte : ReadPixels(RotateLive(picture, 23, colors))) {
        EXPECT_GE(byte, 75);  // each shear may lose a fraction at the ends
        EXPECT_LE(byte, 78);
    }
}

TEST_F(Rotate, LeavesAlphaOfGrayWithAlphaAsItWasMade) {
    auto picture = New("PictureTQX", 9, 9, kGA);
    FillRandom(picture, 3);
    const auto rotated = RotateLive(picture, 33);
    const int height = static_cast<int>(GetInt(rotated, "Height")), width = static_cast<int>(GetInt(rotated, "Width"));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) ASSERT_EQ(ByteAt(rotated, x, y, 1), 0);
}

TEST_F(Rotate, TheEndOfAColumnStandsOnItsLastPixel) {
    Scene scene(4);
    const Twin twin = scene.Memory(12, 12, kG);
    const auto rotated = RotateLive(twin.live, 3);
    EXPECT_TRUE(SamePicture(rotated, ReferenceShears(twin.model, 3, {})));
    EXPECT_FALSE(SamePicture(rotated, ReferenceShears(twin.model, 3, {}, true)));
}

TEST_F(Rotate, TakesAnyAngle) {
    auto picture = New("PictureTQX", 5, 4, kRGB);
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double angle : {infinity, -infinity, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_FALSE(RotateLive(picture, angle));
    for (const double angle : {1e308, -1e308, 5e-324, -5e-324, std::nextafter(360.0, 0.0)})
        EXPECT_TRUE(RotateLive(picture, angle)) << angle;
}

TEST_F(Rotate, GivesNilForUnusablePictures) {
    auto closed = New("PictureTQX", 4, 4, kRGB);
    Call(closed, "Close");
    for (const double angle : {10.0, 90.0, 100.0, 180.0, 190.0, 270.0, 280.0}) {
        EXPECT_FALSE(RotateLive(closed, angle));
        EXPECT_FALSE(RotateLive(New("PictureTQX", 3, 3, 0), angle));
        EXPECT_FALSE(RotateLive(New("PictureTQX", 3, 0, kRGB), angle));
    }
    EXPECT_FALSE(RotateLive(New("PictureTQX", 3, 3, kScaling), 10));
}

// --- Factories --------------------------------------------------------------------------------

TEST_F(Rotate, MakesAllItsPicturesByItsOwnFactory) {
    Scene scene(5);
    const Twin twin = scene.Memory(20, 10, kRGB);
    int made = 0;
    const auto factory = NewFactory([&](int width, int height, int format) {
        ++made;
        return New("PictureTQX", width, height, format);
    });
    Set(twin.live, "Factory", Value(factory));
    EXPECT_TRUE(SamePicture(RotateLive(twin.live, 100), ReferenceRotate(twin.model, 100, {})));
    EXPECT_EQ(made, 4);
    Set(twin.live, "Factory", Value(nullptr));
}

TEST_F(Rotate, WorksThroughMappedPictures) {
    Scene scene(6);
    const Twin twin = scene.Mapped(40, 30, kRGBA, ScratchPath("source"));
    int made = 0;
    const auto factory = NewFactory([&](int width, int height, int format) {
        return scene.Mapped(width, height, format, ScratchPath("pass" + std::to_string(++made))).live;
    });
    Set(twin.live, "Factory", Value(factory));
    for (const double angle : {10.0, 215.0}) {
        const auto rotated = RotateLive(twin.live, angle);
        const ModelPicture expected = ReferenceRotate(twin.model, angle, {});
        ASSERT_EQ(GetInt(rotated, "Width"), expected.width);
        for (int y = 0; y < expected.height; ++y)
            ASSERT_EQ(ReadRow(rotated, y), Bytes(expected.Row(y), expected.Row(y) + expected.width * 4)) << "row " << y;
    }
    Set(twin.live, "Factory", Value(nullptr));
}

// A factory may give pictures of other sizes and layouts, or the picture itself.
TEST_F(Rotate, SurvivesPicturesOfOtherSizes) {
    Scene scene(7);
    Random& random = scene.random();
    for (int round = 0; round < 200; ++round) {
        auto picture =
            New("PictureTQX", random.Between(1, 20), random.Between(1, 20), random.Below(2) == 0 ? kRGBA : kG);
        FillRandom(picture, static_cast<std::uint64_t>(round));
        const Ref<Object> other =
            New("PictureTQX", random.Between(1, 300), random.Between(1, 60), random.Between(1, 13));
        const auto factory = NewFactory([&](int width, int height, int format) {
            switch (random.Below(5)) {
                case 0:
                    return picture;
                case 1:
                    return CallObject(other, "MirroredView");
                case 2:
                    return CallObject(other, "ClipImage", 1, 1, 200, 30);
                case 3:
                    return New("PictureTQX", random.Between(1, 60), random.Between(1, 60), random.Between(1, 21));
                default:
                    return New("PictureTQX", width, height, format);
            }
        });
        Set(picture, "Factory", Value(factory));
        RotateLive(picture, random.Below(3600) / 10.0 + 0.05);
        Set(picture, "Factory", Value(nullptr));
    }
}

TEST_F(Rotate, GivesNilWhenAPassCannotBeMade) {
    for (int failing = 1; failing <= 4; ++failing) {
        auto picture = New("PictureTQX", 40, 30, kRGB);
        const FailingHostFunction none("PluginNewInstance", failing, 1);
        EXPECT_FALSE(RotateLive(picture, 100)) << "picture " << failing;
    }
}

// --- Memory and yields ------------------------------------------------------------------------

TEST_F(Rotate, YieldsOnceBeforeEachPass) {
    FakeClock clock(100);
    clock.AdvancePerReading(10);
    auto picture = New("PictureTQX", 20, 20, kRGB);
    Set(picture, "YieldTicks", Value(1));
    const auto factory = NewFactory([&](int width, int height, int format) {
        auto made = New("PictureTQX", width, height, format);
        Set(made, "YieldTicks", Value(1));
        return made;
    });
    Set(picture, "Factory", Value(factory));
    const auto before = CallsOf("REALYieldToRB");
    RotateLive(picture, 10);
    EXPECT_EQ(CallsOf("REALYieldToRB") - before, 4);
    Set(picture, "Factory", Value(nullptr));
}

TEST_F(Rotate, GivesNilWhenAYieldTakesAPicture) {
    FakeClock clock(100);
    clock.AdvancePerReading(10);
    for (const bool rebuilds : {false, true})
        for (int at = 1; at <= 4; ++at) {
            auto picture = New("PictureTQX", 30, 20, kRGB);
            Set(picture, "YieldTicks", Value(1));
            std::vector<Ref<Object>> made = {picture};
            const auto factory = NewFactory([&](int width, int height, int format) {
                made.push_back(New("PictureTQX", width, height, format));
                Set(made.back(), "YieldTicks", Value(1));
                return made.back();
            });
            Set(picture, "Factory", Value(factory));
            int yields = 0;
            const OnYield interrupt([&] {
                if (++yields != at) return;
                if (rebuilds)
                    Call(made.back(), "Constructor", 1, 1, kG);
                else
                    Call(made.back(), "Close");
            });
            EXPECT_FALSE(RotateLive(picture, 10)) << "yield " << at;
            Set(picture, "Factory", Value(nullptr));
        }
}

}  // namespace
