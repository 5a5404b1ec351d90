// What is said of yields in Yields.h, tried with a clock that is always late enough.
#include "tests/support/Yields.h"

#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"

namespace support {

namespace {

constexpr int kRGB = 1, kGray = 11;

// Every reading of the clock is late enough for a yield.
struct HastyClock {
    FakeClock clock{100};
    HastyClock() { clock.AdvancePerReading(10); }
};

void Take(const Ref<Object>& picture, bool rebuild) {
    if (rebuild)
        Call(picture, "Constructor", 1, 1, kGray);
    else
        Call(picture, "Close");
}

// Interrupted at the yield numbered `at`.
void ExpectEnd(const Copying& copy, int at, bool ofSource, bool rebuild) {
    const auto source = New("PictureTQX", 40, 9, kRGB), destination = New("PictureTQX", 40, 9, kRGB);
    Set(source, "YieldTicks", Value(1));
    Set(destination, "YieldTicks", Value(1));
    int yields = 0;
    const OnYield interrupt([&] {
        if (++yields == at) Take(ofSource ? source : destination, rebuild);
    });
    copy(destination, source);
    EXPECT_EQ(yields, at);
}

}  // namespace

void ExpectYieldsForBothAndAfterEachRow(const Copying& copy) {
    const HastyClock clock;
    const auto source = New("PictureTQX", 4, 4, kRGB), destination = New("PictureTQX", 4, 4, kRGB);
    const auto yields = [&] {
        const auto before = CallsOf("REALYieldToRB");
        copy(destination, source);
        return CallsOf("REALYieldToRB") - before;
    };
    Set(source, "YieldTicks", Value(1));
    EXPECT_EQ(yields(), 1);
    Set(destination, "YieldTicks", Value(1));
    EXPECT_EQ(yields(), 6);
}

void ExpectEndWhenAYieldTakesEither(const Copying& copy) {
    const HastyClock clock;
    for (const int at : {1, 2, 4})
        for (const bool ofSource : {false, true})
            for (const bool rebuild : {false, true}) ExpectEnd(copy, at, ofSource, rebuild);
}

void ExpectOneYieldForEach(const Working& work) {
    const HastyClock clock;
    const auto first = New("PictureTQX", 4, 100, kRGB), second = New("PictureTQX", 4, 100, kRGB);
    Set(first, "YieldTicks", Value(1));
    Set(second, "YieldTicks", Value(1));
    const auto before = CallsOf("REALYieldToRB");
    work(first, second);
    EXPECT_EQ(CallsOf("REALYieldToRB") - before, 2);
}

void ExpectEndWhenAYieldTakesThePicture(int format, const WorkingInPlace& work) {
    const HastyClock clock;
    for (const bool rebuild : {false, true}) {
        const auto picture = New("PictureTQX", 4, 50, format);
        Set(picture, "YieldTicks", Value(1));
        int yields = 0;
        const OnYield interrupt([&] {
            if (++yields == 3) Take(picture, rebuild);
        });
        work(picture);
        EXPECT_EQ(yields, 3);
        if (rebuild) {
            EXPECT_EQ(ReadPixels(picture), Bytes{0});
        }
    }
}

}  // namespace support
