// The check of plug-ins, tried on a sound one and on one for every fault that it must find.
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "host/check/Check.h"
#include "host/check/Children.h"
#include "tests/host/calls/SampleTest.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// Checks one of the faulty plug-ins in a process of its own: they all register the same class.
// Gives the lines, without those of checks that are fine when `onlyFailed`.
std::string LinesOf(int fault, bool onlyFailed = true) {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
        close(ends[0]);
        host::CheckOptions options;
        options.secondsPerCall = 0.3;
        options.report = [&](const host::CheckResult& result) {
            if (result.ok && onlyFailed) return;
            const std::string line = host::CheckLine(result);
            [[maybe_unused]] const ssize_t written = write(ends[1], line.data(), line.size());
        };
        host::CheckPlugin(host::LoadPlugin(TestPluginPath("Faulty" + std::to_string(fault))), options);
        _exit(0);
    }
    close(ends[1]);
    std::string lines;
    char part[4096];
    for (ssize_t got; (got = read(ends[0], part, sizeof(part))) > 0;) lines.append(part, static_cast<std::size_t>(got));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the check itself ended badly";
    return lines;
}

TEST(Check, FindsNothingInASoundPlugin) {
    const std::string lines = LinesOf(0, false);
    EXPECT_THAT(lines, StartsWith("ok      declarations    7 can be read\n"
                                  "ok      records         flags, names and types go together\n"
                                  "ok      constants       2 have a value\n"
                                  "ok      calls           "));
    EXPECT_THAT(lines, HasSubstr("after Close, constructed, not constructed"));
    EXPECT_EQ(lines.find("FAILED"), std::string::npos) << lines;
}

TEST(Check, FindsACrashAndShowsTheScript) {
    EXPECT_THAT(LinesOf(1), AllOf(HasSubstr("FAILED  calls"), HasSubstr("          Dim p As New Faulty(1"),
                                  HasSubstr("          Dim result As Faulty = p.Link(nil)\n")));
}

TEST(Check, FindsACrashAtOneNumber) {
    EXPECT_THAT(LinesOf(13), AllOf(HasSubstr("FAILED  calls"), HasSubstr("p.Count(-1)\n")));
}

TEST(Check, FindsAReferenceThatIsKept) {
    EXPECT_THAT(LinesOf(2),
                AllOf(HasSubstr("FAILED  references"), HasSubstr("1 object (the newest a Faulty) left alive")));
}

// Under the address sanitizer the second release ends the process, in whichever check comes to it.
TEST(Check, FindsAReferenceGivenUpTooOften) {
#if defined(__SANITIZE_ADDRESS__)
    EXPECT_THAT(LinesOf(3), AllOf(HasSubstr("FAILED  "), HasSubstr("the process ended with status 1"),
                                  HasSubstr("p.Link(other1)\n")));
#else
    EXPECT_THAT(LinesOf(3), AllOf(HasSubstr("FAILED  references"), HasSubstr("p.Link(other1)\n")));
#endif
}

TEST(Check, FindsAWritePastABlock) {
#if defined(__SANITIZE_ADDRESS__)
    EXPECT_THAT(LinesOf(4), HasSubstr("FAILED  "));
#else
    EXPECT_THAT(LinesOf(4), AllOf(HasSubstr("FAILED  guard bytes"), HasSubstr("p.Clear(New MemoryBlock(")));
#endif
}

TEST(Check, FindsResultsThatDiffer) {
    EXPECT_THAT(LinesOf(5), AllOf(HasSubstr("FAILED  repetition"), HasSubstr("Dim result As Integer = p.Count(5)\n")));
}

TEST(Check, NamesWhatDependsOnEarlierCalls) {
    EXPECT_EQ(LinesOf(14), "") << "depending on earlier calls is no fault";
    EXPECT_THAT(LinesOf(14, false), HasSubstr("give the same bytes twice, Count after the same calls only\n"));
}

TEST(Check, FindsYieldsThatNobodyAskedFor) {
    EXPECT_THAT(LinesOf(6), AllOf(HasSubstr("FAILED  unasked yields"), HasSubstr("p.Work\n"),
                                  HasSubstr("FAILED  asked yields    it yields at an interval of 0")));
}

TEST(Check, FindsAHostFunctionWhoseFailureIsIgnored) {
    EXPECT_THAT(LinesOf(7),
                AllOf(StartsWith("FAILED  host functions"),
                      HasSubstr("          ' newMemoryBlock always fails in the last line\n"), HasSubstr("p.Block\n")));
}

TEST(Check, FindsWrongFlags) {
    EXPECT_EQ(LinesOf(8), "FAILED  records         Faulty.YieldTicks lacks the flag of properties\n");
}

TEST(Check, FindsYieldsThatDoNotCome) {
    EXPECT_THAT(LinesOf(9), StartsWith("FAILED  asked yields    no call yields at an interval of 1 tick\n"));
}

TEST(Check, FindsTrustInStorageAfterAYield) {
    EXPECT_THAT(LinesOf(10), AllOf(StartsWith("FAILED  re-entry"), HasSubstr("          p.YieldTicks = 1\n"),
                                   HasSubstr("p.Work\n")));
}

TEST(Check, EndsCallsThatTakeTooLong) {
    EXPECT_EQ(LinesOf(11), "") << "slow is no fault";
    EXPECT_THAT(LinesOf(11, false), HasSubstr(" ended as too slow\n"));
}

TEST(Check, FindsAResultOfAnotherClass) {
    EXPECT_THAT(LinesOf(12), HasSubstr("the result is a RuntimeException, not a Faulty"));
}

// --- Results and children ------------------------------------------------------------------------

TEST(CheckLine, SetsTheScriptBelow) {
    EXPECT_EQ(host::CheckLine({"calls", false, 3, "Segmentation fault", "Dim p As New A\np.B\n"}),
              "FAILED  calls           Segmentation fault\n          Dim p As New A\n          p.B\n");
    EXPECT_EQ(host::CheckLine({"calls", true, 3, "3 calls", ""}), "ok      calls           3 calls\n");
}

TEST(CheckLine, HasAFormForPrograms) {
    const host::Plugin plugin{"/p.so", {}};
    EXPECT_EQ(host::ChecksAsJson(plugin, {{"calls", false, 3, "why", "p.B\n"}}), R"({
  "plugin": "/p.so",
  "checks": [
    {
      "name": "calls",
      "ok": false,
      "cases": 3,
      "detail": "why",
      "script": "p.B\n"
    }
  ]
}
)");
}

TEST(CheckLine, MakesAnyBytesSoundJson) {
    const host::Plugin plugin{"/\xFF.so", {}};
    const std::string json = host::ChecksAsJson(plugin, {{"calls", true, 0, "a\"b\\c\nd\x01", ""}});
    EXPECT_THAT(json, testing::HasSubstr("\"plugin\": \"/\uFFFD.so\""));
    EXPECT_THAT(json, testing::HasSubstr("\"detail\": \"a\\\"b\\\\c\\nd\\u0001\""));
    EXPECT_THAT(json, testing::HasSubstr("\"script\": null"));
}

TEST(Children, GoOnAfterEveryKindOfEnd) {
    using host::check::Complaint;
    host::check::ChildrenJob job;
    job.count = 8;
    job.secondsPerCase = 0.2;
    job.run = [](std::size_t i) -> Complaint {
        if (i == 1) raise(SIGKILL);
        if (i == 3) return {5, "a complaint"};
        if (i == 4) _exit(9);
        for (volatile bool forever = i == 6; forever;) continue;
        return {0, "", true};
    };
    std::vector<std::size_t> noted;
    job.noteSlow = [&](std::size_t i) { noted.push_back(i); };
    const auto report = host::check::RunInChildren(job);
    ASSERT_EQ(report.failures.size(), 3U);
    EXPECT_EQ(report.failures[0].index, 1U);
    EXPECT_TRUE(report.failures[0].crashed);
    EXPECT_EQ(report.failures[0].complaint.text, "Killed");
    EXPECT_EQ(report.failures[1].complaint.kind, 5);
    EXPECT_EQ(report.failures[1].complaint.text, "a complaint");
    EXPECT_EQ(report.failures[2].complaint.text, "the process ended with status 9");
    EXPECT_EQ(report.slow, (std::vector<std::size_t>{6}));
    EXPECT_EQ(noted, report.slow);
    EXPECT_EQ(report.counted, 4) << "cases 0, 2, 5 and 7";
}

TEST(Children, StopAfterTooManyFailures) {
    host::check::ChildrenJob job;
    job.count = 100;
    job.mostFailures = 3;
    job.run = [](std::size_t) -> host::check::Complaint { return {1, "always"}; };
    EXPECT_EQ(host::check::RunInChildren(job).failures.size(), 3U);
}

}  // namespace
