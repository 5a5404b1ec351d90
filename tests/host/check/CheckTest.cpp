// The check of plug-ins, tried on sound ones and on one for every fault that it must find.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <set>

#include "host/calls/PluginLoader.h"
#include "host/check/Check.h"
#include "host/check/LoadedLibrary.h"
#include "host/check/Report.h"
#include "host/messages/LoadMessages.h"
#include "tests/host/calls/SampleTest.h"

namespace host {
namespace {

using ::testing::HasSubstr;

std::vector<CheckResult> ResultsOf(const std::string& plugin, CheckOptions options = {}) {
    options.secondsPerCall = 0.3;
    return CheckPlugin(TestPluginPath(plugin), options);
}

// The lines of what neither passes nor is skipped.
std::string FindingsIn(const std::vector<CheckResult>& results) {
    std::string lines;
    for (const CheckResult& result : results)
        if (result.status != CheckStatus::Pass && result.status != CheckStatus::Skip) lines += CheckLine(result);
    return lines;
}

const CheckResult& ResultOf(const std::vector<CheckResult>& results, const std::string& id) {
    const auto found = std::find_if(results.begin(), results.end(), [&](const auto& one) { return one.id == id; });
    if (found == results.end()) throw std::runtime_error("there is no result of " + id);
    return *found;
}

TEST(Check, FindsNothingInSoundPlugins) {
    const auto results = ResultsOf("Faulty0");
    EXPECT_EQ(FindingsIn(results), "");
    EXPECT_EQ(results.size(), ListChecks().size());
    EXPECT_THAT(ResultOf(results, "calls").detail, HasSubstr("after Close, constructed, not constructed"));
    EXPECT_EQ(ResultOf(results, "stray-writes").status, CheckStatus::Skip) << "it has no pictures";
    const auto pictures = ResultsOf("Pixels0");
    EXPECT_EQ(FindingsIn(pictures), "");
    EXPECT_EQ(ResultOf(pictures, "stray-writes").status, CheckStatus::Pass);
}

// Convicted of its fault, and of nothing else.
struct Conviction {
    const char* plugin;
    const char* id;
    CheckStatus status;
    const char* text;  // of the detail or the script
};

void PrintTo(const Conviction& conviction, std::ostream* out) { *out << conviction.plugin << " of " << conviction.id; }

class Convicted : public testing::TestWithParam<Conviction> {};

TEST_P(Convicted, OfItsFaultAndNothingElse) {
    const Conviction& expected = GetParam();
    const auto results = ResultsOf(expected.plugin);
    for (const CheckResult& result : results) {
        if (result.id != expected.id) {
            EXPECT_FALSE(result.status != CheckStatus::Pass && result.status != CheckStatus::Skip) << CheckLine(result);
            continue;
        }
        // Under a sanitizer what is only wrong by itself may end the process.
        const bool worse = result.status == CheckStatus::Crash && expected.status == CheckStatus::Fail;
        EXPECT_TRUE(result.status == expected.status || worse) << CheckLine(result);
        if (worse) continue;
        EXPECT_THAT(result.detail + "\n" + result.script, HasSubstr(expected.text));
    }
}

constexpr CheckStatus kWarn = CheckStatus::Warn, kTimeout = CheckStatus::Timeout, kFail = CheckStatus::Fail,
                      kCrash = CheckStatus::Crash;

const Conviction kConvictions[] = {
    {"Faulty1", "calls", kCrash, "Dim result As Faulty = p.Link(nil)\n"},
    {"Faulty2", "references", kFail, "1 object (the newest a Faulty) left alive"},
    {"Faulty5", "repetition", kFail, "Dim result As Integer = p.Count(5)\n"},
    {"Faulty6", "unasked-yields", kFail, "p.Work\n"},
    {"Faulty7", "host-functions", kCrash, "' newMemoryBlock always fails in the last line\n"},
    {"Faulty8", "records", kFail, "Faulty.YieldTicks lacks the flag of properties"},
    {"Faulty9", "asked-yields", kFail, "no call yields at an interval of 1 tick"},
    {"Faulty10", "re-entry", kCrash, "p.Work\n"},
    {"Faulty11", "calls", kTimeout, "p.Count(1000000)\n"},
    {"Faulty12", "references", kFail, "the result is a RuntimeException, not a Faulty"},
    {"Faulty13", "calls", kCrash, "p.Count(-1)\n"},
    {"Faulty15", "loading", kCrash, "Segmentation fault"},
    {"Faulty16", "exported-symbols", kFail, "FaultyExtra is exported"},
    {"Faulty17", "linked-libraries", kWarn, "libz.so.1 is needed"},
    {"Faulty18", "start-up", kFail, "does not state version 9 before"},
    {"Faulty19", "host-names", kWarn, "it asks for FlyToTheMoon"},
    {"Faulty20", "fields", kFail, "Faulty.Spare is a field at byte 21, not aligned to its size"},
    {"Faulty21", "fields", kFail, "Faulty.Wide overlaps Faulty.YieldTicks"},
    {"Faulty22", "overloads", kFail, "Faulty.Other with 1 argument may mean Other(a As Integer, b As"},
    {"Faulty23", "code-pointers", kFail, "Faulty.Odd has a function that lies outside the plug-in"},
    {"Faulty24", "events", kFail, "Faulty.Told can't be raised: number is ByRef"},
    {"Faulty25", "properties", kFail, "p.Level = "},
    {"Faulty26", "sources", kFail, "source is not as it was"},
    {"Faulty27", "exceptions", kFail, "it raises a OutOfBoundsException without a text"},
    {"Faulty28", "allocation", kCrash, "' allocation number 1 fails in the last line\n"},
    {"Faulty29", "system-calls", kFail, "a file stays open"},
    {"Faulty30", "declarations", kFail, "\"Even as\" can't be read"},
    {"Faulty31", "classes", kFail, "it is of interface version 1; this host has 9"},
    {"Faulty32", "constants", kFail, "NumberLow = 1 has another value in its record: 2"},
    {"Faulty33", "calls", kCrash, "the process ended with status 0"},
    {"Pixels1", "stray-writes", kWarn, "that are no channel of the picture are written by Fill"},
    {"Pixels2", "stray-writes", kWarn, "bytes beside the picture's columns are written by Fill"},
    {"Pixels3", "stray-writes", kCrash, "Dim p As New Pixels(block, 6, 4, 128)\np.Fill("}};

INSTANTIATE_TEST_SUITE_P(Plugins, Convicted, testing::ValuesIn(kConvictions),
                         [](const auto& instance) { return instance.param.plugin; });

// Under the address sanitizer the first of these calls ends the process, whichever check makes it.
const Conviction kPlainConvictions[] = {{"Faulty3", "references", kFail, "p.Link(other1)\n"},
                                        {"Faulty4", "guard-bytes", kFail, "p.Clear(New MemoryBlock("}};

#if !defined(__SANITIZE_ADDRESS__)
INSTANTIATE_TEST_SUITE_P(PlainPlugins, Convicted, testing::ValuesIn(kPlainConvictions),
                         [](const auto& instance) { return instance.param.plugin; });
#endif

TEST(Check, HasAFaultyPluginForEveryEntryOfItsTable) {
    std::set<std::string> unconvicted;
    for (const CheckEntry& check : ListChecks()) unconvicted.insert(check.id);
    for (const Conviction& one : kConvictions) unconvicted.erase(one.id);
    for (const Conviction& one : kPlainConvictions) unconvicted.erase(one.id);
    EXPECT_THAT(unconvicted, testing::IsEmpty());
}

TEST(Check, EndsAPluginThatHangsWithoutADescriptor) {
    CheckOptions options;
    options.only = {"loading"};
    options.secondsPerCheck = 0.5;
    const auto results = ResultsOf("Faulty34", options);
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].status, CheckStatus::Timeout);
}

TEST(Check, NamesWhatDependsOnEarlierCalls) {
    const auto results = ResultsOf("Faulty14");
    EXPECT_EQ(FindingsIn(results), "") << "depending on earlier calls is no fault";
    EXPECT_THAT(ResultOf(results, "repetition").detail, HasSubstr(", Count after the same calls only"));
}

TEST(Check, LeavesConvictedMembersOutOfLaterChecksAndSaysSo) {
    EXPECT_THAT(ResultOf(ResultsOf("Faulty1"), "repetition").detail, HasSubstr(", without Link"));
}

TEST(Check, RunsOnlyWhatIsWanted) {
    CheckOptions options;
    options.only = {"records", "guard-bytes"};
    options.except = {{"guard-bytes", "memory is somebody else's"}};
    std::vector<std::string> lines;
    options.report = [&](const CheckResult& result) { lines.push_back(CheckLine(result)); };
    ResultsOf("Faulty0", options);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(lines[0], testing::StartsWith("pass     records "));
    EXPECT_EQ(lines[1], "skip     guard-bytes       memory is somebody else's\n");
}

TEST(Check, EndsAtItsOwnDeadline) {
    CheckOptions options;
    options.only = {"repetition"};
    options.secondsPerCheck = 0;
    const auto results = ResultsOf("Faulty0", options);
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].status, CheckStatus::Skip) << "loading is a check, too";
    EXPECT_EQ(results[0].detail, "it can't be loaded");
}

TEST(Check, LooksIntoLoadedLibrariesOnly) {
    try {
        check::LoadedLibrary("/none/at/all.so");
        FAIL() << "nothing was thrown";
    } catch (const LoadError& error) {
        EXPECT_TRUE(Matches(kLoadSays.notLoaded.text, error.what())) << error.what();
    }
}

TEST(Check, StopsWhenItIsAskedTo) {
    CheckOptions options;
    int asked = 0;
    options.stop = [&] { return ++asked > 20; };
    EXPECT_LT(ResultsOf("Faulty0", options).size(), ListChecks().size());
}

// The arguments drawn at random depend on the seed and nothing else.
TEST(Check, TriesOtherArgumentsWithAnotherSeed) {
    CheckOptions options;
    options.only = {"calls"};
    const auto casesOf = [&](std::uint64_t seed) {
        options.seed = seed;
        return ResultsOf("Faulty0", options).front().cases;
    };
    const std::int64_t first = casesOf(1);
    EXPECT_EQ(casesOf(1), first);
    std::set<std::int64_t> counts;
    for (std::uint64_t seed = 2; seed < 12; ++seed) counts.insert(casesOf(seed));
    EXPECT_GT(counts.size(), 1U) << "some lists repeat others";
}

// In a child of the test's own, since everything is loaded into it.
TEST(Check, MayRunInOneProcess) {
    const pid_t child = fork();
    if (child == 0) {
        CheckOptions options;
        options.inProcess = true;
        options.only = {"loading", "start-up", "calls", "references", "host-functions"};
        const auto results = ResultsOf("Faulty0", options);
        _exit(results.size() == 5 && FindingsIn(results).empty() ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST(Check, IdsAreInKebabCaseAndSentencesEnd) {
    std::set<std::string> ids;
    for (const CheckEntry& check : ListChecks()) {
        EXPECT_TRUE(ids.insert(check.id).second) << check.id;
        EXPECT_EQ(check.id.find_first_not_of("abcdefghijklmnopqrstuvwxyz-"), std::string::npos) << check.id;
        EXPECT_TRUE(check.sentence.ends_with('.')) << check.id;
    }
}

}  // namespace
}  // namespace host
