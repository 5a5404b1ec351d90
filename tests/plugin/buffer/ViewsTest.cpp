// Views: what they show, share and keep alive.
#include "tests/support/Formats.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

class Views : public PluginTest {
  protected:
    struct Extent {
        std::int64_t width, height, rowOffset;
        bool operator==(const Extent&) const = default;
    };

    static Extent ExtentOf(const Ref<Object>& view) {
        return {GetInt(view, "Width"), GetInt(view, "Height"), GetInt(view, "RowOffset")};
    }
};

TEST_F(Views, ClipReachesPixelsOfItsRectangle) {
    const auto picture = New("PictureTQX", 20, 10, 2);
    FillRandom(picture, 1);
    const auto clip = CallObject(picture, "ClipImage", 5, 3, 7, 4);
    EXPECT_EQ(ExtentOf(clip), (Extent{7, 4, 3}));
    EXPECT_EQ(GetInt(clip, "RedOffset"), 5 * 4 + 0);
    EXPECT_EQ(GetInt(clip, "AlphaOffset"), 5 * 4 + 3);
    EXPECT_EQ(GetInt(clip, "RowSize"), GetInt(picture, "RowSize"));
    EXPECT_EQ(GetInt(clip, "TotalSize"), GetInt(picture, "TotalSize"));
    EXPECT_EQ(GetInt(clip, "ImageFormat"), 2);
    EXPECT_EQ(GetObject(clip, "Parent"), picture);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 7; ++x)
            EXPECT_EQ(ByteAt(clip, x, y, GetInt(clip, "GreenOffset")), ByteAt(picture, x + 5, y + 3, 1));
}

TEST_F(Views, ClipTakesEverySignOfRectangle) {
    const auto picture = New("PictureTQX", 100, 100, 1);
    const auto clip = [&](int x, int y, int w, int h) {
        return ExtentOf(CallObject(picture, "ClipImage", x, y, w, h));
    };
    EXPECT_EQ(clip(-5, -5, 10, 10), (Extent{5, 5, 0}));
    EXPECT_EQ(clip(10, 10, -5, -5), (Extent{5, 5, 5}));
    EXPECT_EQ(clip(95, 95, 10, 10), (Extent{5, 5, 95}));
    EXPECT_EQ(clip(0, 0, 1000, 1000), (Extent{100, 100, 0}));
    EXPECT_EQ(clip(3, 4, 0, 0), (Extent{0, 0, 4}));
    EXPECT_EQ(clip(100, 100, 5, 5), (Extent{0, 0, 100}));
    EXPECT_EQ(clip(0, 0, INT32_MAX, INT32_MAX), (Extent{100, 100, 0}));
    EXPECT_EQ(clip(50, 50, INT32_MAX, INT32_MAX), (Extent{50, 50, 50}));
    EXPECT_EQ(clip(100, 100, INT32_MIN, INT32_MIN), (Extent{100, 100, 0}));
}

// Sizes are compared as unsigned numbers, whatever became of them before.
TEST_F(Views, ClipWhollyBeforeThePictureCoversAllOfIt) {
    const auto picture = New("PictureTQX", 100, 50, 1);
    EXPECT_EQ(ExtentOf(CallObject(picture, "ClipImage", -20, -20, 10, 10)), (Extent{100, 50, 0}));
}

TEST_F(Views, ClipPastTheEdgeHasANegativeSize) {
    const auto picture = New("PictureTQX", 100, 100, 1);
    EXPECT_EQ(GetInt(CallObject(picture, "ClipImage", 150, 0, 10, 10), "Width"), -50);
    EXPECT_EQ(GetInt(CallObject(picture, "ClipImage", 0, 150, 10, 10), "Height"), -50);
    EXPECT_EQ(GetInt(CallObject(picture, "ClipImage", INT32_MAX, INT32_MAX, 10, 10), "Width"), 100 - INT32_MAX);
}

TEST_F(Views, NothingCanBeReadThroughANegativeClip) {
    const auto picture = New("PictureTQX", 100, 100, 1);
    FillRandom(picture, 2);
    const Bytes before = ReadPixels(picture);
    for (const auto& [x, y] : {std::pair{150, 0}, {0, 150}, {150, 150}, {INT32_MAX, INT32_MAX}}) {
        const auto clip = CallObject(picture, "ClipImage", x, y, 10, 10);
        const auto again = CallObject(clip, "ClipImage", 0, 0, 10, 10);
        for (const auto& view : {clip, again, CallObject(clip, "MirroredView"), CallObject(clip, "RedChannel")}) {
            const std::int64_t width = GetInt(view, "Width"), height = GetInt(view, "Height");
            if (width > 0 && height > 0)
                EXPECT_EQ(TextBytes(Call(view, "DataStringInFormat", 11)), Bytes(width * height, 0));
            else
                EXPECT_EQ(Call(view, "DataStringInFormat", 1).string(), nullptr);
            if (GetInt(view, "Width") <= 0) {
                EXPECT_FALSE(CallObject(view, "RowInFormat", 0, 1));
            }
            TakeThrown();
            Call(view, "SolarizeFilter", view);
        }
    }
    EXPECT_EQ(ReadPixels(picture), before);
}

// A negative size is a huge unsigned number, which cuts nothing; what is called for is given, and
// has no rows.
TEST_F(Views, ClipOfANegativeClipHasTheSizeThatWasCalledFor) {
    const auto picture = New("PictureTQX", 100, 100, 1);
    const auto clip = CallObject(picture, "ClipImage", 150, 130, 10, 10);
    EXPECT_EQ(ExtentOf(clip), (Extent{-50, -30, 130}));
    EXPECT_EQ(ExtentOf(CallObject(clip, "ClipImage", 2, 3, 10, 7)), (Extent{10, 7, 133}));
    EXPECT_EQ(ExtentOf(CallObject(clip, "ClipImage")), (Extent{0, 0, 130}));
    const auto wide = CallObject(CallObject(picture, "ClipImage", 150, 0, 10, 10), "ClipImage", 0, 0, 10, 5000);
    EXPECT_EQ(ExtentOf(wide), (Extent{10, 10, 0}));
    EXPECT_FALSE(CallObject(wide, "RawRow", 0)) << "its columns are not the picture's";
    const auto tall = CallObject(CallObject(picture, "ClipImage", 0, 150, 10, 10), "ClipImage", 0, 0, 10, 5000);
    EXPECT_EQ(ExtentOf(tall), (Extent{10, 5000, 150}));
    const auto clone = CallObject(tall, "Clone");
    ASSERT_TRUE(clone);
    EXPECT_EQ(GetInt(clone, "Height"), 5000);
    for (const int y : {0, 4999}) EXPECT_FALSE(CallObject(clone, "RawRow", y));
}

TEST_F(Views, ClipOfAnRgbViewHasItsChannelsInTheFirstByte) {
    const auto clip = CallObject(CallObject(New("PictureTQX", 9, 7, 4), "RGBChannels"), "ClipImage", 2, 1, 5, 4);
    EXPECT_TRUE(GetBool(clip, "IsRGB"));
    for (const char* offset : {"RedOffset", "GreenOffset", "BlueOffset"}) EXPECT_EQ(GetInt(clip, offset), 0) << offset;
    for (const char* flag : {"HasRed", "HasGreen", "HasBlue"}) EXPECT_FALSE(GetBool(clip, flag)) << flag;
}

TEST_F(Views, ClipOfAClipAddsUp) {
    const auto picture = New("PictureTQX", 20, 10, 1);
    FillRandom(picture, 3);
    const auto outer = CallObject(picture, "ClipImage", 5, 2, 10, 6);
    const auto inner = CallObject(outer, "ClipImage", 3, 1, 100, 100);
    EXPECT_EQ(ExtentOf(inner), (Extent{7, 5, 3}));
    EXPECT_EQ(GetInt(inner, "RedOffset"), 24);
    EXPECT_EQ(ByteAt(inner, 0, 0, GetInt(inner, "RedOffset")), ByteAt(picture, 8, 3, 0));
}

TEST_F(Views, ClipLeavesAbsentChannelsAtZero) {
    const auto clip = CallObject(New("PictureTQX", 20, 10, 5), "ClipImage", 2, 0, 5, 5);
    EXPECT_EQ(GetInt(clip, "RedOffset"), 9);
    EXPECT_EQ(GetInt(clip, "AlphaOffset"), 0);
    EXPECT_FALSE(GetBool(clip, "HasAlpha"));
    const auto gray = CallObject(New("PictureTQX", 20, 10, 12), "ClipImage", 2, 0, 5, 5);
    EXPECT_EQ(GetInt(gray, "GrayOffset"), 4);
    EXPECT_EQ(GetInt(gray, "RedOffset"), 0);
}

TEST_F(Views, ClipKeepsTheMemoryBlock) {
    const auto block = MakeBlock(64);
    const auto picture = New("PictureTQX", block, 4, 4, 11, 16);
    EXPECT_EQ(GetObject(CallObject(picture, "ClipImage"), "MemoryTarget"), block);
    EXPECT_FALSE(GetObject(CallObject(picture, "GrayChannel"), "MemoryTarget"));
}

TEST_F(Views, ChannelViewIsAGrayPicture) {
    const struct {
        const char* method;
        const char* flag;
        const char* offset;
    } channels[] = {{"RedChannel", "HasRed", "RedOffset"},
                    {"GreenChannel", "HasGreen", "GreenOffset"},
                    {"BlueChannel", "HasBlue", "BlueOffset"},
                    {"GrayChannel", "HasGray", "GrayOffset"},
                    {"AlphaChannel", "HasAlpha", "AlphaOffset"}};
    for (int code = 1; code < kFormatCount; ++code) {
        const auto whole = New("PictureTQX", 9, 7, code);
        FillRandom(whole, 4);
        const auto picture = CallObject(whole, "ClipImage", 2, 1, 5, 4);
        for (const auto& channel : channels) {
            SCOPED_TRACE(std::string(kFormats[code].name) + " " + channel.method);
            const auto view = CallObject(picture, channel.method);
            ASSERT_EQ(static_cast<bool>(view), GetBool(picture, channel.flag));
            if (!view) continue;
            EXPECT_EQ(GetInt(view, "ImageFormat"), 11);
            EXPECT_TRUE(GetBool(view, "IsGray"));
            EXPECT_TRUE(GetBool(view, "HasGray"));
            EXPECT_FALSE(GetBool(view, "HasAlpha"));
            EXPECT_EQ(GetInt(view, "GrayOffset"), GetInt(picture, channel.offset));
            EXPECT_EQ(GetInt(view, "PixelSize"), GetInt(picture, "PixelSize"));
            EXPECT_EQ(ExtentOf(view), (Extent{5, 4, 1}));
            EXPECT_EQ(GetObject(view, "Parent"), picture);
        }
    }
}

TEST_F(Views, MissingChannelsGiveNil) {
    EXPECT_FALSE(CallObject(New("PictureTQX", 1, 1, 11), "RedChannel"));
    EXPECT_FALSE(CallObject(New("PictureTQX", 1, 1, 1), "GrayChannel"));
    EXPECT_FALSE(CallObject(New("PictureTQX", 1, 1, 5), "AlphaChannel"));
}

// The view's format code says 3-byte pixels while PixelSize stays the parent's, and its Has flags
// are all false.
TEST_F(Views, RgbChannelsKeepTheParentsPixelSize) {
    for (int code = 1; code < kFormatCount; ++code) {
        const auto picture = New("PictureTQX", 4, 3, code);
        const auto view = CallObject(picture, "RGBChannels");
        SCOPED_TRACE(kFormats[code].name);
        ASSERT_EQ(static_cast<bool>(view), kFormats[code].isRGB);
        if (!view) continue;
        EXPECT_EQ(GetInt(view, "ImageFormat"), code <= 5 ? 1 : 6);
        EXPECT_EQ(GetInt(view, "PixelSize"), kFormats[code].pixelSize);
        EXPECT_EQ(GetInt(view, "RedOffset"), kFormats[code].red);
        EXPECT_EQ(GetInt(view, "GreenOffset"), kFormats[code].green);
        EXPECT_EQ(GetInt(view, "BlueOffset"), kFormats[code].blue);
        EXPECT_TRUE(GetBool(view, "IsRGB"));
        for (const char* flag : {"IsGray", "HasRed", "HasGreen", "HasBlue", "HasAlpha", "HasGray"})
            EXPECT_FALSE(GetBool(view, flag)) << flag;
    }
    const auto view = CallObject(New("PictureTQX", 1, 1, 10), "RGBChannels");
    EXPECT_EQ(GetInt(view, "ImageFormat"), 6);
    EXPECT_EQ(GetInt(view, "PixelSize"), 4);
    EXPECT_EQ(GetInt(view, "RedOffset"), 3);
}

TEST_F(Views, MirroredViewTurnsRowsUpsideDown) {
    const auto picture = New("PictureTQX", 6, 5, 1);
    FillRandom(picture, 5);
    const auto mirrored = CallObject(picture, "MirroredView");
    for (int y = 0; y < 5; ++y) EXPECT_EQ(ReadRow(mirrored, y), ReadRow(picture, 4 - y));
    EXPECT_EQ(ReadPixels(CallObject(mirrored, "MirroredView")), ReadPixels(picture));
}

TEST_F(Views, ViewsOfMirroredViewsStayMirrored) {
    const auto picture = New("PictureTQX", 6, 8, 1);
    FillRandom(picture, 6);
    const auto mirrored = CallObject(picture, "MirroredView");
    const auto clip = CallObject(mirrored, "ClipImage", 0, 2, 6, 3);
    // A mirrored clip counts from its own bottom row among the storage's rows.
    for (int y = 0; y < 3; ++y) EXPECT_EQ(ReadRow(clip, y), ReadRow(picture, 3 - y - 1 + 2));
    const auto red = CallObject(mirrored, "RedChannel");
    EXPECT_EQ(ByteAt(red, 1, 0, GetInt(red, "GrayOffset")), ByteAt(picture, 1, 7, 0));
}

TEST_F(Views, StartWithoutTheParentsExtras) {
    const auto picture = New("PictureTQX", 4, 4, 2);
    Set(picture, "YieldTicks", 7);
    Set(picture, "DebugPictureEnabled", true);
    Set(picture, "Factory", NewFactory([](int, int, int) { return Ref<Object>(); }));
    for (const char* method : {"ClipImage", "RedChannel", "RGBChannels", "MirroredView"}) {
        const auto view = CallObject(picture, method);
        EXPECT_EQ(GetInt(view, "YieldTicks"), 0) << method;
        EXPECT_FALSE(GetObject(view, "Factory")) << method;
        EXPECT_FALSE(GetBool(view, "DebugPictureEnabled")) << method;
    }
}

TEST_F(Views, AreNilWithoutAnInstance) {
    const auto picture = New("PictureTQX", 4, 4, 2);
    const FailingHostFunction failing("PluginNewInstance");
    for (const char* method : {"ClipImage", "RedChannel", "AlphaChannel", "RGBChannels", "MirroredView"})
        EXPECT_FALSE(CallObject(picture, method)) << method;
}

TEST_F(Views, HaveNoRowsOnceAParentWasClosed) {
    const auto picture = New("PictureTQX", 4, 4, 2);
    const auto clip = CallObject(picture, "ClipImage", 1, 1, 2, 2);
    const auto channel = CallObject(clip, "RedChannel");
    const auto mirrored = CallObject(picture, "MirroredView");
    Call(picture, "Close");
    for (const auto& view : {clip, channel, mirrored}) {
        EXPECT_FALSE(CallObject(view, "RawRow", 0));
        EXPECT_FALSE(CallObject(view, "Clone"));
        EXPECT_FALSE(GetObject(view, "Memory"));
    }
    Call(picture, "Constructor", 4, 4, 2);
    EXPECT_FALSE(CallObject(clip, "RawRow", 0)) << "the new storage is not the view's";
}

}  // namespace
