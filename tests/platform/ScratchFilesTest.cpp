// Scratch files that go however the process ends.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <vector>

#include "platform/ScratchFiles.h"
#include "tests/support/Interpose.h"

namespace platform {

namespace {

namespace fs = std::filesystem;

class ScratchFiles : public ::testing::Test {
  protected:
    void SetUp() override { fs::create_directories(folder_); }
    void TearDown() override { fs::remove_all(folder_); }

    std::string Made(const std::string& name) const {
        const fs::path path = folder_ / name;
        std::ofstream(path) << "pixels";
        return path.string();
    }
    std::string Pattern() const { return (folder_ / "scratch.XXXXXX").string(); }
    std::ptrdiff_t Files() const { return std::distance(fs::directory_iterator(folder_), fs::directory_iterator()); }

    const fs::path folder_ = fs::temp_directory_path() / ("tqx-scratch-names-" + std::to_string(getpid()));
};

// Runs a step in a process of its own; how that ended, as waitpid tells it.
template <class Step>
int InChild(Step step) {
    const pid_t child = fork();
    if (child == 0) {
        step();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

TEST_F(ScratchFiles, AreRemovedWhileTheirNamesAreKept) {
    const std::string kept = Made("kept"), other = Made("other");
    ScratchName name;
    ASSERT_TRUE(name.Keep(kept.c_str()));
    RemoveScratchFiles();
    EXPECT_FALSE(fs::exists(kept));
    EXPECT_TRUE(fs::exists(other));
}

TEST_F(ScratchFiles, StayWhenTheirNamesAreForgotten) {
    const std::string forgotten = Made("forgotten"), ended = Made("ended"), replaced = Made("replaced");
    ScratchName name;
    ASSERT_TRUE(name.Keep(replaced.c_str()));
    ASSERT_TRUE(name.Keep(forgotten.c_str()));
    name.Forget();
    { ASSERT_TRUE(ScratchName().Keep(ended.c_str())); }
    RemoveScratchFiles();
    EXPECT_EQ(Files(), 3);
}

TEST_F(ScratchFiles, CanBeMany) {
    std::vector<ScratchName> names(1000);
    for (ScratchName& name : names) {
        std::string path = Pattern();
        const int file = MakeScratchFile(path, name);
        ASSERT_GE(file, 0);
        close(file);
    }
    EXPECT_EQ(Files(), 1000);
    names[500].Forget();
    RemoveScratchFiles();
    EXPECT_EQ(Files(), 1);
}

TEST_F(ScratchFiles, OfAProcessAreNotRemovedByItsChild) {
    ScratchName name;
    ASSERT_TRUE(name.Keep(Made("parent").c_str()));
    EXPECT_EQ(InChild([] { RemoveScratchFiles(); }), 0);
    EXPECT_EQ(Files(), 1);
}

TEST_F(ScratchFiles, AreGoneAfterASignalThatEndsTheProcess) {
    const int status = InChild([this] {
        std::signal(SIGTERM, [](int signal) {
            RemoveScratchFiles();
            std::signal(signal, SIG_DFL);
            std::raise(signal);
        });
        ScratchName name;
        std::string path = Pattern();
        if (MakeScratchFile(path, name) >= 0 && fs::exists(path)) std::raise(SIGTERM);
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
    EXPECT_EQ(Files(), 0);
}

TEST_F(ScratchFiles, AreNotMadeWhereTheirNamesCannotBeKept) {
    ScratchName name;
    std::string path = Pattern();
    int file = 0;
    {
        const support::FailingAllocations none(1);
        file = MakeScratchFile(path, name);
    }
    EXPECT_EQ(file, -1);
    EXPECT_EQ(errno, ENOMEM);
    EXPECT_EQ(Files(), 0);
}

TEST_F(ScratchFiles, HoldSignalsBackUntilTheirNamesAreKept) {
    const int status = InChild([] {
        {
            const HeldSignals held;
            std::raise(SIGTERM);  // comes when it is no longer held
        }
        _exit(1);
    });
    EXPECT_TRUE(WIFSIGNALED(status));
}

}  // namespace

}  // namespace platform
