// What tests rely on to make the system misbehave.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platform/TickCount.h"
#include "tests/support/Interpose.h"

namespace {

using namespace support;

TEST(FakeClock, SetsTheTickClock) {
    {
        FakeClock clock(1234);
        EXPECT_EQ(platform::TickCount(), 1234U);
        EXPECT_EQ(platform::TickCount(), 1234U);
        for (std::uint32_t i = 0; i < 200; ++i) {
            clock.Advance(1);
            ASSERT_EQ(platform::TickCount(), 1235U + i);
        }
        clock.Set(0xFFFFFFFF);
        EXPECT_EQ(platform::TickCount(), 0xFFFFFFFF);
        clock.AdvancePerReading(3);
        EXPECT_EQ(platform::TickCount(), 0xFFFFFFFF);
        EXPECT_EQ(platform::TickCount(), 2U);
        EXPECT_EQ(clock.readings(), 205);
    }
    const std::uint32_t real = platform::TickCount();
    EXPECT_LT(platform::TickCount() - real, 600U);
}

class ScratchFile : public ::testing::Test {
  protected:
    void SetUp() override {
        path_ = "/tmp/tqx-interpose-XXXXXX";
        file_ = mkstemp(path_.data());
        ASSERT_GE(file_, 0);
    }
    void TearDown() override {
        close(file_);
        unlink(path_.c_str());
    }
    void* Map() { return mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, file_, 0); }

    std::string path_;
    int file_ = -1;
};

TEST_F(ScratchFile, CountsMappingsOfFilesOnly) {
    ASSERT_EQ(ftruncate(file_, 8192), 0);
    ResetFileMappings();
    const FileMappings before = CountedFileMappings();
    void* one = Map();
    void* two = Map();
    void* memory = mmap(nullptr, 4096, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_EQ(CountedFileMappings().made, 2);
    EXPECT_EQ(CountedFileMappings().live, before.live + 2);
    munmap(one, 4096);
    munmap(memory, 4096);
    EXPECT_EQ(CountedFileMappings().live, before.live + 1);
    EXPECT_EQ(CountedFileMappings().liveBytes, before.liveBytes + 4096);
    EXPECT_EQ(CountedFileMappings().mostBytes, before.mostBytes + 8192);
    munmap(two, 4096);
    EXPECT_EQ(CountedFileMappings().live, before.live);
}

TEST_F(ScratchFile, FailsTheNthMapping) {
    ASSERT_EQ(ftruncate(file_, 8192), 0);
    FailingCall failing(SystemCall::FileMapping, 2, 1, ENOMEM);
    void* one = Map();
    EXPECT_NE(one, MAP_FAILED);
    EXPECT_EQ(Map(), MAP_FAILED);
    EXPECT_EQ(errno, ENOMEM);
    void* three = Map();
    EXPECT_NE(three, MAP_FAILED);
    EXPECT_EQ(failing.calls(), 3);
    EXPECT_EQ(failing.failed(), 1);
    munmap(one, 4096);
    munmap(three, 4096);
}

TEST_F(ScratchFile, FailsEveryOtherCallOnDemand) {
    {
        FailingCall failing(SystemCall::Open);
        EXPECT_EQ(open(path_.c_str(), O_RDONLY), -1);
        EXPECT_EQ(errno, ENOSPC);
    }
    {
        FailingCall failing(SystemCall::Ftruncate);
        EXPECT_EQ(ftruncate(file_, 10), -1);
    }
    {
        FailingCall failing(SystemCall::PosixFallocate);
        EXPECT_EQ(posix_fallocate(file_, 0, 10), ENOSPC);
    }
    {
        FailingCall failing(SystemCall::Lseek);
        EXPECT_EQ(lseek(file_, 0, SEEK_SET), -1);
    }
    {
        FailingCall failing(SystemCall::Write);
        EXPECT_EQ(write(file_, "x", 1), -1);
    }
    {
        FailingCall failing(SystemCall::Pwrite);
        EXPECT_EQ(pwrite(file_, "x", 1, 0), -1);
    }
    EXPECT_EQ(write(file_, "x", 1), 1);
    EXPECT_EQ(pwrite(file_, "x", 1, 5), 1);
    EXPECT_EQ(lseek(file_, 0, SEEK_END), 6);
}

// Through a pointer that the compiler can't see through: it would drop an unused allocation.
void* Allocate(std::size_t size) {
    void* (*volatile allocate)(std::size_t) = &std::malloc;
    return allocate(size);
}

void* AllocateZeroed(std::size_t size) {
    void* (*volatile allocate)(std::size_t, std::size_t) = &std::calloc;
    return allocate(1, size);
}

TEST(FailingAllocations, FailLargeAllocationsOnly) {
    FailingAllocations failing(1 << 20);
    EXPECT_EQ(Allocate(1 << 20), nullptr);
    EXPECT_EQ(AllocateZeroed(2 << 20), nullptr);
    void* small = Allocate(100);
    EXPECT_NE(small, nullptr);
    std::free(small);
    EXPECT_EQ(failing.failed(), 2);
}

}  // namespace
