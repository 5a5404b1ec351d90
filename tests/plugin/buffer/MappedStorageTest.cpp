// Pictures in scratch files: construction, the window rule, rows, views and Close.
#include <fcntl.h>
#include <sys/stat.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/Formats.h"
#include "tests/support/Interpose.h"
#include "tests/support/MappedPictures.h"

namespace {

using namespace support;

constexpr int kRGB = 1;
constexpr int kGray = 11;

class MappedStorage : public PluginTest {
  protected:
    const std::string path_ = ScratchPath("pixels");

    Ref<Object> Make(int width, int height, int format, int blockSize = 0) {
        Ref<Object> picture = NewMapped(path_, width, height, format, blockSize);
        EXPECT_TRUE(GetBool(picture, "Valid"));
        return picture;
    }

    // A picture of `height` rows of a page each, of which row y begins with the bytes of y.
    Ref<Object> MakeNumbered(int height, int blockSize = 0) {
        Ref<Object> picture = Make(kPage, height, kGray, blockSize);
        for (int y = 0; y < height; ++y) WriteFile(path_, std::int64_t{y} * kPage, NumberOf(y));
        return picture;
    }

    static Bytes NumberOf(int row) {
        return {static_cast<std::uint8_t>(row), static_cast<std::uint8_t>(row >> 8),
                static_cast<std::uint8_t>(row >> 16)};
    }

    // The number at an address; -1 for null.
    static int NumberAt(const std::uint8_t* row) { return row ? row[0] | row[1] << 8 | row[2] << 16 : -1; }

    // The storage row at which a numbered picture's window begins.
    static int FirstRowOfWindow(const Ref<Object>& picture) {
        return NumberAt(BlockAddress(GetObject(picture, "Memory")));
    }

    void ExpectNothingLeft() {
        EXPECT_FALSE(std::filesystem::exists(path_));
        EXPECT_EQ(OpenDescriptorsOf(path_), 0);
        EXPECT_EQ(MappingsOf(path_), 0);
    }

    void TearDown() override {
        ExpectNothingLeft();
        PluginTest::TearDown();
    }
};

// --- Construction ----------------------------------------------------------------------------

TEST_F(MappedStorage, RowsAreWholePages) {
    const auto picture = Make(1000, 1000, kRGB, 1 << 20);
    EXPECT_EQ(GetInt(picture, "RowSize"), kPage);
    EXPECT_EQ(GetInt(picture, "TotalSize"), 4'096'000);
    EXPECT_EQ(GetInt(picture, "MappingBlockSize"), 4'096'000);
    EXPECT_TRUE(GetBool(picture, "IsMapping"));
    EXPECT_EQ(GetInt(Make(kPage, 1, kGray), "RowSize"), kPage);
    EXPECT_EQ(GetInt(Make(kPage + 1, 1, kGray), "RowSize"), 2 * kPage);
}

TEST_F(MappedStorage, DescribesItsFormatLikeAPictureInMemory) {
    for (const Format& format : kFormats) {
        if (format.code == 0) continue;
        const auto mapped = Make(5, 3, format.code);
        const auto memory = New("PictureTQX", 5, 3, format.code);
        for (const char* property : {"Width", "Height", "ImageFormat", "PixelSize", "RedOffset", "GreenOffset",
                                     "BlueOffset", "GrayOffset", "AlphaOffset", "RowOffset"})
            EXPECT_EQ(GetInt(mapped, property), GetInt(memory, property)) << format.name << " " << property;
        for (const char* property : {"IsRGB", "IsGray", "HasRed", "HasGreen", "HasBlue", "HasGray", "HasAlpha"})
            EXPECT_EQ(GetBool(mapped, property), GetBool(memory, property)) << format.name << " " << property;
    }
}

TEST_F(MappedStorage, TheFileHoldsThePixelsAndOnePageMore) {
    const auto picture = Make(10, 3, kRGB);
    EXPECT_EQ(std::filesystem::file_size(path_), 4U * kPage);
    EXPECT_EQ(ReadFile(path_, 0, 4 * kPage), Bytes(4 * kPage));
}

TEST_F(MappedStorage, TheFileIsItsOwnersAlone) {
    const auto picture = Make(10, 3, kRGB);
    struct stat status {};
    ASSERT_EQ(stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(MappedStorage, TheBlocksAreReserved) {
    const auto picture = Make(kPage, 5000, kGray);
    struct stat status {};
    ASSERT_EQ(stat(path_.c_str(), &status), 0);
    EXPECT_GE(status.st_blocks * 512, 5001 * kPage);
}

TEST_F(MappedStorage, ProgramsStartedMeanwhileDoNotInheritTheFile) {
    const auto picture = Make(10, 3, kRGB);
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone) != path_) continue;
        EXPECT_EQ(fcntl(std::stoi(entry.path().filename()), F_GETFD), FD_CLOEXEC);
    }
}

TEST_F(MappedStorage, PixelsStartAtZeroWhateverTheFileHeldBefore) {
    { std::ofstream(path_) << std::string(3 * kPage, 'x'); }
    const auto picture = Make(10, 3, kRGB);
    EXPECT_EQ(ReadPixels(picture), Bytes(90));
}

TEST_F(MappedStorage, KeepsItsFolderItemAlive) {
    auto item = FolderItemOf(path_);
    const auto picture = New("PictureTQX", 4, 4, kRGB, 0, item);
    EXPECT_EQ(item->references, 2);
    Call(picture, "Close");
    EXPECT_EQ(item->references, 1);
}

TEST_F(MappedStorage, ConstructingAnewReleasesTheFileBefore) {
    const auto picture = Make(10, 10, kRGB);
    const std::string second = ScratchPath("second");
    Call(picture, "Constructor", 7, 7, kGray, 0, FolderItemOf(second));
    ExpectNothingLeft();
    EXPECT_EQ(OpenDescriptorsOf(second), 1);
    EXPECT_EQ(GetInt(picture, "Width"), 7);
    Call(picture, "Constructor", 7, 7, kGray, 0, FolderItemOf(second));
    EXPECT_TRUE(GetBool(picture, "Valid"));
    EXPECT_EQ(OpenDescriptorsOf(second), 1);
    Call(picture, "Constructor", 3, 2, kRGB);
    EXPECT_FALSE(std::filesystem::exists(second));
    EXPECT_FALSE(GetBool(picture, "IsMapping"));
    FillRandom(picture, 1);
}

TEST_F(MappedStorage, APictureOverAnothersFileTakesTheNameAndLeavesTheOtherItsPixels) {
    auto first = Make(kPage, 20, kGray);
    FillRandom(first, 1);
    const Bytes pixels = ReadPixels(first);
    const auto second = Make(kPage, 2, kGray);
    FillRandom(second, 2);
    EXPECT_EQ(ReadPixels(first), pixels);
    EXPECT_EQ(ReadFile(path_, 0, 2 * kPage), ReadPixels(second));
    first = nullptr;
    EXPECT_TRUE(std::filesystem::exists(path_)) << "the name is the second picture's";
    EXPECT_EQ(ReadFile(path_, 0, 2 * kPage), ReadPixels(second));
}

// --- The size of a window --------------------------------------------------------------------

TEST_F(MappedStorage, AWindowIsAWholeNumberOfPages) {
    constexpr int kManyRows = 20'000;  // 80 MB
    const struct {
        int wanted;
        int window;
    } cases[] = {
        {INT_MIN, kLeastWindow},
        {-1, kLeastWindow},
        {0, kLeastWindow},
        {kLeastWindow - 1, kLeastWindow},
        {kLeastWindow + kPage - 1, kLeastWindow},
        {kLeastWindow + kPage, kLeastWindow + kPage},
        {32 << 20, 32 << 20},
        {INT_MAX, kManyRows * kPage},  // no larger than the picture
    };
    const auto picture = Make(kPage, kManyRows, kGray);
    for (const auto& [wanted, window] : cases) {
        Set(picture, "MappingBlockSize", Value(wanted));
        EXPECT_EQ(GetInt(picture, "MappingBlockSize"), window) << wanted;
        EXPECT_EQ(MappingsOf(path_), 1);
        EXPECT_EQ(GetInt(Make(kPage, kManyRows, kGray, wanted), "MappingBlockSize"), window) << wanted;
    }
}

TEST_F(MappedStorage, AWindowHoldsFiveRowsEvenOfALowerPicture) {
    EXPECT_EQ(GetInt(Make(10, 3, kRGB), "MappingBlockSize"), 5 * kPage);
    const auto picture = Make(kFiveRowWidth, 9, kGray);
    EXPECT_EQ(GetInt(picture, "MappingBlockSize"), 5 * GetInt(picture, "RowSize"));
}

TEST_F(MappedStorage, RowsTooLongForFiveInAWindowOf32BitsStillWork) {
    const FailingCall noReservation(SystemCall::PosixFallocate, 1, 99, EOPNOTSUPP);  // a file of holes
    for (int width : {500'000'000, 900'000'000, 2'000'000'000}) {
        const auto picture = Make(width, 4, kGray);
        const std::int64_t rowSize = GetInt(picture, "RowSize");
        EXPECT_GE(GetInt(picture, "MappingBlockSize"), rowSize);
        EXPECT_EQ(GetInt(picture, "MappingBlockSize") % kPage, 0);
        for (int y : {0, 3, 1, 2}) {
            std::uint8_t* row = RowAddress(picture, y);
            ASSERT_NE(row, nullptr) << width << " row " << y;
            row[rowSize - 1] = static_cast<std::uint8_t>(y + 1);
        }
        for (int y = 0; y < 4; ++y) EXPECT_EQ(ReadFile(path_, (y + 1) * rowSize - 1, 1)[0], y + 1);
    }
}

// --- Where a window lies ---------------------------------------------------------------------

TEST_F(MappedStorage, TheFirstWindowBeginsAtRow0) {
    const auto picture = MakeNumbered(4200);
    EXPECT_EQ(FirstRowOfWindow(picture), 0);
    EXPECT_EQ(NumberAt(RowAddress(picture, 4095)), 4095);
    EXPECT_EQ(FirstRowOfWindow(picture), 0);
}

TEST_F(MappedStorage, ANewWindowHoldsTwoRowsAboveTheRequestedOne) {
    const auto picture = MakeNumbered(9000);
    EXPECT_EQ(NumberAt(RowAddress(picture, 4096)), 4096);
    EXPECT_EQ(FirstRowOfWindow(picture), 4094);
    EXPECT_EQ(NumberAt(RowAddress(picture, 4094)), 4094);
    EXPECT_EQ(FirstRowOfWindow(picture), 4094);
    EXPECT_EQ(NumberAt(RowAddress(picture, 4093)), 4093);
    EXPECT_EQ(FirstRowOfWindow(picture), 4091);
    EXPECT_EQ(NumberAt(RowAddress(picture, 1)), 1);
    EXPECT_EQ(FirstRowOfWindow(picture), 1);
    EXPECT_EQ(NumberAt(RowAddress(picture, 0)), 0);
    EXPECT_EQ(FirstRowOfWindow(picture), 0);
}

TEST_F(MappedStorage, TheLastWindowEndsWithThePicture) {
    const auto picture = MakeNumbered(10'000, 32 << 20);  // windows of 8192 rows
    EXPECT_EQ(NumberAt(RowAddress(picture, 9000)), 9000);
    EXPECT_EQ(FirstRowOfWindow(picture), 1808);
    EXPECT_EQ(NumberAt(RowAddress(picture, 9999)), 9999);
    EXPECT_EQ(FirstRowOfWindow(picture), 1808);
}

TEST_F(MappedStorage, RowsOfALowClipFarDownAreInItsWindow) {
    const auto picture = MakeNumbered(9000);
    const auto high = CallObject(picture, "ClipImage", 0, 4500, kPage, 4400);
    EXPECT_EQ(NumberAt(RowAddress(high, 0)), 4500);
    EXPECT_EQ(NumberAt(RowAddress(high, 4399)), 8899);
    EXPECT_EQ(FirstRowOfWindow(high), 8897) << "past the file's end, which is never touched";
    EXPECT_EQ(NumberAt(RowAddress(high, 4000)), 8500);
    const auto low = CallObject(picture, "ClipImage", 0, 8990, kPage, 10);
    for (int y = 0; y < 10; ++y) EXPECT_EQ(NumberAt(RowAddress(low, y)), 8990 + y);
    EXPECT_EQ(FirstRowOfWindow(low), 8988);
}

TEST_F(MappedStorage, AMirroredViewCountsRowsFromTheBottom) {
    const auto picture = MakeNumbered(4200);
    const auto mirrored = CallObject(picture, "MirroredView");
    EXPECT_EQ(FirstRowOfWindow(mirrored), 104) << "of the view's first row, the last of the file";
    for (int y : {0, 1, 2, 4199, 4198, 77, 4100}) EXPECT_EQ(NumberAt(RowAddress(mirrored, y)), 4199 - y);
    const auto upright = CallObject(mirrored, "MirroredView");
    EXPECT_EQ(FirstRowOfWindow(upright), 0);
    for (int y : {0, 1, 4199, 4100, 2}) EXPECT_EQ(NumberAt(RowAddress(upright, y)), y);
    const auto clip = CallObject(picture, "ClipImage", 0, 4100, kPage, 50);
    const auto mirroredClip = CallObject(clip, "MirroredView");
    for (int y : {0, 49, 7}) EXPECT_EQ(NumberAt(RowAddress(mirroredClip, y)), 4149 - y);
}

TEST_F(MappedStorage, RowsOutsideThePictureAreOutOfBounds) {
    const auto picture = MakeNumbered(3);
    EXPECT_EQ(RowAddress(picture, 3), nullptr) << "although the window reaches past it";
    EXPECT_EQ(TakeThrown().className, "OutOfBoundsException");
    EXPECT_EQ(RowAddress(picture, -1), nullptr);
    EXPECT_EQ(TakeThrown().className, "OutOfBoundsException");
}

TEST_F(MappedStorage, OneWindowAPictureIsMappedAtATime) {
    const auto picture = MakeNumbered(9000);
    for (int y : {0, 8999, 4000, 8000}) {
        RowAddress(picture, y);
        EXPECT_EQ(MappingsOf(path_), 1);
    }
    const auto view = CallObject(picture, "RedChannel");
    EXPECT_FALSE(view);
    const auto clip = CallObject(picture, "ClipImage");
    EXPECT_EQ(MappingsOf(path_), 2);
    Call(clip, "Close");
    EXPECT_EQ(MappingsOf(path_), 1);
    EXPECT_EQ(OpenDescriptorsOf(path_), 1);
    EXPECT_EQ(NumberAt(RowAddress(picture, 4000)), 4000);
}

TEST_F(MappedStorage, RowsStayInTheFileWhenTheWindowSlides) {
    const auto picture = Make(kFiveRowWidth, 13, kGray);
    const auto rowSize = GetInt(picture, "RowSize");
    for (int y = 12; y >= 0; --y) {
        std::uint8_t* row = RowAddress(picture, y);
        ASSERT_NE(row, nullptr);
        row[0] = static_cast<std::uint8_t>(y + 1);
        row[rowSize - 1] = static_cast<std::uint8_t>(y + 101);
    }
    for (int y = 0; y < 13; ++y) {
        EXPECT_EQ(ReadFile(path_, y * rowSize, 1)[0], y + 1);
        EXPECT_EQ(RowAddress(picture, y)[rowSize - 1], y + 101);
    }
}

TEST_F(MappedStorage, WindowsOfPictureAndViewsShowTheSamePixels) {
    const auto picture = Make(30, 7, kRGB);
    const auto clip = CallObject(picture, "ClipImage", 3, 2, 20, 4);
    RowAddress(picture, 2)[3 * 3] = 200;
    EXPECT_EQ(ByteAt(clip, 0, 0, GetInt(clip, "RedOffset")), 200);
    RowAddress(CallObject(picture, "GreenChannel"), 6)[1] = 99;
    EXPECT_EQ(ByteAt(picture, 0, 6, 1), 99);
}

// --- MappingBlockSize ------------------------------------------------------------------------

TEST_F(MappedStorage, SettingTheBlockSizeMapsRow0Anew) {
    const auto picture = MakeNumbered(9000);
    RowAddress(picture, 8000);
    Set(picture, "MappingBlockSize", Value(20 << 20));
    EXPECT_EQ(GetInt(picture, "MappingBlockSize"), 20 << 20);
    EXPECT_EQ(FirstRowOfWindow(picture), 0);
    EXPECT_EQ(NumberAt(RowAddress(picture, 5119)), 5119);
    EXPECT_EQ(FirstRowOfWindow(picture), 0) << "5120 rows";
    EXPECT_EQ(NumberAt(RowAddress(picture, 5120)), 5120);
    EXPECT_EQ(FirstRowOfWindow(picture), 9000 - 5120);
}

TEST_F(MappedStorage, AViewHasABlockSizeOfItsOwn) {
    const auto picture = MakeNumbered(9000, 20 << 20);
    const auto view = CallObject(picture, "ClipImage");
    EXPECT_EQ(GetInt(view, "MappingBlockSize"), 20 << 20);
    Set(view, "MappingBlockSize", Value(0));
    EXPECT_EQ(GetInt(view, "MappingBlockSize"), kLeastWindow);
    EXPECT_EQ(GetInt(picture, "MappingBlockSize"), 20 << 20);
    EXPECT_EQ(NumberAt(RowAddress(view, 8999)), 8999);
    EXPECT_EQ(FirstRowOfWindow(view), 9000 - 4096);
}

TEST_F(MappedStorage, SettingTheBlockSizeOfAPictureInMemoryKeepsItsPixels) {
    const auto picture = New("PictureTQX", 10, 3, kRGB);
    FillRandom(picture, 4);
    const Bytes pixels = ReadPixels(picture);
    Set(picture, "MappingBlockSize", Value(100));
    EXPECT_EQ(GetInt(picture, "MappingBlockSize"), kPage);
    EXPECT_FALSE(GetBool(picture, "IsMapping"));
    EXPECT_EQ(ReadPixels(picture), pixels);
    EXPECT_EQ(ReadPixels(CallObject(picture, "MirroredView")).size(), pixels.size());
    EXPECT_EQ(ReadPixels(CallObject(picture, "Clone")), pixels);
}

TEST_F(MappedStorage, SettingTheBlockSizeWithoutARowSizeChangesNothing) {
    const auto unmade = NewWith("PictureTQX", {Value(-1), Value(-1), Value(kRGB)});
    Set(unmade, "MappingBlockSize", Value(1 << 25));
    EXPECT_EQ(GetInt(unmade, "MappingBlockSize"), 0);
    const auto block = MakeBlock(400);
    const auto backwards = New("PictureTQX", block, 10, 4, kGray, -10);
    Set(backwards, "MappingBlockSize", Value(1 << 25));
    EXPECT_EQ(GetInt(backwards, "MappingBlockSize"), 0);
}

TEST_F(MappedStorage, SettingTheBlockSizeOfAClosedPictureMapsNothing) {
    const auto picture = Make(10, 10, kRGB);
    const auto view = CallObject(picture, "ClipImage");
    Call(picture, "Close");
    Set(picture, "MappingBlockSize", Value(1 << 25));
    Set(view, "MappingBlockSize", Value(1 << 25));
    EXPECT_EQ(MappingsOf(path_), 0);
    EXPECT_EQ(RowAddress(picture, 0), nullptr);
    EXPECT_EQ(RowAddress(view, 0), nullptr);
}

// --- Empty pictures --------------------------------------------------------------------------

TEST_F(MappedStorage, APictureOfNoPixelsIsValidAndHasNothingToRead) {
    for (const auto& [width, height] : {std::pair(0, 5), std::pair(5, 0), std::pair(0, 0)}) {
        const auto picture = Make(width, height, kRGB);
        EXPECT_EQ(GetInt(picture, "TotalSize"), 0);
        Set(picture, "MappingBlockSize", Value(1));
        EXPECT_TRUE(TextBytes(Call(picture, "DataStringInFormat", kRGB)).empty());
        EXPECT_EQ(CallObject(picture, "RowInFormat", 0, kRGB), nullptr);
        TakeThrown();
        for (const char* view : {"ClipImage", "MirroredView", "RedChannel", "RGBChannels"})
            EXPECT_TRUE(GetBool(CallObject(picture, view), "Valid"));
        CallObject(picture, "GammaFilter", nullptr, 2.2);
    }
}

TEST_F(MappedStorage, AClipBesideThePictureIsWorkedOnLikeOneInMemory) {
    const auto mapped = Make(10, 10, kRGB);
    const auto memory = New("PictureTQX", 10, 10, kRGB);
    for (const auto& [x, y] : {std::pair(15, 0), std::pair(0, 15), std::pair(15, 15), std::pair(10, 10)}) {
        const auto ofMapped = CallObject(mapped, "ClipImage", x, y, 5, 5);
        const auto ofMemory = CallObject(memory, "ClipImage", x, y, 5, 5);
        EXPECT_EQ(GetInt(ofMapped, "Width"), GetInt(ofMemory, "Width"));
        EXPECT_EQ(GetInt(ofMapped, "Height"), GetInt(ofMemory, "Height"));
        const auto destination = New("PictureTQX", 10, 10, kRGB);
        EXPECT_EQ(CallObject(ofMapped, "GammaFilter", destination, 2.2) != nullptr,
                  CallObject(ofMemory, "GammaFilter", destination, 2.2) != nullptr)
            << x << ", " << y;
    }
}

// --- Copies and blocks -----------------------------------------------------------------------

TEST_F(MappedStorage, CanNotBeCloned) {
    const auto picture = Make(10, 10, kRGB);
    EXPECT_EQ(CallObject(picture, "Clone"), nullptr);
    EXPECT_EQ(CallObject(CallObject(picture, "ClipImage"), "Clone"), nullptr);
}

TEST_F(MappedStorage, MemoryIsTheWindowAndRawRowLiesInIt) {
    const auto picture = MakeNumbered(4200);
    const auto window = GetObject(picture, "Memory");
    EXPECT_EQ(RowAddress(picture, 7), BlockAddress(window) + 7 * kPage);
    *(RowAddress(picture, 7) + 5) = 55;
    EXPECT_EQ(ReadFile(path_, 7 * kPage + 5, 1)[0], 55);
}

// --- Close -----------------------------------------------------------------------------------

TEST_F(MappedStorage, CloseDeletesTheFile) {
    const auto picture = Make(10, 10, kRGB);
    Call(picture, "Close");
    ExpectNothingLeft();
    EXPECT_TRUE(GetBool(picture, "Valid"));
    EXPECT_EQ(GetInt(picture, "TotalSize"), 10 * kPage);
    EXPECT_EQ(RowAddress(picture, 0), nullptr);
    EXPECT_EQ(GetObject(picture, "Memory"), nullptr);
    { std::ofstream(path_) << "another's"; }
    Call(picture, "Close");
    EXPECT_EQ(ReadFile(path_, 0, 9).size(), 9U) << "a second Close does nothing";
    std::filesystem::remove(path_);
}

TEST_F(MappedStorage, TheLastReferenceDeletesTheFile) {
    { const auto picture = Make(10, 10, kRGB); }
    ExpectNothingLeft();
}

TEST_F(MappedStorage, AViewKeepsTheFile) {
    auto picture = Make(10, 10, kRGB);
    FillRandom(picture, 5);
    const Bytes pixels = ReadPixels(picture);
    auto view = CallObject(CallObject(picture, "ClipImage"), "MirroredView");
    picture = nullptr;
    EXPECT_TRUE(std::filesystem::exists(path_));
    EXPECT_EQ(ReadPixels(CallObject(view, "MirroredView")), pixels);
    view = nullptr;
    ExpectNothingLeft();
}

TEST_F(MappedStorage, ViewsOfAClosedPictureHaveNoRowsAndTouchNoPages) {
    const auto picture = Make(10, 10, kRGB);
    const auto clip = CallObject(picture, "ClipImage", 1, 1, 5, 5);
    const auto red = CallObject(clip, "RedChannel");
    const auto mirrored = CallObject(picture, "MirroredView");
    EXPECT_EQ(MappingsOf(path_), 4);
    Call(picture, "Close");
    for (const auto& view : {clip, red, mirrored}) {
        EXPECT_EQ(RowAddress(view, 0), nullptr);
        EXPECT_EQ(GetObject(view, "Memory"), nullptr);
        EXPECT_EQ(CallObject(view, "Row", 0), nullptr);
        CallObject(view, "GammaFilter", nullptr, 2.2);
        const auto viewOfView = CallObject(view, "ClipImage");
        EXPECT_EQ(RowAddress(viewOfView, 0), nullptr);
        Call(view, "Close");
    }
    ExpectNothingLeft();
}

TEST_F(MappedStorage, AViewOfAClosedPictureDoesNotReachAnotherFileOfTheSameDescriptor) {
    const auto picture = Make(10, 10, kRGB);
    const auto view = CallObject(picture, "ClipImage");
    Call(picture, "Close");
    const auto other = Make(10, 10, kRGB);  // most likely gets the same descriptor
    Set(view, "MappingBlockSize", Value(0));
    EXPECT_EQ(RowAddress(view, 3), nullptr);
    EXPECT_EQ(MappingsOf(path_), 1);
    Call(view, "Close");
    FillRandom(other, 1);
}

TEST_F(MappedStorage, ViewsOfAClosedPictureAreEmpty) {
    const auto picture = Make(10, 10, kRGB);
    Call(picture, "Close");
    for (const char* name : {"ClipImage", "MirroredView", "RedChannel", "RGBChannels"}) {
        const auto view = CallObject(picture, name);
        ASSERT_TRUE(view) << name;
        EXPECT_EQ(RowAddress(view, 0), nullptr);
    }
}

}  // namespace
