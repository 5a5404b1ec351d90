// The one rule for destinations, tried on every member that takes one.
#include <string>
#include <vector>

#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"
#include "tests/support/PluginFixture.h"

namespace {

using namespace support;

constexpr int kRGB = 1, kRGBA = 2;

// Arguments with which a member does its work.
Value Fitting(const host::Parameter& parameter) {
    switch (parameter.type.kind) {
        case host::Kind::Array:
            return ToValue(std::vector<int>(25, 1));
        case host::Kind::Double:
            return Value(1.5);
        case host::Kind::Color:
            return Value(sdk::Color{0x102030});
        default:
            return Value(parameter.name == "levels" ? 4 : 1);
    }
}

struct Member {
    const host::Method* method;

    Ref<Object> Call(const Ref<Object>& self, const Ref<Object>& dest) const {
        Values arguments{Value(dest)};
        for (std::size_t i = 1; i < method->declaration.parameters.size(); ++i)
            arguments.push_back(Fitting(method->declaration.parameters[i]));
        return Ref<Object>::Share(host::Invoke(*method, self.get(), arguments).object());
    }

    const std::string& name() const { return method->declaration.name; }

    // The stamp's destination receives the first of its blurs and is not what it gives.
    bool GivesItsDestination() const { return name() != "StampFilter"; }

    // Quarter turns, and convolution, make a picture of exchanged sides.
    bool ExchangesSides() const { return name() == "ApplyMatrix" || (name() != "Rotate180" && name()[0] == 'R'); }
};

class DestinationRule : public PluginTest {
  protected:
    void SetUp() override {
        PluginTest::SetUp();
        for (const host::Method& method : host::Runtime::Get().ClassNamed("PictureTQX").methods()) {
            const auto& parameters = method.declaration.parameters;
            if (!parameters.empty() && parameters[0].name == "dest") members_.push_back({&method});
        }
    }

    void TearDown() override {
        SetGlobalFactory({});
        PluginTest::TearDown();
    }

    static void SetGlobalFactory(const Ref<Object>& factory) { CallShared("PictureFactoryTQX", "SetFactory", factory); }

    static std::vector<Ref<Object>> Unusable() {
        const auto closed = New("PictureTQX", 6, 5, kRGB);
        Call(closed, "Close");
        return {New("PictureTQX", 6, 5, 0), closed, New("PictureTQX", 6, 0, kRGB), New("PictureTQX", -1, 5, kRGB)};
    }

    static Ref<Object> Filled(int width, int height, int format) {
        const auto picture = New("PictureTQX", width, height, format);
        FillRandom(picture, 3);
        return picture;
    }

    std::vector<Member> members_;
};

TEST_F(DestinationRule, IsThatOfFiltersAndTurns) { EXPECT_EQ(members_.size(), 27u); }

TEST_F(DestinationRule, AnUnusableSourceGivesNilAndAsksNoFactory) {
    int asked = 0;
    const auto factory = NewFactory([&](int width, int height, int format) {
        ++asked;
        return New("PictureTQX", width, height, format);
    });
    SetGlobalFactory(factory);
    const auto dest = Filled(6, 6, kRGB);
    const Bytes before = ReadPixels(dest);
    for (const auto& source : Unusable()) {
        Set(source, "Factory", factory);
        for (const Member& member : members_) {
            EXPECT_FALSE(member.Call(source, nullptr)) << member.name();
            EXPECT_FALSE(member.Call(source, dest)) << member.name();
            EXPECT_EQ(dest->references, 1) << member.name();
        }
    }
    EXPECT_EQ(asked, 0);
    EXPECT_EQ(ReadPixels(dest), before);
}

TEST_F(DestinationRule, AnUnusableDestinationGivesNilAndIsReleased) {
    const auto source = Filled(6, 6, kRGB);
    const Bytes before = ReadPixels(source);
    for (const auto& dest : Unusable())
        for (const Member& member : members_) {
            const std::int64_t references = dest->references;
            EXPECT_FALSE(member.Call(source, dest)) << member.name();
            EXPECT_EQ(dest->references, references) << member.name();
        }
    EXPECT_EQ(ReadPixels(source), before);
}

TEST_F(DestinationRule, AGivenDestinationIsGivenBackWhateverItsSizeAndFormat) {
    const auto source = Filled(7, 5, kRGBA);
    for (const auto& dest : {New("PictureTQX", 7, 5, kRGBA), New("PictureTQX", 2, 9, 11), New("PictureTQX", 30, 20, 5)})
        for (const Member& member : members_) {
            if (!member.GivesItsDestination()) continue;
            const auto result = member.Call(source, dest);
            EXPECT_EQ(result, dest) << member.name();
            EXPECT_EQ(dest->references, result ? 2 : 1) << member.name();
        }
}

TEST_F(DestinationRule, NilIsMadeByTheSourcesFactoryInTheSourcesSizeAndFormat) {
    const auto source = Filled(7, 5, kRGBA);
    std::vector<std::string> asked;
    Ref<Object> given;
    Set(source, "Factory", NewFactory([&](int width, int height, int format) {
            asked.push_back(std::to_string(width) + "x" + std::to_string(height) + " " + std::to_string(format));
            return given = New("PictureTQX", 3, 3, kRGB);  // not what was asked for
        }));
    SetGlobalFactory(NewFactory([](int, int, int) {
        ADD_FAILURE() << "the global factory comes second";
        return Ref<Object>();
    }));
    for (const Member& member : members_) {
        if (!member.GivesItsDestination()) continue;
        asked.clear();
        const auto result = member.Call(source, nullptr);
        EXPECT_EQ(asked, (std::vector<std::string>{member.ExchangesSides() ? "5x7 2" : "7x5 2"})) << member.name();
        EXPECT_EQ(result, given) << member.name();
    }
}

TEST_F(DestinationRule, WithoutAFactoryNilIsMadeInMemory) {
    const auto source = Filled(7, 5, kRGBA);
    for (const Member& member : members_) {
        const auto result = member.Call(source, nullptr);
        ASSERT_TRUE(result) << member.name();
        EXPECT_EQ(GetInt(result, "Width"), member.ExchangesSides() ? 5 : 7) << member.name();
        EXPECT_EQ(GetInt(result, "Height"), member.ExchangesSides() ? 7 : 5) << member.name();
        EXPECT_EQ(GetInt(result, "ImageFormat"), kRGBA) << member.name();
        EXPECT_FALSE(GetBool(result, "IsMapping")) << member.name();
        EXPECT_EQ(result->references, 1) << member.name();
    }
    const FailingHostFunction failing("PluginNewInstance");
    for (const Member& member : members_) EXPECT_FALSE(member.Call(source, nullptr)) << member.name();
}

// Twice, however many rows there are.
TEST_F(DestinationRule, YieldsOnceForTheSourceAndOnceForTheDestination) {
    FakeClock clock(1000);
    clock.AdvancePerReading(10);
    const auto source = Filled(9, 9, kRGB), dest = Filled(9, 9, kRGB);
    const auto yieldsOf = [&](const Member& member, int ofSource, int ofDest) {
        Set(source, "YieldTicks", ofSource);
        Set(dest, "YieldTicks", ofDest);
        const std::int64_t before = CallsOf("REALYieldToRB");
        member.Call(source, dest);
        return CallsOf("REALYieldToRB") - before;
    };
    for (const Member& member : members_) {
        if (!member.GivesItsDestination()) continue;
        EXPECT_EQ(yieldsOf(member, 0, 0), 0) << member.name();
        EXPECT_EQ(yieldsOf(member, -1, -7), 0) << member.name();
        EXPECT_EQ(yieldsOf(member, 1, 0), 1) << member.name();
        EXPECT_EQ(yieldsOf(member, 0, 1), 1) << member.name();
        EXPECT_EQ(yieldsOf(member, 1, 1), 2) << member.name();
    }
}

TEST_F(DestinationRule, YieldsForTheSourceBeforeADestinationIsMade) {
    const auto source = Filled(6, 6, kRGB);
    Set(source, "YieldTicks", 1);
    FakeClock clock(1000);
    clock.AdvancePerReading(10);
    std::string order;
    Set(source, "Factory", NewFactory([&](int width, int height, int format) {
            order += "make ";
            return New("PictureTQX", width, height, format);
        }));
    const OnYield note([&] { order += "yield "; });
    for (const Member& member : members_) {
        if (!member.GivesItsDestination()) continue;
        order.clear();
        member.Call(source, nullptr);
        EXPECT_EQ(order, "yield make ") << member.name();
    }
}

}  // namespace
