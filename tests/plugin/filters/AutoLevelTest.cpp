// Automatic levels beside a model, and what they refuse.
#include <climits>
#include <cmath>

#include "tests/plugin/filters/FilterScenes.h"
#include "tests/plugin/filters/RandomScenes.h"
#include "tests/support/Interpose.h"

namespace {

using namespace support;
using namespace scenes;

struct Area {
    int x, y, w, h;
};

// The rectangle's pixels, by the words: turned round, cut left and top, cut right and bottom.
bool CutAxis(std::int64_t& start, std::int64_t& size, int extent) {
    if (size < 0) start += size, size = -size;
    if (start < 0) size += start, start = 0;
    if (start >= extent)
        size = 0;
    else if (start + size > extent)
        size = extent - start;
    return size >= 1;
}

int LuminanceAt(const Pixels& pixels, std::int64_t x, std::int64_t y) {
    const double red = pixels.Value(x, y, kRed), green = pixels.Value(x, y, kGreen), blue = pixels.Value(x, y, kBlue);
    return static_cast<int>(std::fma(blue, 0.01, std::fma(red, 0.177, green * 0.813)));
}

int LastWithin(const std::vector<int>& cumulative, int limit) {
    int last = 0;
    for (int i = 0; i < 256; ++i)
        if (cumulative[static_cast<std::size_t>(i)] <= limit) last = i;
    return last;
}

// False when the rectangle is refused.
bool Stretch(const Pixels& pixels, const Area& area) {
    std::int64_t x0 = area.x, y0 = area.y, w = area.w, h = area.h;
    const bool columns = CutAxis(x0, w, pixels.width), lines = CutAxis(y0, h, pixels.height);
    if (!columns || !lines) return false;
    std::vector<int> cumulative(256, 0);
    for (std::int64_t y = y0; y < y0 + h; ++y)
        for (std::int64_t x = x0; x < x0 + w && pixels.Has(x, y); ++x)
            for (int i = LuminanceAt(pixels, x, y); i < 256; ++i) ++cumulative[static_cast<std::size_t>(i)];
    const float total = static_cast<float>(cumulative[255]);
    const int low = LastWithin(cumulative, static_cast<int>(total * 0.005f));
    const int high = LastWithin(cumulative, static_cast<int>(total * 0.995f));
    const double scale = 255.0 / (high - low);
    const auto stretched = [&](int value) {
        const double mapped = scale * (value - low);
        if (value < low || std::isnan(mapped)) return 0;
        return value > high ? 255 : static_cast<int>(mapped);
    };
    for (std::int64_t y = y0; y < y0 + h; ++y)
        for (std::int64_t x = x0; x < x0 + w && pixels.Has(x, y); ++x) {
            const int red = stretched(pixels.Value(x, y, kRed)), green = stretched(pixels.Value(x, y, kGreen)),
                      blue = stretched(pixels.Value(x, y, kBlue));
            *pixels.At(x, y, kRed) = static_cast<std::uint8_t>(red);
            *pixels.At(x, y, kGreen) = static_cast<std::uint8_t>(green);
            *pixels.At(x, y, kBlue) = static_cast<std::uint8_t>(blue);
        }
    return true;
}

class AutoLevel : public PluginTest {
  protected:
    // A picture whose values crowd in the middle, so that stretching shows.
    static Ref<Object> Crowded(int width, int height, int format) {
        const auto picture = New("PictureTQX", width, height, format);
        Bytes pixels(ReadPixels(picture).size());
        Random random(5);
        for (std::uint8_t& byte : pixels)
            byte = static_cast<std::uint8_t>(60 + (random.Below(80) + random.Below(80)) / 2);
        WritePixels(picture, pixels);
        return picture;
    }

    // `storage` is the picture that holds all of the view's pixels.
    static void ExpectStretched(const Ref<Object>& storage, const Ref<Object>& view, const Area& area) {
        const Bytes before = ReadPixels(storage);
        const bool taken = CallBool(view, "AutoLevel", area.x, area.y, area.w, area.h);
        const Bytes after = ReadPixels(storage);
        WritePixels(storage, before);
        EXPECT_EQ(taken, Stretch(Pixels(view), area));
        EXPECT_TRUE(SameBytes(after, ReadPixels(storage)));
    }
};

TEST_F(AutoLevel, StretchesEveryColourFormatAndView) {
    for (const Format& format : ChannelFormats()) {
        if (!format.isRGB) continue;
        SCOPED_TRACE(format.name);
        const auto picture = Crowded(33, 21, format.code);
        ExpectStretched(picture, picture, {0, 0, 33, 21});
        ExpectStretched(picture, CallObject(picture, "ClipImage", 5, 3, 20, 11), {0, 0, 20, 11});
        ExpectStretched(picture, CallObject(picture, "MirroredView"), {2, 2, 9, 30});
        ExpectStretched(picture, CallObject(picture, "RGBChannels"), {0, 0, 33, 21});
    }
}

TEST_F(AutoLevel, ServesRandomScenes) {
    for (std::uint64_t seed = 0; seed < 400 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const scenes::FilterScene scene = RandomScene(seed, {600, 30});
        const Pictures actual = scene.make(), expected = scene.make();
        const Pixels pixels(expected.source);
        const auto number = [&](int extent) {
            return random.Below(4) == 0 ? AnyInteger(random) : random.Between(-extent - 3, extent + 3);
        };
        Area area{number(pixels.width), number(pixels.height), number(pixels.width), number(pixels.height)};
        if (random.Below(3) == 0) area = {0, 0, pixels.width, pixels.height};
        EXPECT_EQ(CallBool(actual.source, "AutoLevel", area.x, area.y, area.w, area.h),
                  pixels.isRGB && Stretch(pixels, area));
        EXPECT_TRUE(SameStorage(actual, expected));
    }
}

TEST_F(AutoLevel, TakesEverySignOfRectangle) {
    const auto picture = Crowded(30, 20, 1);
    const int numbers[] = {INT_MIN, -31, -5, 0, 1, 10, 29, 30, 31, INT_MAX};
    for (const int x : numbers)
        for (const int w : numbers) {
            SCOPED_TRACE(std::to_string(x) + " " + std::to_string(w));
            ExpectStretched(picture, picture, {x, 0, w, 20});
            ExpectStretched(picture, picture, {0, x, 30, w});
        }
}

TEST_F(AutoLevel, CoversTheColumnsItIsGiven) {
    for (const auto& [area, first, last] : {std::tuple{Area{10, 0, -5, 1}, 5, 9}, {Area{-3, 0, 10, 1}, 0, 6}}) {
        const auto picture = New("PictureTQX", 20, 1, 1);
        WritePixels(picture, Bytes(60, 100));
        EXPECT_TRUE(CallBool(picture, "AutoLevel", area.x, area.y, area.w, area.h));
        for (int x = 0; x < 20; ++x) EXPECT_EQ(ByteAt(picture, x, 0, 0), x >= first && x <= last ? 255 : 100) << x;
    }
}

// Elsewhere such a rectangle covers the whole picture.
TEST_F(AutoLevel, RefusesARectangleOutsideThePicture) {
    const auto picture = Crowded(30, 20, 1);
    const Bytes before = ReadPixels(picture);
    for (const Area& area : {Area{-20, 0, 10, 20}, {0, -20, 30, 10}, {30, 0, 5, 5}, {0, 20, 5, 5}, {3, 3, 0, 5}})
        EXPECT_FALSE(CallBool(picture, "AutoLevel", area.x, area.y, area.w, area.h));
    EXPECT_EQ(ReadPixels(picture), before);
}

TEST_F(AutoLevel, LowIsTheLastLevelWithinHalfAPercent) {
    // 10000 pixels: 50 and fewer count as within the low cut, 9950 and fewer within the high one.
    // What 110 becomes.
    const auto middleOf = [](int dark, int bright) {
        const auto picture = New("PictureTQX", 100, 100, 1);
        Bytes pixels;
        for (int i = 0; i < 10000; ++i)
            pixels.insert(pixels.end(), 3, static_cast<std::uint8_t>(i < dark ? 10 : i < 10000 - bright ? 110 : 210));
        WritePixels(picture, pixels);
        EXPECT_TRUE(CallBool(picture, "AutoLevel"));
        EXPECT_EQ(ByteAt(picture, 99, 99, 0), 255);
        return ByteAt(picture, 50, 50, 0);
    };
    // The weights give 10, 110 and 210 luminances of 9, 109 and 209, so that low and high are the
    // levels right below these.
    EXPECT_EQ(middleOf(50, 50), 5);    // low 108, high 208
    EXPECT_EQ(middleOf(51, 50), 130);  // low 8, high 208
    EXPECT_EQ(middleOf(50, 51), 5);    // as many bright ones more leave 9949 below
    EXPECT_EQ(middleOf(50, 49), 255);  // 9951 up to 109: low and high are 108 both
}

TEST_F(AutoLevel, OfAUniformPictureIsWhite) {
    const auto picture = New("PictureTQX", 10, 10, 2);
    WritePixels(picture, Bytes(400, 77));
    EXPECT_TRUE(CallBool(picture, "AutoLevel"));
    for (int c = 0; c < 3; ++c) EXPECT_EQ(ByteAt(picture, 4, 4, c), 255);
    EXPECT_EQ(ByteAt(picture, 4, 4, 3), 77) << "alpha stays";
    // Black: low and high are both 0, and 0 is equal to low.
    const auto black = New("PictureTQX", 10, 10, 1);
    EXPECT_TRUE(CallBool(black, "AutoLevel"));
    EXPECT_EQ(ReadPixels(black), Bytes(300, 0));
}

TEST_F(AutoLevel, RefusesGrayAndUnusablePictures) {
    for (const int format : {0, 11, 12, 13, 14, 15, 21})
        EXPECT_FALSE(CallBool(New("PictureTQX", 4, 4, format), "AutoLevel")) << format;
    const auto closed = New("PictureTQX", 4, 4, 1);
    Call(closed, "Close");
    EXPECT_FALSE(CallBool(closed, "AutoLevel"));
    EXPECT_FALSE(CallBool(New("PictureTQX", 0, 4, 1), "AutoLevel"));
}

TEST_F(AutoLevel, YieldsBeforeAndAfterEachCountedRow) {
    FakeClock clock;
    clock.AdvancePerReading(1);
    const auto picture = Crowded(10, 7, 1);
    Set(picture, "YieldTicks", 1);
    const std::int64_t before = CallsOf("REALYieldToRB");
    EXPECT_TRUE(CallBool(picture, "AutoLevel", 0, 1, 10, 5));
    EXPECT_EQ(CallsOf("REALYieldToRB") - before, 1 + 5);
}

TEST_F(AutoLevel, EndsWhenAYieldClosesThePicture) {
    const auto picture = Crowded(10, 7, 1);
    Set(picture, "YieldTicks", 1);
    const OnYield meddle([&] { Call(picture, "Close"); });
    EXPECT_FALSE(CallBool(picture, "AutoLevel"));
}

}  // namespace
