// Cases in child processes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "host/check/Children.h"

namespace {

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

// What a case runs may end the process as if all were well.
TEST(Children, AreNoneTheWiserForAnExitCode) {
    host::check::ChildrenJob job;
    job.count = 3;
    job.run = [](std::size_t i) -> host::check::Complaint {
        if (i == 1) _exit(0);
        return {0, "", true};
    };
    const auto report = host::check::RunInChildren(job);
    ASSERT_EQ(report.failures.size(), 1U);
    EXPECT_EQ(report.failures[0].index, 1U);
    EXPECT_TRUE(report.failures[0].crashed);
    EXPECT_EQ(report.failures[0].complaint.text, "the process ended with status 0");
    EXPECT_EQ(report.counted, 2) << "cases 0 and 2";
}

TEST(Children, AreEndedWhateverTheyDidToTheirDescriptors) {
    host::check::ChildrenJob job;
    job.count = 3;
    job.secondsPerCase = 0.05;
    job.run = [](std::size_t i) -> host::check::Complaint {
        if (i == 0) {
            for (int file = 0; file < 64; ++file) close(file);
            for (volatile bool forever = true; forever;) continue;
        }
        // Whoever is left behind has the pipe still open.
        if (i == 1 && fork() == 0) {
            sleep(5);
            _exit(0);
        }
        return {};
    };
    const auto report = host::check::RunInChildren(job);
    EXPECT_EQ(report.slow, (std::vector<std::size_t>{0}));
    EXPECT_EQ(report.run, 2) << "cases 1 and 2";
}

TEST(Children, StopAfterTooManyFailures) {
    host::check::ChildrenJob job;
    job.count = 100;
    job.mostFailures = 3;
    job.run = [](std::size_t) -> host::check::Complaint { return {1, "always"}; };
    EXPECT_EQ(host::check::RunInChildren(job).failures.size(), 3U);
}

TEST(Children, EndThoseThatSleepAsWell) {
    host::check::ChildrenJob job;
    job.count = 2;
    job.secondsPerCase = 0.01;
    job.run = [](std::size_t i) -> host::check::Complaint {
        if (i == 0) sleep(3600);
        return {};
    };
    const auto report = host::check::RunInChildren(job);
    EXPECT_EQ(report.slow, (std::vector<std::size_t>{0}));
    EXPECT_EQ(report.run, 1);
}

TEST(Children, MayBeDoneWithout) {
    host::check::ChildrenJob job;
    job.count = 3;
    job.inProcess = true;
    int here = 0;
    job.run = [&](std::size_t i) -> host::check::Complaint {
        ++here;
        return {1, i == 1 ? "a complaint" : ""};
    };
    const auto report = host::check::RunInChildren(job);
    EXPECT_EQ(here, 3);
    ASSERT_EQ(report.failures.size(), 1U);
    EXPECT_EQ(report.failures[0].index, 1U);
}

}  // namespace
