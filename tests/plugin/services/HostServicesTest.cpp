// The plug-in's services over host functions, linked into the test and resolved by the real host.
#include <string>
#include <tuple>

#include "host/calls/HostFunctionSlot.h"
#include "plugin/services/HostServices.h"
#include "tests/support/Interpose.h"
#include "tests/support/PluginFixture.h"

namespace {

class HostServices : public support::PluginTest {
  protected:
    void SetUp() override {
        PluginTest::SetUp();
        tqx::KeepResolver(reinterpret_cast<sdk::Resolver>(host::Runtime::Entry(sdk::kResolverService)));
    }

    static host::Ref<host::String> Build(std::string_view bytes, sdk::Encoding encoding) {
        sdk::String* const built =
            tqx::BuildHostString(bytes.data(), static_cast<std::int64_t>(bytes.size()), encoding);
        return host::Ref<host::String>::Adopt(host::FromPlugin(built));
    }
};

TEST_F(HostServices, BuildsNoStringFromNothing) {
    EXPECT_EQ(tqx::BuildHostString("abc", 0, sdk::Encoding::Ascii), nullptr);
    EXPECT_EQ(tqx::BuildHostString(nullptr, 3, sdk::Encoding::Ascii), nullptr);
}

TEST_F(HostServices, MarksAStringWithItsEncoding) {
    const auto text = Build("abc", sdk::Encoding::Ascii);
    EXPECT_EQ(host::Bytes(text), "abc");
    EXPECT_EQ(host::EncodingOf(text.get()), sdk::Encoding::Ascii);
    EXPECT_EQ(host::EncodingOf(Build(std::string("\0\xFF", 2), sdk::Encoding::None).get()), sdk::Encoding::None);
}

TEST_F(HostServices, GivesUnicodeTextAsUtf8) {
    const char16_t wide[] = u"Gr\u00FCn";
    const auto from16 = Build({reinterpret_cast<const char*>(wide), 8}, sdk::Encoding::Utf16);
    EXPECT_EQ(host::Bytes(from16), "Gr\xC3\xBCn");
    EXPECT_EQ(host::EncodingOf(from16.get()), sdk::Encoding::Utf8);
    const char32_t wider[] = U"\U0001F39E";
    EXPECT_EQ(host::Bytes(Build({reinterpret_cast<const char*>(wider), 4}, sdk::Encoding::Utf32)), "\xF0\x9F\x8E\x9E");
}

TEST_F(HostServices, GiveNothingWhileTheHostFails) {
    {
        const support::FailingHostFunction failing("REALBuildString");
        EXPECT_EQ(tqx::BuildHostString("abc", 3, sdk::Encoding::Ascii), nullptr);
    }
    {
        const support::FailingHostFunction failing("REALConvertString");
        EXPECT_EQ(tqx::BuildHostString("abcd", 4, sdk::Encoding::Utf16), nullptr);
    }
    const std::uint8_t bytes[] = {1, 2, 3};
    const support::FailingHostFunction failing("memoryBlockGetPtr");
    EXPECT_EQ(tqx::MemoryBlockFromBytes(bytes, 3), nullptr);
}

TEST_F(HostServices, CopyBytesIntoAMemoryBlock) {
    const std::uint8_t bytes[] = {1, 2, 3};
    EXPECT_EQ(tqx::MemoryBlockFromBytes(nullptr, 3), nullptr);
    EXPECT_EQ(tqx::MemoryBlockFromBytes(bytes, 0), nullptr);
    EXPECT_EQ(tqx::MemoryBlockFromBytes(bytes, -1), nullptr);
    const auto block = host::Ref<host::Object>::Adopt(host::FromPlugin(tqx::MemoryBlockFromBytes(bytes, 3)));
    EXPECT_EQ(support::BlockBytes(block), (support::Bytes{1, 2, 3}));
}

TEST_F(HostServices, AskAgainForAFunctionThatTheHostLacked) {
    tqx::HostFunction<std::int32_t(sdk::Array*)> bound{sdk::kRuntimeUBound};
    tqx::KeepResolver(nullptr);
    EXPECT_EQ(bound(nullptr), 0);
    tqx::KeepResolver(reinterpret_cast<sdk::Resolver>(host::Runtime::Entry(sdk::kResolverService)));
    EXPECT_EQ(bound(nullptr), -1);
    tqx::KeepResolver(nullptr);
    EXPECT_EQ(bound(nullptr), -1) << "the answer is kept";
}

// The other way round would look the same to scripts, and not to a host that reports at the raise.
TEST_F(HostServices, RaiseBeforeTheMessageIsSet) {
    using Raise = host::HostFunctionSlot<sdk::kRuntimeRaiseException>;
    using SetText = host::HostFunctionSlot<sdk::kREALSetPropValueString>;
    std::string order;
    Raise::Function raise;
    SetText::Function setText;
    raise = Raise::Replace([&](sdk::Object* exception) {
        order += "raise ";
        raise(exception);
    });
    setText = SetText::Replace([&](sdk::Object* exception, const char* property, sdk::String* text) {
        order += std::string("set ") + property + " ";
        return setText(exception, property, text);
    });
    for (const auto& [className, message, call] :
         {std::tuple{"OutOfBoundsException", "Index is out of bounds.", &tqx::RaiseOutOfBounds},
          {"NilObjectException", "Memoryblock is nil", &tqx::RaiseNilObject}}) {
        order.clear();
        call(message);
        EXPECT_EQ(order, "raise set Message ");
        EXPECT_EQ(support::TakeThrown(), (support::Thrown{className, message}));
    }
    Raise::Replace(raise);
    SetText::Replace(setText);
}

// The host notes the exception when it is raised, before it has a message.
TEST_F(HostServices, RaiseFirstAndSetTheMessageAfter) {
    tqx::RaiseOutOfBounds("Index is out of bounds.");
    EXPECT_EQ(support::TakeThrown(), (support::Thrown{"OutOfBoundsException", "Index is out of bounds."}));
    {
        // Without its message the exception still takes effect: it was raised already.
        const support::FailingHostFunction failing("REALSetPropValueString");
        tqx::RaiseNilObject("Memoryblock is nil");
        EXPECT_EQ(support::TakeThrown(), (support::Thrown{"NilObjectException", ""}));
    }
    tqx::RaiseNilObject(nullptr);
    EXPECT_EQ(support::TakeThrown(), (support::Thrown{"NilObjectException", ""}));
}

TEST_F(HostServices, RaiseNilWhereNoExceptionCanBeMade) {
    const support::FailingHostFunction failing("PluginNewInstance");
    tqx::RaiseOutOfBounds("Index is out of bounds.");
    EXPECT_EQ(support::TakeThrown().className, "RuntimeException") << "the host decides";
}

TEST_F(HostServices, YieldWhenTheIntervalHasPassed) {
    support::FakeClock clock(1000);
    std::uint32_t last = 0;
    const auto yields = [&](std::int32_t interval) {
        const std::int64_t before = support::CallsOf("REALYieldToRB");
        tqx::PeriodicYield(interval, &last);
        return support::CallsOf("REALYieldToRB") - before;
    };
    EXPECT_EQ(yields(5), 1);
    EXPECT_EQ(last, 1000u);
    EXPECT_EQ(yields(5), 0);
    clock.Advance(4);
    EXPECT_EQ(yields(5), 0);
    clock.Advance(1);
    EXPECT_EQ(yields(5), 1);
    EXPECT_EQ(last, 1005u);
}

TEST_F(HostServices, NoteTheTimeAfterTheYield) {
    support::FakeClock clock(1000);
    const support::OnYield busy([&] { clock.Advance(50); });
    std::uint32_t last = 0;
    tqx::PeriodicYield(5, &last);
    EXPECT_EQ(last, 1050u);
}

TEST_F(HostServices, CountTicksAcrossTheirWrap) {
    support::FakeClock clock(3);
    std::uint32_t last = 0xFFFFFFFEu;  // five ticks ago
    const std::int64_t before = support::CallsOf("REALYieldToRB");
    tqx::PeriodicYield(6, &last);
    EXPECT_EQ(support::CallsOf("REALYieldToRB"), before);
    tqx::PeriodicYield(5, &last);
    EXPECT_EQ(support::CallsOf("REALYieldToRB"), before + 1);
    last = 4;  // in the future: nearly 2^32 ticks ago
    tqx::PeriodicYield(2147483647, &last);
    EXPECT_EQ(support::CallsOf("REALYieldToRB"), before + 2);
}

}  // namespace
