// How scripts end by signals, and that no scratch file stays.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>

#include "tests/support/Command.h"

namespace {

namespace fs = std::filesystem;

// Endless, with nothing that would look at a signal.
constexpr const char* kLongCall = "Print \"started\"\nDim q As PictureTQX = p.BoxBlurFilter(p, 3.0, 2000000000)\n";
constexpr const char* kLoop = "Print \"started\"\nWhile True\nWend\n";

class Signals : public testing::Test {
  protected:
    void SetUp() override { fs::create_directories(folder_ / "scratch"); }
    void TearDown() override { fs::remove_all(folder_); }

    // Runs a script that knows its folder for scratch files and has the mapped picture `p`.
    Outcome Run(const std::string& rest, const OnOutput& onOutput) {
        const fs::path script = folder_ / "script.rbs";
        std::ofstream(script) << "Class Tracked\nSub Destructor()\nPrint \"released\"\nEnd Sub\nEnd Class\n"
                              << "Dim t As New Tracked\n"
                              << "Dim folder As FolderItem = GetFolderItem(\"" << (folder_ / "scratch").string()
                              << "\")\n"
                              << "Dim p As New PictureTQX(400, 300, PictureTQX.ImageFormatRGB, 0, "
                              << "folder.Child(\"pixels\"))\n"
                              << rest;
        return RunCommand({"run", script.string()}, onOutput);
    }

    // Sends signals one after the other at the first output; the scratch file must be there then.
    Outcome RunAndSend(const std::string& rest, const std::vector<int>& signals) {
        bool sent = false;
        return Run(rest, [&](int process, const Outcome&) {
            if (sent) return;
            sent = true;
            EXPECT_TRUE(fs::exists(folder_ / "scratch" / "pixels"));
            for (const int signal : signals) {
                kill(process, signal);
                usleep(50000);  // one that is still pending would swallow its like
            }
        });
    }

    bool NothingLeft() const { return fs::is_empty(folder_ / "scratch"); }

    const fs::path folder_ = fs::temp_directory_path() / ("tqx-signals-test-" + std::to_string(getpid()));
};

TEST_F(Signals, EndAScriptInOrder) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const Outcome outcome = RunAndSend(kLoop, {signal});
        EXPECT_EQ(outcome.exitCode, 128 + signal);
        EXPECT_EQ(outcome.out, "started\nreleased\n");
        EXPECT_EQ(outcome.err, "");
        EXPECT_TRUE(NothingLeft());
    }
}

TEST_F(Signals, EndALongCallAfterSomeTime) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const Outcome outcome = RunAndSend(kLongCall, {signal});
        EXPECT_TRUE(outcome.ended);
        EXPECT_EQ(outcome.exitCode, 128 + signal);
        EXPECT_TRUE(NothingLeft());
    }
}

TEST_F(Signals, TheSecondEndsALongCallAtOnce) {
    const std::vector<std::vector<int>> pairs = {{SIGINT, SIGINT}, {SIGTERM, SIGTERM}, {SIGHUP, SIGTERM}};
    for (const auto& signals : pairs) {
        const Outcome outcome = RunAndSend(kLongCall, signals);
        EXPECT_TRUE(outcome.ended);
        EXPECT_EQ(outcome.exitCode, 128 + signals[0]);
        EXPECT_TRUE(NothingLeft());
    }
}

TEST_F(Signals, OfFaultsLeaveNothingBehindEither) {
    for (const int signal : {SIGABRT, SIGQUIT, SIGXCPU}) {
        EXPECT_EQ(RunAndSend(kLongCall, {signal}).exitCode, -signal);
        EXPECT_TRUE(NothingLeft());
    }
}

// What nohup does.
TEST_F(Signals, ThatTheParentIgnoresStayIgnored) {
    const auto before = std::signal(SIGHUP, SIG_IGN);
    const Outcome outcome =
        RunAndSend("Print \"started\"\nDim start As Double = Microseconds\nWhile Microseconds - start < 200000\nWend\n",
                   {SIGHUP, SIGHUP});
    std::signal(SIGHUP, before);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, "started\nreleased\n");
}

// Among thousands of names that were in use before, and more open files than a list begins with.
TEST_F(Signals, RemoveAllOfManyScratchFiles) {
    const std::string many =
        "Dim held(199) As PictureTQX\n"
        "For i As Integer = 0 To 3999\n"
        "held(i Mod 200) = New PictureTQX(9, 9, PictureTQX.ImageFormatRGB, 0, folder.Child(Str(i)))\nNext\n";
    EXPECT_EQ(RunAndSend(many + kLongCall, {SIGTERM, SIGTERM}).exitCode, 128 + SIGTERM);
    EXPECT_TRUE(NothingLeft());
}

// Only what plug-ins made for themselves goes with them: not a file whose item they were only shown.
TEST_F(Signals, LeaveTheScriptsOwnFiles) {
    const Outcome outcome =
        RunAndSend("Dim f As BinaryStream = BinaryStream.Create(folder.Child(\"own\"), True)\nf.Write \"kept\"\n" +
                       std::string(kLongCall),
                   {SIGTERM, SIGTERM});
    EXPECT_EQ(outcome.exitCode, 128 + SIGTERM) << outcome.err;
    EXPECT_TRUE(fs::exists(folder_ / "scratch" / "own"));
    EXPECT_FALSE(fs::exists(folder_ / "scratch" / "pixels"));
}

// A hundred times, one signal or two, close together, while pictures come and go. After SIGKILL, which leaves
// scratch files, the next script makes its own under the same names.
TEST_F(Signals, AtAnyMomentLeaveNoScratchFile) {
    const std::string busy =
        "Print \"started\"\nDim n As Integer\nWhile True\nn = n + 1\n"
        "Dim q As New PictureTQX(50 + n Mod 9, 40, PictureTQX.ImageFormatRGB, 0, folder.Child(Str(n Mod 3)))\n"
        "q.FillRectRGB(&c102030)\np = New PictureTQX(60, 40, PictureTQX.ImageFormatRGBA, 0, folder.Child(\"pixels\"))\n"
        "Wend\n";
    std::mt19937 random(20);
    for (int i = 0; i < 100; ++i) {
        const int signal = i % 3 == 0 ? SIGKILL : SIGTERM;
        bool sent = false;
        const Outcome outcome = Run(busy, [&](int process, const Outcome&) {
            if (sent) return;
            sent = true;
            for (int times = 0; times < 1 + i % 2; ++times) {
                usleep(random() % 3000);
                kill(process, signal);
            }
        });
        ASSERT_EQ(outcome.exitCode, signal == SIGKILL ? -SIGKILL : 128 + SIGTERM) << i << outcome.err;
        ASSERT_TRUE(signal == SIGKILL || NothingLeft()) << i;
        for (const auto& entry : fs::directory_iterator(folder_ / "scratch")) fs::remove(entry.path());
    }
}

}  // namespace
