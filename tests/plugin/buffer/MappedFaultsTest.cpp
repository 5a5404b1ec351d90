// Scratch files that can't be made, filled or mapped: the picture is invalid or its rows are
// missing, and nothing stays behind.
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <fstream>

#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"
#include "tests/support/MappedPictures.h"

namespace {

using namespace support;

constexpr int kRGB = 1;
constexpr int kGray = 11;

class MappedFaults : public PluginTest {
  protected:
    const std::string path_ = ScratchPath("pixels");

    void ExpectNothingLeft() {
        EXPECT_FALSE(std::filesystem::exists(path_));
        EXPECT_EQ(OpenDescriptorsOf(path_), 0);
        EXPECT_EQ(MappingsOf(path_), 0);
    }

    // An invalid picture of which nothing is left.
    void ExpectRefused(int width, int height, int format) {
        const auto picture = NewMapped(path_, width, height, format);
        EXPECT_FALSE(GetBool(picture, "Valid"));
        EXPECT_EQ(RowAddress(picture, 0), nullptr);
        EXPECT_EQ(CallObject(picture, "GammaFilter", nullptr, 2.2), nullptr);
        EXPECT_EQ(CallObject(picture, "Clone"), nullptr);
        ExpectNothingLeft();
    }

    void TearDown() override {
        TakeThrown();  // an invalid picture has no rows to ask for
        PluginTest::TearDown();
    }
};

TEST_F(MappedFaults, RefusesUnknownFormats) {
    for (int format : {0, -1, 22, INT_MAX}) ExpectRefused(4, 4, format);
}

TEST_F(MappedFaults, RefusesNegativeSizesAndRowsOf2GiB) {
    ExpectRefused(-1, 4, kGray);
    ExpectRefused(4, -1, kGray);
    ExpectRefused(INT_MIN, INT_MIN, kGray);
    ExpectRefused(INT_MAX, 1, kGray);  // rounds up to 2^31 bytes
    ExpectRefused(INT_MAX, 1, 14);
    ExpectRefused(1 << 27, 1, 14);
}

TEST_F(MappedFaults, RefusesSizesThatNoDiskHolds) { ExpectRefused(INT_MAX / 2, INT_MAX, kGray); }

TEST_F(MappedFaults, RefusesWithoutAFile) { EXPECT_FALSE(GetBool(New("PictureTQX", 4, 4, kRGB, 0, nullptr), "Valid")); }

TEST_F(MappedFaults, AsksTheOlderHostFunctionForThePathWhenTheFirstFails) {
    const FailingHostFunction first("REALFSRefFromFolderItem");
    const auto picture = NewMapped(path_, 4, 4, kRGB);
    EXPECT_TRUE(GetBool(picture, "Valid"));
    EXPECT_EQ(OpenDescriptorsOf(path_), 1);
}

TEST_F(MappedFaults, RefusesAFileWhosePathTheHostDoesNotTell) {
    const FailingHostFunction first("REALFSRefFromFolderItem");
    const FailingHostFunction second("REALFSSpecFromFolderItem");
    ExpectRefused(4, 4, kRGB);
}

TEST_F(MappedFaults, RefusesPathsThatCanNotBeOpened) {
    { std::ofstream(ScratchPath("file")) << "x"; }
    for (const char* name : {"missing/pixels", "file/pixels", ""}) {
        const std::string path = ScratchPath(name);
        const auto picture = NewMapped(path, 4, 4, kRGB);
        EXPECT_FALSE(GetBool(picture, "Valid")) << name;
        EXPECT_EQ(OpenDescriptorsOf(path), 0) << name;
    }
    EXPECT_TRUE(std::filesystem::is_directory(ScratchPath("")));
    EXPECT_EQ(ReadFile(ScratchPath("file"), 0, 1).size(), 1U);
}

TEST_F(MappedFaults, LeavesWhatIsNoRegularFileAlone) {
    ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
    EXPECT_FALSE(GetBool(NewMapped(path_, 4, 4, kRGB), "Valid"));
    EXPECT_TRUE(std::filesystem::is_fifo(path_));
    EXPECT_EQ(OpenDescriptorsOf(path_), 0);
    EXPECT_FALSE(GetBool(NewMapped("/dev/null", 4, 4, kRGB), "Valid"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(MappedFaults, AFailingSystemCallLeavesNoFile) {
    for (SystemCall call :
         {SystemCall::Open, SystemCall::Ftruncate, SystemCall::PosixFallocate, SystemCall::Lseek, SystemCall::Write}) {
        const FailingCall failing(call);
        ExpectRefused(10, 10, kRGB);
        EXPECT_EQ(failing.failed(), 1) << static_cast<int>(call);
    }
    const FailingCall secondLength(SystemCall::Ftruncate, 2);
    ExpectRefused(10, 10, kRGB);
}

TEST_F(MappedFaults, CallsInterruptedBySignalsAreMadeAgain) {
    for (SystemCall call : {SystemCall::Open, SystemCall::Ftruncate, SystemCall::PosixFallocate, SystemCall::Write}) {
        const FailingCall failing(call, 1, 3, EINTR);
        const auto picture = NewMapped(path_, 10, 10, kRGB);
        EXPECT_TRUE(GetBool(picture, "Valid")) << static_cast<int>(call);
        EXPECT_EQ(failing.failed(), 3);
    }
    ExpectNothingLeft();
}

TEST_F(MappedFaults, TheLengthAloneDoesWhereBlocksCanNotBeReserved) {
    for (int error : {EOPNOTSUPP, EINVAL, ENOSYS}) {
        const FailingCall failing(SystemCall::PosixFallocate, 1, 1, error);
        const auto picture = NewMapped(path_, 10, 10, kRGB);
        EXPECT_TRUE(GetBool(picture, "Valid"));
        FillRandom(picture, 1);
    }
}

TEST_F(MappedFaults, AFirstWindowThatCanNotBeMappedMakesThePictureInvalid) {
    auto picture = [this] {
        const FailingCall failing(SystemCall::FileMapping, 1, 1, ENOMEM);
        return NewMapped(path_, 10, 10, kRGB);
    }();
    EXPECT_FALSE(GetBool(picture, "Valid"));
    EXPECT_EQ(OpenDescriptorsOf(path_), 1) << "Close cleans up";
    picture = nullptr;
    ExpectNothingLeft();
}

TEST_F(MappedFaults, RowsWhoseWindowCanNotBeMappedAreMissingUntilItCan) {
    const auto picture = NewMapped(path_, kFiveRowWidth, 12, kGray);
    RowAddress(picture, 11)[0] = 9;
    {
        const FailingCall failing(SystemCall::FileMapping, 1, 2, ENOMEM);
        EXPECT_EQ(RowAddress(picture, 0), nullptr);
        EXPECT_EQ(MappingsOf(path_), 0);
        EXPECT_EQ(GetObject(picture, "Memory"), nullptr);
        EXPECT_EQ(CallObject(picture, "Row", 11), nullptr);
        EXPECT_EQ(RowAddress(picture, 11)[0], 9);
    }
    EXPECT_NE(RowAddress(picture, 0), nullptr);
    EXPECT_EQ(MappingsOf(path_), 1);
}

TEST_F(MappedFaults, AnOperationLeavesRowsAloneWhoseWindowCanNotBeMapped) {
    const auto picture = NewMapped(path_, kFiveRowWidth, 12, kGray);
    const auto source = CallObject(picture, "ClipImage", 0, 0, 3, 12);
    const auto destination = New("PictureTQX", 3, 12, kGray);
    for (int y = 0; y < 12; ++y) std::fill_n(RowAddress(picture, y), 3, std::uint8_t{255});
    RowAddress(source, 0);  // the window holds rows 0 to 4
    const FailingCall failing(SystemCall::FileMapping, 1, 2, ENOMEM);
    EXPECT_EQ(CallObject(source, "GammaFilter", destination, 2.2), destination);
    for (int y = 0; y < 12; ++y) EXPECT_EQ(ByteAt(destination, 0, y, 0), y == 5 || y == 6 ? 0 : 255) << y;
}

TEST_F(MappedFaults, ViewsOfAPictureWhoseWindowCanNotBeMappedHaveNoRows) {
    const auto picture = NewMapped(path_, 10, 10, kRGB);
    const FailingCall failing(SystemCall::FileMapping, 1, 99, ENOMEM);
    for (const char* name : {"ClipImage", "MirroredView", "RedChannel", "RGBChannels"}) {
        const auto view = CallObject(picture, name);
        ASSERT_TRUE(view) << name;
        EXPECT_EQ(RowAddress(view, 0), nullptr);
        EXPECT_EQ(CallObject(view, "GammaFilter", nullptr, 2.2), nullptr);
    }
    EXPECT_NE(RowAddress(picture, 0), nullptr) << "its own window stands";
}

TEST_F(MappedFaults, AFileLargerThanTheProcessMayWriteIsRefusedWithoutASignal) {
    struct rlimit before {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    struct rlimit low = before;
    low.rlim_cur = 10 * kPage;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &low), 0);
    ExpectRefused(10, 10, kRGB);
    const auto fitting = NewMapped(path_, 10, 9, kRGB);
    EXPECT_TRUE(GetBool(fitting, "Valid"));
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
}

TEST_F(MappedFaults, AFullDiskIsFoundAtConstruction) {
    const std::string folder = ScratchPath("disk");
    std::filesystem::create_directory(folder);
    if (mount("none", folder.c_str(), "tmpfs", 0, "size=400k") != 0) GTEST_SKIP() << "needs the right to mount";
    {
        const std::string path = folder + "/pixels";
        EXPECT_FALSE(GetBool(NewMapped(path, 10, 200, kRGB), "Valid"));
        EXPECT_TRUE(std::filesystem::is_empty(folder));
        const auto fitting = NewMapped(path, 10, 60, kRGB);
        EXPECT_TRUE(GetBool(fitting, "Valid"));
        EXPECT_FALSE(GetBool(NewMapped(folder + "/second", 10, 60, kRGB), "Valid"));
        FillRandom(fitting, 1);
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    EXPECT_EQ(umount(folder.c_str()), 0);
}

}  // namespace
