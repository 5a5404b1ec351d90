// Calls in both directions between the host and a small plug-in.
#include <gtest/gtest.h>

#include <cmath>

#include "host/calls/Call.h"
#include "host/calls/Declaration.h"
#include "tests/host/calls/SampleTest.h"

namespace {

using namespace support;

class Calls : public SampleTest {};

TEST_F(Calls, HandsEveryTypeThroughUnchanged) {
    const auto sample = New("Sample");
    EXPECT_EQ(Call(sample, "SameInteger", -5).ToInt64(), -5);
    EXPECT_EQ(Call(sample, "SameInteger", INT32_MIN).ToInt64(), INT32_MIN);
    EXPECT_EQ(Call(sample, "SameInt64", INT64_MIN).ToInt64(), INT64_MIN);
    EXPECT_EQ(Call(sample, "SameUInt32", std::uint32_t{0xFFFFFFFF}).ToInt64(), 0xFFFFFFFF);
    EXPECT_EQ(Call(sample, "SameUInt8", std::uint8_t{200}).ToInt64(), 200);
    EXPECT_EQ(Call(sample, "SameDouble", -1.5e300).ToDouble(), -1.5e300);
    EXPECT_EQ(Call(sample, "SameSingle", 0.1F).ToDouble(), static_cast<double>(0.1F));
    EXPECT_TRUE(Call(sample, "SameBoolean", true).ToBoolean());
    EXPECT_FALSE(Call(sample, "SameBoolean", false).ToBoolean());
    EXPECT_EQ(Call(sample, "SameColor", sdk::Color{0x123456}).kind(), host::Kind::Color);
    EXPECT_EQ(Call(sample, "SameColor", sdk::Color{0x123456}).ToInt64(), 0x123456);
    EXPECT_EQ(Call(sample, "SameString", "grün").text(), "grün");
    EXPECT_EQ(Call(sample, "SameString", "").string(), nullptr);
    EXPECT_EQ(CallObject(sample, "SameSample", sample), sample);
    EXPECT_TRUE(Call(sample, "SameSample", nullptr).IsNil());
}

TEST_F(Calls, PassesAnythingAsAVariant) {
    const auto sample = New("Sample");
    EXPECT_EQ(Call(sample, "SameVariant", 2.5).ToDouble(), 2.5);
    EXPECT_EQ(Call(sample, "SameVariant", 12).kind(), host::Kind::Integer);
    EXPECT_EQ(Call(sample, "SameVariant", "text").text(), "text");
    EXPECT_EQ(CallObject(sample, "SameVariant", sample), sample);
    EXPECT_TRUE(Call(sample, "SameVariant", nullptr).IsNil());
    EXPECT_EQ(host::UpperBound(Call(sample, "SameVariant", std::vector<int>{1, 2}).array()), 1);
}

TEST_F(Calls, ReadsOnlyTheLowBytesOfANarrowResult) {
    const auto sample = New("Sample");
    EXPECT_FALSE(Call(sample, "WideFalse").ToBoolean());
    EXPECT_TRUE(Call(sample, "WideTrue").ToBoolean());
    EXPECT_EQ(Call(sample, "WideInteger").ToInt64(), -2);
    EXPECT_EQ(Call(sample, "WideByte").ToInt64(), 0x89);
}

TEST_F(Calls, TakesUpToTenArguments) {
    const auto sample = New("Sample");
    Values arguments;
    std::int64_t expected = 0;
    for (int count = 0; count <= 10; ++count) {
        EXPECT_EQ(CallWith(sample, "Sum" + std::to_string(count), arguments).ToInt64(), expected) << count;
        expected += std::int64_t{100 + count} * (count + 1);
        arguments.push_back(Value(100 + count));
    }
}

TEST_F(Calls, KeepsTenArgumentsOfDifferentTypesApart) {
    const auto sample = New("Sample", 3, "x");
    const Value result = Call(sample, "Mixed", 1, 2.0, true, std::int64_t{4}, 5.0F, std::uint8_t{6}, sdk::Color{7},
                              "12345678", sample, 9.0);
    EXPECT_EQ(result.ToDouble(), 1 + 20 + 100 + 4000 + 50000 + 600000 + 7e6 + 8e9 + 3e10 + 9e12);
}

TEST_F(Calls, ReadsIntegerArraysThroughTheHost) {
    const auto sample = New("Sample");
    EXPECT_EQ(Call(sample, "SumOf", std::vector<int>{1, -20, 300}).ToInt64(), 281);
    EXPECT_EQ(Call(sample, "SumOf", std::vector<int>{}).ToInt64(), 0);
    EXPECT_EQ(Call(sample, "SumOf", nullptr).ToInt64(), 0);
}

TEST_F(Calls, ConvertsNumbersAsTheLanguageDoes) {
    const auto sample = New("Sample");
    EXPECT_EQ(Call(sample, "SameInteger", 2.9).ToInt64(), 2);
    EXPECT_EQ(Call(sample, "SameInteger", 1e20).ToInt64(), INT32_MAX);
    EXPECT_EQ(Call(sample, "SameInteger", std::nan("")).ToInt64(), INT32_MIN);
    EXPECT_EQ(Call(sample, "SameDouble", 3).ToDouble(), 3.0);
    EXPECT_EQ(Call(sample, "SameUInt8", 300).ToInt64(), 44);
}

TEST_F(Calls, AssignsToMethods) {
    const auto sample = New("Sample");
    Assign(sample, "SlotAt", {Value(2)}, Value(77));
    EXPECT_EQ(Call(sample, "SlotAt", 2).ToInt64(), 77);
}

TEST_F(Calls, ReadsAndWritesFieldsByType) {
    const auto sample = New("Sample");
    Set(sample, "Big", Value(std::int64_t{1} << 40));
    Set(sample, "Word", Value(std::uint32_t{4'000'000'000}));
    Set(sample, "Small", Value(255));
    Set(sample, "Real", Value(0.25));
    Set(sample, "Narrow", Value(0.1));
    Set(sample, "Flag", Value(true));
    Set(sample, "Tint", Value(sdk::Color{0xABCDEF}));
    EXPECT_EQ(GetInt(sample, "Big"), std::int64_t{1} << 40);
    EXPECT_EQ(GetInt(sample, "Word"), 4'000'000'000);
    EXPECT_EQ(GetInt(sample, "Small"), 255);
    EXPECT_EQ(Get(sample, "Real").ToDouble(), 0.25);
    EXPECT_EQ(Get(sample, "Narrow").ToDouble(), static_cast<double>(0.1F));
    EXPECT_TRUE(GetBool(sample, "Flag"));
    EXPECT_EQ(GetInt(sample, "Tint"), 0xABCDEF);
    EXPECT_EQ(GetInt(sample, "Count"), 7) << "set by the class's constructor function";
    Set(sample, "Count", Value(21));
    EXPECT_EQ(GetInt(sample, "doublecount"), 42);
}

TEST_F(Calls, CountsReferencesHeldInFields) {
    const auto sample = New("Sample");
    auto other = New("Sample");
    Set(sample, "Other", Value(other));
    EXPECT_EQ(other->references, 2);
    EXPECT_EQ(GetObject(sample, "Other"), other);
    Set(sample, "Other", Value(other));
    EXPECT_EQ(other->references, 2);
    Set(sample, "Other", Value(nullptr));
    EXPECT_EQ(other->references, 1);
    Set(sample, "Label", Value("first"));
    Set(sample, "Label", Value("second"));
    EXPECT_EQ(GetText(sample, "Label"), "second");
    Set(sample, "Other", Value(std::move(other)));
}

TEST_F(Calls, LaysASubclassesDataBehindItsSuperclass) {
    const auto derived = New("DerivedSample");
    EXPECT_EQ(GetInt(derived, "Count"), 7);
    EXPECT_EQ(GetInt(derived, "Extra"), 8);
    Set(derived, "Other", Value(New("DerivedSample")));
    EXPECT_EQ(GetInt(GetObject(derived, "Other"), "Extra"), 8);
}

TEST_F(Calls, RunsAConstructorOverload) {
    const auto sample = New("Sample", 11, "named");
    EXPECT_EQ(GetInt(sample, "Count"), 11);
    EXPECT_EQ(GetText(sample, "Label"), "named");
}

TEST_F(Calls, CallsSharedMethods) { EXPECT_EQ(CallShared("Sample", "thrice", 5).ToInt64(), 15); }

TEST_F(Calls, KnowsConstants) {
    EXPECT_EQ(ConstantOf("Sample", "SampleSmall"), 7);
    EXPECT_EQ(ConstantOf("DerivedSample", "samplelarge"), static_cast<std::int32_t>(0x8000000F));
}

// --- Exceptions ------------------------------------------------------------------------------

TEST_F(Calls, SeesAMessageSetAfterTheRaise) {
    const auto sample = New("Sample");
    Call(sample, "Fail", "too far");
    EXPECT_EQ(TakeThrown(), (Thrown{"OutOfBoundsException", "too far"}));
    EXPECT_EQ(TakeThrown(), Thrown{});
}

TEST_F(Calls, MakesAnExceptionForANilRaise) {
    Call(New("Sample"), "FailWithNil");
    EXPECT_EQ(TakeThrown().className, "RuntimeException");
}

TEST_F(Calls, KeepsTheFirstOfTwoExceptions) {
    const auto sample = New("Sample");
    Call(sample, "Fail", "first");
    Call(sample, "Fail", "second");
    EXPECT_EQ(TakeThrown().message, "first");
}

// --- Events and methods of scripts ------------------------------------------------------------

TEST_F(Calls, CallsAnEventHandlerWithItsArguments) {
    auto answer = New("Sample");
    std::string heard;
    const auto asked = NewHandler("Sample", "Asked", [&](Object* self, std::span<Value> arguments) {
        heard = std::to_string(GetInt(Ref<Object>::Share(self), "Count")) + "/" +
                std::to_string(arguments[0].ToInt32()) + "/" + std::string(arguments[1].text());
        return Value(answer);
    });
    EXPECT_EQ(CallObject(asked, "Ask", 5, "why"), answer);
    EXPECT_EQ(heard, "7/5/why");
    EXPECT_EQ(answer->references, 1);
    EXPECT_TRUE(Call(New("Sample"), "Ask", 5, "why").IsNil()) << "a class without a handler";
}

TEST_F(Calls, GivesNumbersAndBooleansFromHandlers) {
    const auto measured = NewHandler("Sample", "Measured", [](Object*, std::span<Value> arguments) {
        return Value(arguments[0].ToDouble() * (arguments[1].ToBoolean() ? 2 : 1));
    });
    EXPECT_EQ(Call(measured, "Measure", 1.25, true).ToDouble(), 2.5);
    EXPECT_EQ(Call(measured, "Measure", 1.25, false).ToDouble(), 1.25);
    EXPECT_EQ(Call(New("Sample"), "Measure", 1.25, false).ToDouble(), -1);
    const auto told = NewHandler(
        "Sample", "Told", [](Object*, std::span<Value> arguments) { return Value(arguments[0].ToInt32() == 200); });
    EXPECT_TRUE(Call(told, "Tell", 200).ToBoolean());
    EXPECT_FALSE(Call(told, "Tell", 201).ToBoolean());
}

TEST_F(Calls, TurnsWhatAHandlerThrowsIntoTheRaisedException) {
    auto& runtime = host::Runtime::Get();
    const auto asked = NewHandler("Sample", "Asked", [&](Object*, std::span<Value>) -> Value {
        throw host::Raised{runtime.MakeException("KeyNotFoundException", "no such key")};
    });
    EXPECT_TRUE(Call(asked, "Ask", 1, "").IsNil());
    EXPECT_EQ(TakeThrown(), (Thrown{"KeyNotFoundException", "no such key"}));
    const auto careless = NewHandler(
        "Sample", "Asked", [](Object*, std::span<Value>) -> Value { throw std::runtime_error("unexpected"); });
    EXPECT_TRUE(Call(careless, "Ask", 1, "").IsNil());
    EXPECT_EQ(TakeThrown(), (Thrown{"RuntimeException", "unexpected"}));
    const auto odd = NewHandler("Sample", "Asked", [](Object*, std::span<Value>) -> Value { throw 5; });
    EXPECT_TRUE(Call(odd, "Ask", 1, "").IsNil());
    EXPECT_EQ(TakeThrown().className, "RuntimeException");
}

TEST_F(Calls, PutsARaisedExceptionAsideWhileAHandlerRuns) {
    const auto sample = New("Sample");
    bool seen = true;
    OnYield callback([&] { seen = host::Runtime::Get().HasRaised(); });
    host::Runtime::Get().Raise(host::Runtime::Get().MakeException("IOException", "before"));
    Call(sample, "YieldOnce");
    EXPECT_FALSE(seen);
    EXPECT_EQ(TakeThrown().message, "before");
}

TEST_F(Calls, LetsAPluginCallAMethodOfAScriptsClass) {
    auto type = std::make_unique<host::Class>("ScriptTwice", nullptr);
    host::Method twice;
    std::string problem;
    ASSERT_TRUE(host::ReadDeclaration("Twice(x As Integer) As Integer", twice.declaration, problem));
    twice.body = [](Object*, std::span<Value> arguments) { return Value(2 * arguments[0].ToInt32()); };
    type->AddMethod(std::move(twice));
    const auto& added = *host::Runtime::Get().AddClass(std::move(type));
    {
        const auto sample = New("Sample");
        const auto object = New("ScriptTwice");
        EXPECT_EQ(Call(sample, "CallTwice", object, 21).ToInt64(), 42);
        EXPECT_EQ(Call(sample, "CallTwice", sample, 21).ToInt64(), -1) << "no such method";
    }
    host::Runtime::Get().RemoveClass(added);
}

TEST_F(Calls, ReadsIntegerPropertiesForAPlugin) {
    const auto sample = New("Sample");
    EXPECT_EQ(Call(sample, "ReadNumber", sample, "count").ToInt64(), 7);
    EXPECT_EQ(Call(sample, "ReadNumber", sample, "DoubleCount").ToInt64(), 14);
    EXPECT_EQ(Call(sample, "ReadNumber", sample, "Real").ToInt64(), -1);
    EXPECT_EQ(Call(sample, "ReadNumber", sample, "Nowhere").ToInt64(), -1);
}

// --- Failing host functions -------------------------------------------------------------------

TEST_F(Calls, MakesTheNthCallOfAHostFunctionFail) {
    const auto sample = New("Sample");
    {
        FailingHostFunction failing("REALBuildString", 2, 1);
        EXPECT_EQ(Call(sample, "SameString", "one").text(), "one");
        EXPECT_EQ(Call(sample, "SameString", "two").text(), "");
        EXPECT_EQ(Call(sample, "SameString", "three").text(), "three");
        EXPECT_EQ(failing.calls(), 3);
    }
    {
        FailingHostFunction failing("REALBuildString");
        EXPECT_EQ(Call(sample, "SameString", "one").text(), "");
        EXPECT_EQ(Call(sample, "SameString", "two").text(), "");
    }
    EXPECT_EQ(Call(sample, "SameString", "one").text(), "one");
}

TEST_F(Calls, LetsATestReplaceAHostFunction) {
    using Slot = host::HostFunctionSlot<sdk::kRuntimeUBound>;
    const auto before = Slot::Replace([](sdk::Array*) { return 0; });
    EXPECT_EQ(Call(New("Sample"), "SumOf", std::vector<int>{5, 6}).ToInt64(), 5);
    Slot::Replace(before);
    EXPECT_EQ(Call(New("Sample"), "SumOf", std::vector<int>{5, 6}).ToInt64(), 11);
}

TEST_F(Calls, KeepsExceptionsOfHostFunctionsFromThePlugin) {
    using Slot = host::HostFunctionSlot<sdk::kRuntimeUBound>;
    const auto before = Slot::Replace([](sdk::Array*) -> std::int32_t { throw std::bad_alloc(); });
    EXPECT_EQ(Call(New("Sample"), "SumOf", std::vector<int>{5, 6}).ToInt64(), 5) << "0 is the highest index";
    EXPECT_EQ(TakeThrown().className, "OutOfMemoryException") << "the script is told all the same";
    Slot::Replace(before);
}

}  // namespace
