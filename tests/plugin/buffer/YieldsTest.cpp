// When operations let the host run.
#include "tests/support/Interpose.h"
#include "tests/support/PictureOperations.h"

namespace {

using namespace support;

constexpr int kRGB = 1, kRGBA = 2, kScaling = 14;

class Yields : public PluginTest {};

// Each reading of the clock moves it on by one tick; a yield reads it once more.
std::int64_t ExpectedYields(std::uint32_t now, int interval, int tests) {
    std::uint32_t last = 0;
    std::int64_t yields = 0;
    for (int i = 0; i < tests; ++i) {
        const std::uint32_t elapsed = now++ - last;
        if (elapsed < static_cast<std::uint32_t>(interval)) continue;
        ++yields;
        last = now++;
    }
    return yields;
}

TEST_F(Yields, ComeWhenTheirIntervalHasPassedSinceTheLastOne) {
    const struct {
        const char* operation;
        int tests;  // of 1000 rows: first, and after each row or pair of rows
    } cases[] = {{"ClearRect", 1001}, {"HMirror", 1001}, {"VMirror", 501}};
    for (const auto& c : cases)
        for (const int interval : {1, 5, 100}) {
            FakeClock clock(5000);
            clock.AdvancePerReading(1);
            const auto picture = New("PictureTQX", 3, 1000, kRGB);
            Set(picture, "YieldTicks", interval);
            const std::int64_t before = CallsOf("REALYieldToRB");
            Call(picture, c.operation);
            EXPECT_EQ(CallsOf("REALYieldToRB") - before, ExpectedYields(5000, interval, c.tests))
                << c.operation << " every " << interval;
        }
}

// The interval is compared as an unsigned number: the largest is far less than the time since
// tick 0 of a clock that has wrapped.
TEST_F(Yields, OfTheLongestIntervalComeAtOnceWhenTheClockIsPastIt) {
    const FakeClock clock(0x80000000u);
    const auto picture = New("PictureTQX", 3, 10, kRGB);
    Set(picture, "YieldTicks", INT32_MAX);
    const std::int64_t before = CallsOf("REALYieldToRB");
    Call(picture, "ClearRect");
    EXPECT_EQ(CallsOf("REALYieldToRB") - before, 1);
}

TEST_F(Yields, NeverComeOfAnIntervalOf0OrLess) {
    FakeClock clock(1000);
    clock.AdvancePerReading(1000);
    for (const int interval : {0, -1, INT32_MIN})
        for (const PictureOperation& operation : PictureOperations()) {
            Pictures pictures{New("PictureTQX", 30, 20, kRGBA), New("PictureTQX", 30, 20, kRGBA),
                              New("PictureTQX", 30, 30, kRGBA), New("PictureTQX", 40, 40, kScaling)};
            for (const auto& picture : {pictures.self, pictures.other, pictures.destination, pictures.intermediate})
                Set(picture, "YieldTicks", interval);
            const std::int64_t yields = CallsOf("REALYieldToRB"), readings = clock.readings();
            Outcome outcome(pictures);
            operation.run(pictures, outcome);
            EXPECT_EQ(CallsOf("REALYieldToRB"), yields) << operation.member;
            EXPECT_EQ(clock.readings(), readings) << operation.member << " asks for the time";
        }
}

}  // namespace
