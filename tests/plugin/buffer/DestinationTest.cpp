// Destinations: who is asked for one, and what factories may do in the middle of a call.
#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

class Destination : public PluginTest {
  protected:
    void TearDown() override {
        CallShared("PictureFactoryTQX", "SetFactory", nullptr);
        PluginTest::TearDown();
    }

    static void SetGlobalFactory(const Ref<Object>& factory) { CallShared("PictureFactoryTQX", "SetFactory", factory); }
};

TEST_F(Destination, IsAMemoryPictureWithoutAnyFactory) {
    const auto shared = CallShared("PictureTQX", "CreatePictureTQX", 5, 4, 2);
    const auto picture = Ref<Object>::Share(shared.object());
    EXPECT_TRUE(GetBool(picture, "Valid"));
    EXPECT_EQ(GetInt(picture, "Width"), 5);
    EXPECT_EQ(GetInt(picture, "Height"), 4);
    EXPECT_EQ(GetInt(picture, "ImageFormat"), 2);
    EXPECT_EQ(GetInt(CallObject(picture, "CreatePictureTQX", 3, 2, 11), "Width"), 3);
}

TEST_F(Destination, IsNilForAnImpossiblePicture) {
    EXPECT_FALSE(CallShared("PictureTQX", "CreatePictureTQX", 5, 4, 0).object());
    EXPECT_FALSE(CallShared("PictureTQX", "CreatePictureTQX", -5, 4, 1).object());
    EXPECT_FALSE(CallObject(New("PictureTQX", 1, 1, 1), "CreatePictureTQX", 5, 4, 0));
    EXPECT_FALSE(CallObject(New("PictureTQX", 1, 1, 1), "CreatePictureTQX", 5, 4, 22));
    EXPECT_TRUE(CallObject(New("PictureTQX", 1, 1, 0), "CreatePictureTQX", 5, 4, 1)) << "the owner need not be valid";
    const FailingHostFunction failing("PluginNewInstance");
    EXPECT_FALSE(CallShared("PictureTQX", "CreatePictureTQX", 5, 4, 1).object());
}

TEST_F(Destination, ComesFromTheOwnersFactoryFirst) {
    std::vector<std::string> asked;
    const auto maker = [&](std::string name) {
        return [&asked, name](int width, int height, int format) {
            asked.push_back(name + " " + std::to_string(width) + "x" + std::to_string(height) + " " +
                            std::to_string(format));
            return New("PictureTQX", width, height, format);
        };
    };
    SetGlobalFactory(NewFactory(maker("global")));
    const auto picture = New("PictureTQX", 6, 3, 2);
    Set(picture, "Factory", NewFactory(maker("own")));
    EXPECT_TRUE(CallObject(picture, "GammaFilter", nullptr, 2.0));
    EXPECT_TRUE(CallObject(picture, "CreatePictureTQX", 1, 2, 11));
    EXPECT_TRUE(CallShared("PictureTQX", "CreatePictureTQX", 3, 4, 12).object());
    EXPECT_EQ(asked, (std::vector<std::string>{"own 6x3 2", "own 1x2 11", "global 3x4 12"}));
}

TEST_F(Destination, FallsThroughFactoriesThatGiveNothing) {
    int ownAsked = 0, globalAsked = 0;
    const auto picture = New("PictureTQX", 6, 3, 2);
    Set(picture, "Factory", NewFactory([&](int, int, int) {
            ++ownAsked;
            return Ref<Object>();
        }));
    SetGlobalFactory(NewFactory([&](int width, int, int format) {
        ++globalAsked;
        return New("PictureTQX", width, -1, format);  // not valid
    }));
    const auto result = CallObject(picture, "CreatePictureTQX", 2, 2, 1);
    EXPECT_TRUE(GetBool(result, "Valid"));
    EXPECT_EQ(GetInt(result, "Height"), 2);
    EXPECT_EQ(ownAsked, 1);
    EXPECT_EQ(globalAsked, 1);
}

TEST_F(Destination, ComesFromTheGlobalFactoryWhenTheOwnersGivesNil) {
    const auto given = New("PictureTQX", 1, 1, 11);
    SetGlobalFactory(NewFactory([&](int, int, int) { return given; }));
    const auto picture = New("PictureTQX", 6, 3, 2);
    Set(picture, "Factory", NewFactory([](int, int, int) { return Ref<Object>(); }));
    EXPECT_EQ(CallObject(picture, "CreatePictureTQX", 2, 2, 1), given);
    EXPECT_EQ(CallObject(picture, "SolarizeFilter", nullptr), given);
    Set(picture, "Factory", NewFactory([](int, int, int) { return New("PictureTQX", 1, 1, 0); }));
    EXPECT_EQ(CallObject(picture, "CreatePictureTQX", 2, 2, 1), given) << "an invalid picture is passed over";
    Set(picture, "Factory", NewFactory(nullptr));
    EXPECT_EQ(CallObject(picture, "CreatePictureTQX", 2, 2, 1), given);
}

TEST_F(Destination, PassesOverAFactoryWithoutAHandler) {
    SetGlobalFactory(NewFactory(nullptr));
    EXPECT_TRUE(CallShared("PictureTQX", "CreatePictureTQX", 2, 2, 1).object());
}

TEST_F(Destination, FromAFactoryIsTakenAsItIs) {
    const auto given = New("PictureTQX", 2, 1, 11);
    const auto picture = New("PictureTQX", 6, 3, 2);
    Set(picture, "Factory", NewFactory([&](int, int, int) { return given; }));
    FillRandom(picture, 1);
    EXPECT_EQ(CallObject(picture, "SolarizeFilter", nullptr), given);
}

TEST_F(Destination, GlobalFactoryIsKeptUntilTheNext) {
    auto first = NewFactory([](int, int, int) { return Ref<Object>(); });
    auto second = NewFactory([](int, int, int) { return Ref<Object>(); });
    SetGlobalFactory(first);
    EXPECT_EQ(first->references, 2);
    SetGlobalFactory(first);
    EXPECT_EQ(first->references, 2);
    SetGlobalFactory(second);
    EXPECT_EQ(first->references, 1);
    EXPECT_EQ(second->references, 2);
    SetGlobalFactory({});
    EXPECT_EQ(second->references, 1);
}

TEST_F(Destination, FactoryMayReplaceItself) {
    SetGlobalFactory(NewFactory([](int width, int height, int format) {
        SetGlobalFactory({});
        return New("PictureTQX", width, height, format);
    }));
    EXPECT_TRUE(CallShared("PictureTQX", "CreatePictureTQX", 2, 2, 1).object());
    EXPECT_TRUE(CallShared("PictureTQX", "CreatePictureTQX", 2, 2, 1).object());
}

TEST_F(Destination, ThatIsGivenIsReturnedWithAReferenceOfItsOwn) {
    const auto picture = New("PictureTQX", 4, 4, 1);
    const auto given = New("PictureTQX", 4, 4, 1);
    const auto result = CallObject(picture, "SolarizeFilter", given);
    EXPECT_EQ(result, given);
    EXPECT_EQ(given->references, 2);
}

TEST_F(Destination, ThatIsUnusableGivesNilAndTouchesNothing) {
    const auto picture = New("PictureTQX", 4, 4, 1);
    FillRandom(picture, 1);
    const Bytes before = ReadPixels(picture);
    const auto invalid = New("PictureTQX", 4, 4, 0);
    EXPECT_FALSE(CallObject(picture, "SolarizeFilter", invalid));
    EXPECT_EQ(invalid->references, 1);
    const auto closed = New("PictureTQX", 4, 4, 1);
    Call(closed, "Close");
    EXPECT_FALSE(CallObject(picture, "SolarizeFilter", closed));
    EXPECT_FALSE(CallObject(picture, "SolarizeFilter", New("PictureTQX", 4, 0, 1)));
    EXPECT_EQ(ReadPixels(picture), before);
}

TEST_F(Destination, IsNotMadeForAnUnusableSource) {
    int asked = 0;
    SetGlobalFactory(NewFactory([&](int width, int height, int format) {
        ++asked;
        return New("PictureTQX", width, height, format);
    }));
    EXPECT_FALSE(CallObject(New("PictureTQX", 4, 4, 0), "SolarizeFilter", nullptr));
    EXPECT_FALSE(CallObject(New("PictureTQX", 4, 0, 1), "SolarizeFilter", nullptr));
    EXPECT_EQ(asked, 0);
}

TEST_F(Destination, IsUntouchedWhereTheSourceHasNoChannels) {
    const auto scaling = New("PictureTQX", 4, 4, 14);
    FillRandom(scaling, 1);
    const auto given = New("PictureTQX", 4, 4, 1);
    FillRandom(given, 2);
    const Bytes before = ReadPixels(given);
    EXPECT_EQ(CallObject(scaling, "SolarizeFilter", given), given);
    EXPECT_EQ(ReadPixels(given), before);
}

TEST_F(Destination, ThatIsSmallerReceivesWhatItHasRoomFor) {
    const auto picture = New("PictureTQX", 9, 7, 2);
    FillRandom(picture, 1);
    const auto whole = CallObject(picture, "SolarizeFilter", nullptr);
    for (const auto& [width, height] : {std::pair{1, 1}, {4, 7}, {9, 3}, {0, 4}}) {
        const auto frame = New("PictureTQX", 12, 10, 2);
        FillRandom(frame, 3);
        const Bytes before = ReadPixels(frame);
        const auto clip = CallObject(frame, "ClipImage", 1, 1, width, height);
        CallObject(picture, "SolarizeFilter", clip);
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 12; ++x) {
                const bool inside = x >= 1 && x < 1 + width && y >= 1 && y < 1 + height;
                for (int c = 0; c < 4; ++c)
                    EXPECT_EQ(ByteAt(frame, x, y, c), inside ? ByteAt(whole, x - 1, y - 1, c)
                                                             : before[static_cast<std::size_t>((y * 12 + x) * 4 + c)]);
            }
    }
}

// --- Yields -------------------------------------------------------------------------------------

TEST_F(Destination, YieldsOnceForTheSourceAndOnceForTheDestination) {
    FakeClock clock;
    const auto source = New("PictureTQX", 4, 100, 1);
    const auto dest = New("PictureTQX", 4, 100, 1);
    const auto yields = [&] {
        const std::int64_t before = CallsOf("REALYieldToRB");
        CallObject(source, "SolarizeFilter", dest);
        return CallsOf("REALYieldToRB") - before;
    };
    EXPECT_EQ(yields(), 0);
    Set(source, "YieldTicks", -3);
    EXPECT_EQ(yields(), 0) << "0 or less never yields";
    Set(source, "YieldTicks", 5);
    EXPECT_EQ(yields(), 1) << "a new picture's last yield is at tick 0";
    EXPECT_EQ(yields(), 0);
    Set(dest, "YieldTicks", 1);
    EXPECT_EQ(yields(), 1);
    clock.Advance(5);
    EXPECT_EQ(yields(), 2);
    clock.Advance(4);
    EXPECT_EQ(yields(), 1) << "only the destination's interval has passed";
}

TEST_F(Destination, SurvivesScriptsThatCloseOrRebuildInAYield) {
    for (const bool yieldOfSource : {true, false})
        for (const bool closeSource : {true, false})
            for (const bool rebuild : {true, false}) {
                const auto source = New("PictureTQX", 40, 100, 1);
                const auto dest = New("PictureTQX", 40, 100, 1);
                Set(yieldOfSource ? source : dest, "YieldTicks", 1);
                const OnYield meddle([&] {
                    const auto& victim = closeSource ? source : dest;
                    if (rebuild)
                        Call(victim, "Constructor", 1, 1, 11);
                    else
                        Call(victim, "Close");
                });
                const auto result = CallObject(source, "SolarizeFilter", dest);
                // A source lost before there is a destination: nil. A destination lost before it is
                // looked at: nil if closed, and used as it then is if built anew.
                if (yieldOfSource && (closeSource || !rebuild)) {
                    EXPECT_FALSE(result);
                } else {
                    EXPECT_EQ(result, dest);
                }
            }
}

TEST_F(Destination, LetsTheYieldCallThePluginAgain) {
    const auto source = New("PictureTQX", 4, 4, 1);
    FillRandom(source, 1);
    const Bytes expected = ReadPixels(CallObject(source, "SolarizeFilter", nullptr));
    Set(source, "YieldTicks", 1);
    int depth = 0;
    const OnYield again([&] {
        if (++depth < 3) {
            EXPECT_TRUE(CallObject(source, "SolarizeFilter", nullptr));
        }
    });
    EXPECT_EQ(ReadPixels(CallObject(source, "SolarizeFilter", nullptr)), expected);
    EXPECT_GE(depth, 1);
}

}  // namespace
