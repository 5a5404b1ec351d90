// Scratch files of mapped pictures, as scripts leave them and fill them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/Command.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class ScratchFile : public testing::Test {
  protected:
    void SetUp() override { fs::create_directories(folder_ / "scratch"); }
    void TearDown() override { fs::remove_all(folder_); }

    // Runs a script that knows its folder and makes the mapped picture `p` of 40 × 30 pixels.
    Outcome Run(const std::string& rest) const {
        const fs::path script = folder_ / "script.rbs";
        std::ofstream(script) << "Dim folder As FolderItem = GetFolderItem(\"" << folder_.string() << "\")\n"
                              << "Dim p As New PictureTQX(40, 30, PictureTQX.ImageFormatRGB, 0, "
                              << "folder.Child(\"scratch\").Child(\"pixels\"))\n"
                              << rest;
        return RunCommand({"run", script.string()});
    }

    bool NothingLeft() const { return fs::is_empty(folder_ / "scratch"); }

    const fs::path folder_ = fs::temp_directory_path() / ("tqx-scratch-test-" + std::to_string(getpid()));
};

TEST_F(ScratchFile, IsThereWhileThePictureIs) {
    const Outcome outcome =
        Run("Dim f As FolderItem = folder.Child(\"scratch\").Child(\"pixels\")\n"
            "Print Str(f.Exists)\np = Nil\nPrint Str(f.Exists)\n");
    EXPECT_EQ(outcome.out, "True\nFalse\n") << outcome.err;
}

TEST_F(ScratchFile, IsGoneAtTheEndOfAScript) {
    EXPECT_EQ(Run("Print Str(p.IsMapping)\n").out, "True\n");
    EXPECT_TRUE(NothingLeft());
}

TEST_F(ScratchFile, IsGoneAfterQuit) {
    EXPECT_EQ(Run("Quit(3)\n").exitCode, 3);
    EXPECT_TRUE(NothingLeft());
}

TEST_F(ScratchFile, IsGoneAfterAnExceptionThatNobodyCaught) {
    const Outcome outcome = Run("Dim view As PictureTQX = p.MirroredView\nDim row As MemoryBlock = view.Row(30)\n");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("OutOfBoundsException"));
    EXPECT_TRUE(NothingLeft());
}

TEST_F(ScratchFile, OneNameServesPicturesOneAfterTheOther) {
    const Outcome outcome =
        Run("Dim f As FolderItem = folder.Child(\"scratch\").Child(\"pixels\")\n"
            "For i As Integer = 1 To 5\n"
            "  p = New PictureTQX(40 * i, 30, PictureTQX.ImageFormatRGB, 0, f)\n"
            "  p.FillRectRGB(&c010203)\n"
            "  Print Str(p.Valid) + EncodeHex(p.RowStringInFormat(29, 1).RightB(3))\n"
            "Next\n");
    EXPECT_EQ(outcome.out, "True010203\nTrue010203\nTrue010203\nTrue010203\nTrue010203\n") << outcome.err;
    EXPECT_TRUE(NothingLeft());
}

TEST_F(ScratchFile, IsFilledFromAnImageFileAndSavedToOne) {
    const Outcome outcome =
        Run("Dim made As New Picture(40, 30, 32)\n"
            "For y As Integer = 0 To 29\nFor x As Integer = 0 To 39\n"
            "made.RGBSurface.Pixel(x, y) = RGB(x * 6, y * 8, 255 - x)\nNext\nNext\n"
            "folder.Child(\"in.png\").SaveAsPicture(made)\n"
            "folder.Child(\"in.png\").OpenInto(p)\n"
            "p.Invert\n"
            "folder.Child(\"out.png\").SaveFrom(p)\n"
            "Dim q As New PictureTQX(folder.Child(\"out.png\").OpenAsPicture)\n"
            "Print EncodeHex(q.RowStringInFormat(29, 1).RightB(3))\n");
    EXPECT_EQ(outcome.out, "151727\n") << outcome.err;  // the inverse of 234, 232, 216
    EXPECT_TRUE(NothingLeft());
}

// What a process has for data, in KB: as a function of scripts.
constexpr const char* kDataSize =
    "Function DataSize() As Integer\n"
    "  Dim status As TextInputStream = TextInputStream.Open(GetFolderItem(\"/proc/self/status\"))\n"
    "  While Not status.EOF\n"
    "    Dim line As String = status.ReadLine\n"
    "    If line.Left(7) = \"VmData:\" Then Return Val(line.Mid(8))\n"
    "  Wend\n"
    "End Function\n";

#if !defined(__SANITIZE_ADDRESS__)
// Names of 200 letters: they alone would be 2 MB.
TEST_F(ScratchFile, OfTenThousandNamesNoneIsRemembered) {
    const Outcome outcome =
        Run(kDataSize + std::string("Dim tail As String, before As Integer\n"
                                    "For i As Integer = 1 To 20\n  tail = tail + \"abcdefghij\"\nNext\n"
                                    "For i As Integer = 1 To 11000\n"
                                    "  If i = 1000 Then before = DataSize\n"
                                    "  Dim q As New PictureTQX(9, 9, PictureTQX.ImageFormatRGB, 0, "
                                    "folder.Child(\"scratch\").Child(Str(i) + tail))\n"
                                    "Next\n"
                                    "Print DataSize - before\n"));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_LT(std::atoi(outcome.out.c_str()), 1000);
    EXPECT_TRUE(NothingLeft());
}
#endif

}  // namespace
