// When operations let the host run.
#include <fstream>
#include <map>
#include <set>

#include "tests/support/Interpose.h"
#include "tests/support/PictureOperations.h"
#include "tests/support/Places.h"

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

// How often an operation yields for a picture of so many rows, of the format that makes it yield most.
std::int64_t MostYields(const PictureOperation& operation, int height) {
    std::int64_t most = 0;
    for (const int format : {kRGB, kRGBA, 12 /* gray with alpha */}) {
        FakeClock clock(1000);
        clock.AdvancePerReading(1000);
        Pictures pictures{New("PictureTQX", 10, height, format), New("PictureTQX", 10, height, format),
                          New("PictureTQX", 20, 20, format), New("PictureTQX", 20, 20, kScaling)};
        Set(pictures.self, "YieldTicks", 1);
        const std::int64_t before = CallsOf("REALYieldToRB");
        Outcome outcome(pictures);
        operation.run(pictures, outcome);
        most = std::max(most, CallsOf("REALYieldToRB") - before);
    }
    return most;
}

// "Rotate180/1" as the page writes it: the form with a destination has its own place.
std::string NameOnPage(const std::string& member) {
    return member == "Rotate180/1" ? "Rotate180(dest)" : member.substr(0, member.find('/'));
}

// The members in a row of the table that begins with these words.
std::set<std::string> MembersOnPage(const std::string& begin) {
    std::ifstream page(SourceFolder() + "/docs/conventions.md");
    std::set<std::string> members;
    for (std::string line; std::getline(page, line);) {
        if (!line.starts_with("| " + begin + " |")) continue;
        for (std::size_t at = line.find('`'); at != std::string::npos; at = line.find('`', at + 1)) {
            const std::size_t end = line.find('`', at + 1);
            members.insert(line.substr(at + 1, end - at - 1));
            at = end;
        }
    }
    return members;
}

TEST_F(Yields, ComeByRowsOrOnceOrNeverAsThePageOfConventionsSays) {
    std::map<std::string, std::set<std::string>> measured;
    for (const PictureOperation& operation : PictureOperations()) {
        const std::int64_t few = MostYields(operation, 6), more = MostYields(operation, 14);
        const char* const kind = few == 0 && more == 0 ? "never"
                                 : few == more         ? "only before the work"
                                                       : "after each row or pair of rows";
        measured[kind].insert(NameOnPage(operation.member));
    }
    for (const char* const kind : {"never", "only before the work", "after each row or pair of rows"})
        EXPECT_EQ(measured[kind], MembersOnPage(kind)) << kind;
}

}  // namespace
