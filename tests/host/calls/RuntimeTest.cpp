// Host functions as a plug-in asks for them, exceptions, and yields.
#include <gtest/gtest.h>

#include "host/calls/Runtime.h"
#include "tests/host/calls/SampleTest.h"

namespace {

using namespace support;
using host::Raised;
using host::Runtime;

class Runtimes : public SampleTest {
  protected:
    Runtime& runtime = Runtime::Get();
};

// --- The resolver ------------------------------------------------------------------------------

TEST_F(Runtimes, GiveTheResolverForItsServiceOnly) {
    EXPECT_NE(Runtime::Entry("ResolverPPC"), nullptr);
    EXPECT_EQ(Runtime::Entry("SomethingElse"), nullptr);
    EXPECT_EQ(Runtime::Entry(nullptr), nullptr);
}

TEST_F(Runtimes, ResolveHostFunctionsByTheirExactNames) {
    const auto resolve = reinterpret_cast<sdk::Resolver>(Runtime::Entry("ResolverPPC"));
    EXPECT_NE(resolve("REALLockObject"), nullptr);
    EXPECT_EQ(resolve("reallockobject"), nullptr);
    EXPECT_EQ(resolve("Nothing"), nullptr);
    EXPECT_EQ(resolve(nullptr), nullptr);
}

TEST_F(Runtimes, CanHideAHostFunction) {
    const auto resolve = reinterpret_cast<sdk::Resolver>(Runtime::Entry("ResolverPPC"));
    runtime.FindHostFunction("REALenterMovies")->hidden = true;
    EXPECT_EQ(resolve("REALenterMovies"), nullptr);
    runtime.FindHostFunction("REALenterMovies")->hidden = false;
    EXPECT_NE(resolve("REALenterMovies"), nullptr);
}

TEST_F(Runtimes, HaveEachHostFunctionOnce) {
    for (const host::HostFunctionRecord* one : runtime.HostFunctions()) {
        EXPECT_EQ(runtime.FindHostFunction(one->name), one);
        for (const host::HostFunctionRecord* other : runtime.HostFunctions())
            if (one != other) {
                EXPECT_STRNE(one->name, other->name);
                EXPECT_NE(one->trampoline, other->trampoline);
            }
    }
}

TEST_F(Runtimes, CountCallsOfHostFunctions) {
    const std::int64_t before = CallsOf("REALYieldToRB");
    Call(New("Sample"), "YieldOnce");
    EXPECT_EQ(CallsOf("REALYieldToRB"), before + 1);
}

// --- Exceptions --------------------------------------------------------------------------------

TEST_F(Runtimes, MakeExceptionsOfEveryClass) {
    for (const char* name : {"RuntimeException", "OutOfBoundsException", "NilObjectException", "TypeMismatchException",
                             "IllegalCastException", "IOException", "UnsupportedFormatException",
                             "KeyNotFoundException", "StackOverflowException"}) {
        const auto exception = runtime.MakeException(name, "why", 12);
        EXPECT_EQ(exception->type->name(), name);
        EXPECT_TRUE(host::IsA(exception.get(), runtime.ClassNamed("RuntimeException")));
        EXPECT_EQ(host::MessageOf(exception.get()), "why");
        EXPECT_EQ(host::ErrorNumberOf(exception.get()), 12);
    }
}

TEST_F(Runtimes, MakeARuntimeExceptionForAClassThatIsNone) {
    EXPECT_EQ(runtime.MakeException("NoSuchClass", "x")->type->name(), "RuntimeException");
    EXPECT_EQ(runtime.MakeException("Sample", "x")->type->name(), "RuntimeException");
}

TEST_F(Runtimes, LetScriptsConstructExceptions) {
    const auto exception = New("IOException", "disk gone", 5);
    EXPECT_EQ(GetText(exception, "Message"), "disk gone");
    EXPECT_EQ(GetInt(exception, "ErrorNumber"), 5);
    Set(exception, "Message", Value("changed"));
    EXPECT_EQ(host::MessageOf(exception.get()), "changed");
    EXPECT_EQ(GetText(New("IOException"), "Message"), "");
}

TEST_F(Runtimes, ThrowWhatWasRaised) {
    EXPECT_NO_THROW(runtime.ThrowIfRaised());
    runtime.Raise(runtime.MakeException("IOException", "broken"));
    EXPECT_TRUE(runtime.HasRaised());
    try {
        runtime.ThrowIfRaised();
        FAIL() << "nothing was thrown";
    } catch (const Raised& raised) {
        EXPECT_EQ(host::MessageOf(raised.exception.get()), "broken");
    }
    EXPECT_FALSE(runtime.HasRaised());
}

TEST_F(Runtimes, GuardCodeThatAPluginCalls) {
    EXPECT_EQ(runtime.RunGuarded([] { return Value(5); }).ToInt64(), 5);
    const Value failed = runtime.RunGuarded([&]() -> Value {
        runtime.Raise(runtime.MakeException("IOException", "left behind"));
        return Value(5);
    });
    EXPECT_TRUE(failed.IsNothing()) << "a result beside an exception does not count";
    EXPECT_EQ(TakeThrown().message, "left behind");
    runtime.RunGuarded([&]() -> Value { throw Raised{runtime.MakeException("IOException", "thrown")}; });
    EXPECT_EQ(TakeThrown().message, "thrown");
}

// --- Yield -------------------------------------------------------------------------------------

TEST_F(Runtimes, RunEveryYieldCallback) {
    std::string order;
    OnYield one([&] { order += "1"; });
    {
        OnYield two([&] { order += "2"; });
        runtime.Yield();
    }
    runtime.Yield();
    EXPECT_EQ(order, "121");
}

TEST_F(Runtimes, SurviveCallbacksThatAddAndRemoveCallbacks) {
    int runs = 0;
    std::unique_ptr<OnYield> inner;
    OnYield outer([&] {
        if (inner)
            inner.reset();
        else
            inner = std::make_unique<OnYield>([&] { ++runs; });
    });
    for (int i = 0; i < 4; ++i) runtime.Yield();
    EXPECT_EQ(runs, 2) << "one that is removed in the middle of a yield still runs in that yield";
}

TEST_F(Runtimes, LetAPluginBeCalledAgainInAYield) {
    const auto sample = New("Sample");
    int depth = 0;
    OnYield callback([&] {
        if (++depth < 3) Call(sample, "YieldOnce");
    });
    Call(sample, "YieldOnce");
    EXPECT_EQ(depth, 3);
}

TEST_F(Runtimes, KeepAnExceptionOfACallbackUntilThePluginReturns) {
    const auto sample = New("Sample");
    OnYield callback([&] { runtime.Raise(runtime.MakeException("IOException", "in a timer")); });
    Call(sample, "YieldOnce");
    EXPECT_EQ(TakeThrown(), (Thrown{"IOException", "in a timer"}));
}

// --- Functions ---------------------------------------------------------------------------------

std::int32_t PlusOne(std::int32_t value) { return value + 1; }
double Half(double value) { return value / 2; }

TEST_F(Runtimes, CallGlobalFunctionsByName) {
    static const sdk::MethodRecord records[] = {
        sdk::SharedMethod<"TestStep(value as integer) as integer", &PlusOne>(0),
        sdk::SharedMethod<"TestStep(value as double) as double", &Half>(0),
    };
    if (runtime.FindFunctions("TestStep").empty()) runtime.RegisterFunctions(records);
    const auto call = [&](Value argument) {
        host::Choice choice = host::ChooseOverload(runtime.FindFunctions("teststep"), {&argument, 1});
        return host::Invoke(*choice.method, nullptr, choice.arguments);
    };
    EXPECT_EQ(call(Value(5)).ToInt64(), 6);
    EXPECT_EQ(call(Value(5.0)).ToDouble(), 2.5);
    EXPECT_EQ(runtime.FindFunctions("TestStep")[0]->owner, nullptr);
    const auto names = runtime.FunctionNames();
    EXPECT_EQ(std::count(names.begin(), names.end(), "TestStep"), 1);
}

// --- Definitions ---------------------------------------------------------------------------------

TEST_F(Runtimes, RefuseDefinitionsWithAReason) {
    const auto reason = [&](sdk::ClassDefinition definition) {
        runtime.ClearRefusal();
        EXPECT_EQ(runtime.RegisterClass(definition), nullptr);
        return runtime.LastRefusal();
    };
    EXPECT_EQ(reason({.version = 8, .name = "Old"}),
              "class \"Old\" is refused: it is of interface version 8; this host has 9");
    EXPECT_EQ(reason({.version = 9}), "class \"\" is refused: it has no proper name");
    EXPECT_EQ(reason({.version = 9, .name = "Two Words"}), "class \"Two Words\" is refused: it has no proper name");
    EXPECT_EQ(reason({.version = 9, .name = "Orphan", .superclass = "Nobody"}),
              "class \"Orphan\" is refused: its superclass Nobody is unknown");
    EXPECT_EQ(reason({.version = 9, .name = "sample"}),
              "class \"sample\" is refused: there is a class of this name already");
    EXPECT_EQ(reason({.version = 9, .name = "Odd", .instanceDataSize = -1}),
              "class \"Odd\" is refused: its instance data has -1 bytes");
    EXPECT_EQ(reason({.version = 9, .name = "Odd", .methodCount = -3}),
              "class \"Odd\" is refused: it states -3 methods");
}

TEST_F(Runtimes, RefuseMembersDeclaredTwice) {
    static const auto function = reinterpret_cast<sdk::AnyFunction>(&PlusOne);
    static const sdk::MethodRecord methods[] = {{function, nullptr, "M(a as integer) as integer", 4},
                                                {function, nullptr, "m(b as Integer) as integer", 4}};
    static const sdk::PropertyRecord properties[] = {{"P", "Integer", 6, {function, -1}, sdk::kNoAccess},
                                                     {"p", "Double", 6, {function, -1}, sdk::kNoAccess}};
    static const sdk::ConstantRecord constants[] = {{"C = 1", nullptr, 0}, {"c = 2", nullptr, 0}};
    sdk::ClassDefinition definition{.version = 9,
                                    .name = "Twice",
                                    .properties = properties,
                                    .propertyCount = 2,
                                    .methods = methods,
                                    .methodCount = 2,
                                    .constants = constants,
                                    .constantCount = 2};
    EXPECT_EQ(runtime.RegisterClass(definition), nullptr);
    EXPECT_EQ(runtime.LastRefusal(),
              "class \"Twice\" is refused: method m(b As Integer) As Integer comes twice; property p: it comes twice; "
              "constant c comes twice");
}

TEST_F(Runtimes, TakeAConstantsValueFromItsRecord) {
    static const sdk::ConstantRecord constants[] = {{"WithValue = 1", nullptr, 33}};
    static sdk::ClassDefinition definition{
        .version = 9, .name = "ConstantHolder", .constants = constants, .constantCount = 1};
    ASSERT_NE(runtime.RegisterClass(definition), nullptr);
    EXPECT_EQ(ConstantOf("ConstantHolder", "WithValue"), 33);
}

}  // namespace
