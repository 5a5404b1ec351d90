// Windows of files, and how many mappings they take.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/FileWindow.h"
#include "tests/support/Interpose.h"

namespace platform {

namespace {

using support::CountedFileMappings;
using support::ResetFileMappings;

constexpr std::int64_t kPage = 4096;
constexpr std::int64_t kLargePage = 2 << 20;

// A file of some large pages and a half, each page beginning with its number.
class FileWindow : public ::testing::Test {
  protected:
    static constexpr std::int64_t kPages = 7 * kLargePage / 2 / kPage;

    void SetUp() override {
        char path[] = "/tmp/tqx-test-XXXXXX";
        file_ = mkstemp(path);
        ASSERT_GE(file_, 0);
        unlink(path);
        ASSERT_EQ(ftruncate(file_, kPages * kPage), 0);
        for (std::int64_t page = 0; page < kPages; ++page)
            ASSERT_EQ(pwrite(file_, &page, sizeof(page), page * kPage), static_cast<ssize_t>(sizeof(page)));
        ResetFileMappings();
        before_ = CountedFileMappings();
    }

    void TearDown() override {
        EXPECT_EQ(CountedFileMappings().live, before_.live);
        EXPECT_EQ(CountedFileMappings().liveBytes, before_.liveBytes);
        close(file_);
    }

    static std::int64_t NumberAt(const std::uint8_t* page) {
        std::int64_t number;
        std::memcpy(&number, page, sizeof(number));
        return number;
    }

    int file_ = -1;
    support::FileMappings before_;
};

TEST_F(FileWindow, BeginsAtAnyPage) {
    for (const std::int64_t pages : {std::int64_t{1}, kLargePage / kPage - 1, kLargePage / kPage, std::int64_t{700}})
        for (const std::int64_t first : {0, 1, 511, 512, 513, 1000}) {
            std::uint8_t* const window = MapFileWindow(file_, first * kPage, pages * kPage);
            ASSERT_TRUE(window);
            EXPECT_EQ(NumberAt(window), first);
            EXPECT_EQ(NumberAt(window + (pages - 1) * kPage), first + pages - 1);
            UnmapFileWindow(window, first * kPage, pages * kPage);
            EXPECT_EQ(CountedFileMappings().live, before_.live);
        }
}

TEST_F(FileWindow, IsSharedWithTheFile) {
    std::uint8_t* const window = MapFileWindow(file_, 3 * kPage, 600 * kPage);
    std::uint8_t* const other = MapFileWindow(file_, 5 * kPage, kPage);
    ASSERT_TRUE(window && other);
    window[2 * kPage + 8] = 77;
    EXPECT_EQ(other[8], 77);
    std::uint8_t inFile = 0;
    EXPECT_EQ(pread(file_, &inFile, 1, 5 * kPage + 8), 1);
    EXPECT_EQ(inFile, 77);
    UnmapFileWindow(window, 3 * kPage, 600 * kPage);
    UnmapFileWindow(other, 5 * kPage, kPage);
}

TEST_F(FileWindow, TakesNoMoreThanTheLargePagesThatItTouches) {
    UnmapFileWindow(MapFileWindow(file_, kPage, 2 * kPage), kPage, 2 * kPage);
    EXPECT_EQ(CountedFileMappings().mostBytes - before_.liveBytes, 2 * kPage) << "less than a large page: just that";
    UnmapFileWindow(MapFileWindow(file_, kLargePage, kLargePage), kLargePage, kLargePage);
    EXPECT_EQ(CountedFileMappings().mostBytes - before_.liveBytes, kLargePage);
    UnmapFileWindow(MapFileWindow(file_, kLargePage - kPage, kLargePage + 2 * kPage), kLargePage - kPage,
                    kLargePage + 2 * kPage);
    EXPECT_EQ(CountedFileMappings().mostBytes - before_.liveBytes, 3 * kLargePage);
}

TEST_F(FileWindow, MayReachPastTheFile) {
    const std::int64_t last = (kPages - 1) * kPage;
    std::uint8_t* const window = MapFileWindow(file_, last, 3 * kLargePage);
    ASSERT_TRUE(window);
    EXPECT_EQ(NumberAt(window), kPages - 1);
    UnmapFileWindow(window, last, 3 * kLargePage);
}

// Faults of a write to each page of a window over a file of small pages.
std::int64_t FaultsOfWriting(std::int64_t pages, bool bringIn) {
    const int file = memfd_create("tqx-test", MFD_CLOEXEC);
    EXPECT_EQ(ftruncate(file, pages * kPage), 0);
    std::uint8_t* const window = MapFileWindow(file, 0, pages * kPage, bringIn);
    const std::int64_t before = PageFaults();
    for (std::int64_t page = 0; page < pages; ++page) window[page * kPage] = 1;
    const std::int64_t faults = PageFaults() - before;
    UnmapFileWindow(window, 0, pages * kPage);
    close(file);
    return faults;
}

TEST(FileWindowPages, ComeInAtOnceIfTheyAreToBeWritten) {
    constexpr std::int64_t kSmallPages = 1024;
    if (FaultsOfWriting(kSmallPages, false) < kSmallPages / 2) GTEST_SKIP() << "files in memory have large pages here";
    EXPECT_LT(FaultsOfWriting(kSmallPages, true), kSmallPages / 8);
}

TEST_F(FileWindow, ReachesPastTheFileAlsoWhenItsPagesComeAtOnce) {
    const std::int64_t last = (kPages - 1) * kPage;
    std::uint8_t* const window = MapFileWindow(file_, last, 3 * kLargePage, true);
    ASSERT_TRUE(window);
    EXPECT_EQ(NumberAt(window), kPages - 1);
    UnmapFileWindow(window, last, 3 * kLargePage);
}

TEST_F(FileWindow, IsNullWhenItCanNotBeMapped) {
    EXPECT_EQ(MapFileWindow(-1, 0, kPage), nullptr);
    const support::FailingCall failing(support::SystemCall::FileMapping, 1, 1, ENOMEM);
    EXPECT_EQ(MapFileWindow(file_, kPage, kLargePage), nullptr);
    EXPECT_EQ(failing.failed(), 1);
}

}  // namespace

}  // namespace platform
