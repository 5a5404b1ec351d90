// What saving does to the file that was there before: replaced whole or left as it was.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include "platform/ScratchFiles.h"
#include "tests/host/images/ImageTestFiles.h"
#include "tests/support/Interpose.h"
#include "tests/support/SmallDisk.h"

namespace host {
namespace {

const char* const kNames[] = {"a.png", "a.jpg", "a.tif", "a.webp", "a.bmp", "a.pgm", "a.ppm", "a.pam"};

// What saving throws; empty when it throws nothing.
std::string SaveFailure(const std::string& path, const TestImage& image) {
    try {
        WriteImage(path, image, {{}, 100});
        return "";
    } catch (const ImageError& error) {
        EXPECT_EQ(error.kind, ImageError::Kind::File) << error.what();
        return error.what();
    }
}

// Runs a step in a process of its own, which ends with what the step returns.
template <class Step>
pid_t Start(Step step) {
    const pid_t child = fork();
    if (child == 0) _exit(step());
    return child;
}

int EndOf(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return status;
}

class Saving : public testing::Test {
  protected:
    std::string Path(const std::string& name) const { return directory.Path(name); }
    mode_t ModeOf(const std::string& name) const {
        struct stat status {};
        EXPECT_EQ(stat(Path(name).c_str(), &status), 0);
        return status.st_mode & 07777;
    }

    TemporaryDirectory directory;
    const TestImage small = MakeTestImage(3, 2, PixelLayout::Rgb);
    const TestImage large = MakeTestImage(190, 120, PixelLayout::Rgba);
};

// --- Full disks ------------------------------------------------------------------------------

TEST_F(Saving, OnADiskThatFillsAtAnyPageLeavesTheOldFileAndSaysWhy) {
    for (const char* name : kNames) {
        ASSERT_EQ(SaveFailure(Path(name), large), "");
        const std::uint64_t needed = std::filesystem::file_size(Path(name));
        const std::string whole = ReadBytes(Path(name));
        WriteBytes(Path(name), "old");
        std::vector<std::uint64_t> rooms{needed - 1};
        for (std::uint64_t room = 0; room < needed; room += 4096) rooms.push_back(room);
        for (const std::uint64_t room : rooms) {
            const support::SmallDisk disk(room);
            ASSERT_EQ(SaveFailure(Path(name), large), Path(name) + ": can't be written: " + std::strerror(EFBIG))
                << room << " of " << needed;
            ASSERT_EQ(ReadBytes(Path(name)), "old") << room << " of " << needed;
        }
        const support::SmallDisk enough(needed);
        EXPECT_EQ(SaveFailure(Path(name), large), "");
        EXPECT_EQ(ReadBytes(Path(name)), whole);
        std::filesystem::remove(Path(name));
        EXPECT_EQ(directory.FileCount(), 0U);
    }
}

TEST_F(Saving, WhereAnyWriteFailsLeavesTheOldFileAndSaysWhy) {
    for (const char* name : kNames) {
        WriteBytes(Path(name), "old");
        for (const std::int64_t count : {std::int64_t{1}, std::int64_t{1} << 40}) {
            std::int64_t nth = 1;
            for (;; ++nth) {
                const support::FailingCall full(support::SystemCall::Write, nth, count, ENOSPC);
                const std::string failure = SaveFailure(Path(name), large);
                if (full.failed() == 0) {
                    EXPECT_EQ(failure, "");
                    break;
                }
                ASSERT_EQ(failure, Path(name) + ": can't be written: " + std::strerror(ENOSPC)) << nth;
                ASSERT_EQ(ReadBytes(Path(name)), "old") << nth;
            }
            EXPECT_GE(nth, 2) << name;
            WriteBytes(Path(name), "old");
        }
        std::filesystem::remove(Path(name));
        EXPECT_EQ(directory.FileCount(), 0U);
    }
}

TEST_F(Saving, InterruptedWritesGoOn) {
    const support::FailingCall interrupted(support::SystemCall::Write, 1, 2, EINTR);
    EXPECT_EQ(SaveFailure(Path("a.png"), large), "");
    EXPECT_EQ(interrupted.failed(), 2);
    EXPECT_EQ(ReadImage(Path("a.png")), large);
}

TEST_F(Saving, IsFinishedOnce) {
    ImageWriter writer(Path("a.png"), 3, 2, PixelLayout::Rgb);
    for (int y = 0; y < 2; ++y) writer.WriteRow(small.Row(y));
    writer.Finish();
    EXPECT_THROW(writer.Finish(), ImageError);
    EXPECT_EQ(ReadImage(Path("a.png")), small);
}

// --- Permissions -----------------------------------------------------------------------------

TEST_F(Saving, KeepsThePermissionsOfTheOldFile) {
    for (const mode_t mode : {0600, 0640, 0755, 0666}) {
        WriteBytes(Path("a.png"), "old");
        ASSERT_EQ(chmod(Path("a.png").c_str(), mode), 0);
        WriteImage(Path("a.png"), small);
        EXPECT_EQ(ModeOf("a.png"), mode);
    }
}

TEST_F(Saving, KeepsTheOwnerOfTheOldFile) {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can give files away";
    WriteBytes(Path("a.png"), "old");
    ASSERT_EQ(chown(Path("a.png").c_str(), 12, 34), 0);
    WriteImage(Path("a.png"), small);
    struct stat status {};
    ASSERT_EQ(stat(Path("a.png").c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 12U);
    EXPECT_EQ(status.st_gid, 34U);
}

TEST_F(Saving, RefusesAReadOnlyFile) {
    WriteBytes(Path("a.png"), "old");
    ASSERT_EQ(chmod(Path("a.png").c_str(), 0444), 0);
    EXPECT_EQ(SaveFailure(Path("a.png"), small), Path("a.png") + ": can't be written: the file is read-only");
    EXPECT_EQ(ReadBytes(Path("a.png")), "old");
    EXPECT_EQ(directory.FileCount(), 1U);
}

TEST_F(Saving, RefusesAFileThatOnlyOthersMayWrite) {
    if (geteuid() != 0) GTEST_SKIP() << "only the superuser can be somebody else";
    ASSERT_EQ(chmod(directory.path().c_str(), 0777), 0);
    WriteBytes(Path("a.png"), "old");
    ASSERT_EQ(chmod(Path("a.png").c_str(), 0644), 0);
    const int status = EndOf(Start([this] {
        if (setuid(65534) != 0) return 2;
        const std::string denied = Path("a.png") + ": can't be written: " + std::strerror(EACCES);
        return SaveFailure(Path("a.png"), small) == denied ? 0 : 1;
    }));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ReadBytes(Path("a.png")), "old");
}

// --- Names -----------------------------------------------------------------------------------

TEST_F(Saving, FollowsLinksToFilesThatAreNotThereYet) {
    ASSERT_TRUE(std::filesystem::create_directory(Path("folder")));
    std::filesystem::create_symlink("folder/middle.png", Path("link.png"));
    std::filesystem::create_symlink(Path("real.png"), Path("folder/middle.png"));
    for (int round = 0; round < 2; ++round) {
        WriteImage(Path("link.png"), small);
        EXPECT_TRUE(std::filesystem::is_symlink(Path("link.png")));
        EXPECT_TRUE(std::filesystem::is_symlink(Path("folder/middle.png")));
        EXPECT_FALSE(std::filesystem::is_symlink(Path("real.png")));
        EXPECT_EQ(ReadImage(Path("real.png")), small);
    }
}

TEST_F(Saving, RefusesLinksThatLeadNowhere) {
    std::filesystem::create_symlink("b.png", Path("a.png"));
    std::filesystem::create_symlink("a.png", Path("b.png"));
    EXPECT_EQ(SaveFailure(Path("a.png"), small), Path("a.png") + ": can't be written: " + std::strerror(ELOOP));
    EXPECT_EQ(directory.FileCount(), 2U);
}

TEST_F(Saving, TakesNamesAsLongAsTheSystemDoes) {
    const std::string name = std::string(251, 'n') + ".png";
    WriteImage(Path(name), small);
    EXPECT_EQ(ReadImage(Path(name)), small);
    EXPECT_EQ(SaveFailure(Path("n" + name), small),
              Path("n" + name) + ": can't be written: " + std::strerror(ENAMETOOLONG));
    EXPECT_EQ(directory.FileCount(), 1U);
}

TEST_F(Saving, TakesNamesWithoutAFolder) {
    const int status = EndOf(Start([this] {
        if (chdir(directory.path().c_str()) != 0) return 2;
        return SaveFailure("a.png", small) == "" ? 0 : 1;
    }));
    EXPECT_EQ(status, 0);
    EXPECT_EQ(ReadImage(Path("a.png")), small);
}

// --- The end of the process ------------------------------------------------------------------

// Says that it is there, then saves one of two files under a name until it is ended, and lets no
// signal leave a scratch file.
int SaveForever(int ready, const std::string& path, const TestImage& one, const TestImage& other) {
    std::signal(SIGTERM, [](int signal) {
        platform::RemoveScratchFiles();
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    });
    if (write(ready, "!", 1) != 1) return 1;
    for (;;) {
        WriteImage(path, one);
        WriteImage(path, other);
    }
}

// A hundred processes, each ended at another moment.
TEST_F(Saving, LeavesAWholeFileWhereverItIsKilled) {
    const TestImage other = MakeTestImage(170, 130, PixelLayout::Rgba);
    int scratchFiles = 0;
    for (int round = 0; round < 100; ++round) {
        const std::string path = Path(round % 3 == 0 ? "a.tif" : round % 3 == 1 ? "a.png" : "a.pam");
        const int signal = round % 2 == 0 ? SIGTERM : SIGKILL;
        WriteImage(path, other);
        int ready[2];
        ASSERT_EQ(pipe(ready), 0);
        const pid_t child = Start([&] { return SaveForever(ready[1], path, large, other); });
        char word = 0;
        ASSERT_EQ(read(ready[0], &word, 1), 1);
        close(ready[0]);
        close(ready[1]);
        const timespec moment{0, round * 137'000};
        nanosleep(&moment, nullptr);
        kill(child, signal);
        const int status = EndOf(child);
        ASSERT_TRUE(WIFSIGNALED(status)) << status;
        ASSERT_EQ(WTERMSIG(status), signal);
        const TestImage left = ReadImage(path);
        ASSERT_TRUE(left == large || left == other) << path;
        std::filesystem::remove(path);
        const std::size_t files = directory.FileCount();
        ASSERT_TRUE(signal == SIGKILL || files == 0) << round;
        scratchFiles += static_cast<int>(files);
        for (const auto& entry : std::filesystem::directory_iterator(directory.path()))
            std::filesystem::remove(entry.path());
    }
    // Nobody can clean up after SIGKILL: some were ended in the middle of saving.
    EXPECT_GT(scratchFiles, 0);
}

// --- PNM -------------------------------------------------------------------------------------

TEST_F(Saving, PnmNamesSayWhatTheFileHolds) {
    const TestImage colors{1, 1, PixelLayout::Rgba, {10, 20, 30, 40}}, gray{1, 1, PixelLayout::GrayAlpha, {77, 40}};
    const std::uint8_t luminance = (77 * 10 + 151 * 20 + 28 * 30) / 256;
    const auto written = [&](const char* name, const TestImage& image) {
        WriteImage(Path(name), image);
        return ReadBytes(Path(name)).substr(0, 2);
    };
    EXPECT_EQ(written("a.pgm", colors), "P5");
    EXPECT_EQ(ReadImage(Path("a.pgm")), (TestImage{1, 1, PixelLayout::Gray, {luminance}}));
    EXPECT_EQ(written("a.PPM", colors), "P6");
    EXPECT_EQ(ReadImage(Path("a.PPM")), (TestImage{1, 1, PixelLayout::Rgb, {10, 20, 30}}));
    EXPECT_EQ(written("a.ppm", gray), "P6");
    EXPECT_EQ(ReadImage(Path("a.ppm")), (TestImage{1, 1, PixelLayout::Rgb, {77, 77, 77}}));
    for (const PixelLayout layout : {PixelLayout::Gray, PixelLayout::GrayAlpha, PixelLayout::Rgb, PixelLayout::Rgba}) {
        const TestImage image = MakeTestImage(5, 4, layout);
        EXPECT_EQ(written("a.pam", image), "P7");
        EXPECT_EQ(ReadImage(Path("a.pam")), image);
        EXPECT_EQ(written("a.pnm", image), HasAlpha(layout) ? "P7" : IsGray(layout) ? "P5" : "P6");
    }
}

}  // namespace
}  // namespace host
