// Timers that fire while a script waits, and while it doesn't.
#include <thread>

#include "tests/host/framework/FrameworkTest.h"

namespace host {
namespace {

using TimerTest = FrameworkTest;

// A timer that runs a callback.
Ref<Object> TimerFor(std::function<void()> action) {
    return support::NewHandler("Timer", "Action", [action = std::move(action)](Object*, std::span<Value>) {
        action();
        return Value();
    });
}

void Start(const Ref<Object>& timer, int mode, int period = 1) {
    Set(timer, "Period", period);
    Set(timer, "Mode", mode);
}

void Wait(int milliseconds = 3) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

TEST_F(TimerTest, StartsSwitchedOff) {
    int fired = 0;
    const auto timer = TimerFor([&] { ++fired; });
    EXPECT_EQ(GetInt(timer, "Mode"), 0);
    EXPECT_EQ(GetInt(timer, "Period"), 1000);
    Set(timer, "Period", 1);
    Wait();
    CallShared("App", "DoEvents");
    EXPECT_EQ(fired, 0);
}

TEST_F(TimerTest, FiresOnceOrAgainAndAgain) {
    for (int mode : {1, 2}) {
        int fired = 0;
        const auto timer = TimerFor([&] { ++fired; });
        Start(timer, mode);
        for (int i = 0; i < 3; ++i) {
            Wait();
            CallShared("App", "DoEvents");
        }
        EXPECT_EQ(fired, mode == 1 ? 1 : 3);
        EXPECT_EQ(GetInt(timer, "Mode"), mode == 1 ? 0 : 2);
    }
}

TEST_F(TimerTest, FiresWhileAPlugInYields) {
    int fired = 0;
    const auto timer = TimerFor([&] { ++fired; });
    Start(timer, 2);
    Wait();
    HostFunctionSlot<sdk::kREALYieldToRB>::Call();
    EXPECT_EQ(fired, 1);
    HostFunctionSlot<sdk::kREALYieldToRB>::Call();
    EXPECT_LE(fired, 2);
}

TEST_F(TimerTest, DoesNotFireBeforeItsTime) {
    int fired = 0;
    const auto timer = TimerFor([&] { ++fired; });
    Start(timer, 2, 1000000);
    CallShared("App", "DoEvents", 3);
    EXPECT_EQ(fired, 0);
}

TEST_F(TimerTest, WaitingLetsItFire) {
    int fired = 0;
    const auto timer = TimerFor([&] { ++fired; });
    Start(timer, 2, 2);
    CallShared("App", "DoEvents", 60);
    EXPECT_GE(fired, 3);
    CallShared("App", "DoEvents", INT32_MIN);
}

TEST_F(TimerTest, ItsEventIsNotEnteredTwice) {
    int depth = 0, deepest = 0;
    const auto timer = TimerFor([&] {
        deepest = std::max(deepest, ++depth);
        Wait();
        CallShared("App", "DoEvents");
        --depth;
    });
    Start(timer, 2);
    Wait();
    CallShared("App", "DoEvents");
    EXPECT_EQ(deepest, 1);
}

TEST_F(TimerTest, AnEventMayLetGoOfItsTimer) {
    Ref<Object> timer;
    int fired = 0;
    timer = TimerFor([&] {
        ++fired;
        timer = nullptr;
    });
    Start(timer, 2);
    Wait();
    CallShared("App", "DoEvents");
    Wait();
    CallShared("App", "DoEvents");
    EXPECT_EQ(fired, 1);
}

TEST_F(TimerTest, AnExceptionReachesTheScriptAndTheTimerGoesOn) {
    int fired = 0;
    const auto timer = TimerFor([&] {
        ++fired;
        throw Raised{Runtime::Get().MakeException("IOException", "no")};
    });
    Start(timer, 2);
    Wait();
    CallShared("App", "DoEvents", 1000);  // ends at once
    EXPECT_EQ(RaisedClass(), "IOException");
    Wait();
    CallShared("App", "DoEvents");
    EXPECT_EQ(RaisedClass(), "IOException");
    EXPECT_EQ(fired, 2);
}

TEST_F(TimerTest, ModesOtherThanTheThreeAreRefused) {
    const auto timer = New("Timer");
    for (int mode : {-1, 3, INT32_MIN}) {
        Set(timer, "Mode", mode);
        EXPECT_EQ(RaisedClass(), "OutOfBoundsException");
    }
    EXPECT_EQ(support::ConstantOf("Timer", "ModeMultiple"), 2);
    Start(timer, 2, INT32_MIN);
    Wait();
    CallShared("App", "DoEvents");  // nobody handles its event
    Set(timer, "Period", INT32_MAX);
}

}  // namespace
}  // namespace host
