// Every program of examples/ runs on small pictures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include "tests/script/Command.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const fs::path kExamples = fs::path(TQX_SOURCE_DIR) / "examples";

// Two pictures and a text: a slope from dark red to light blue, and the same with one dot.
constexpr const char* kMakePictures = R"(
Dim folder As FolderItem = GetFolderItem(App.Arguments(0))
Dim p As New Picture(48, 32, 32)
For y As Integer = 0 To 31
  For x As Integer = 0 To 47
    p.RGBSurface.Pixel(x, y) = RGB(x * 5, y * 8, 255 - x * 5)
  Next
Next
folder.Child("slope.png").SaveAsPicture(p)
p.RGBSurface.Pixel(7, 9) = &cFFFFFF
folder.Child("dot.png").SaveAsPicture(p)
)";

class Examples : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = fs::temp_directory_path() / ("tqx-examples-test-" + std::to_string(getpid()));
        fs::remove_all(folder_);
        fs::create_directories(folder_ / "pictures");
        std::ofstream(folder_ / "make.rbs") << kMakePictures;
        std::ofstream(folder_ / "pictures" / "notes.txt") << "no picture";
        const Outcome made = RunCommand({"run", Path("make.rbs"), Path("pictures")});
        ASSERT_EQ(made.exitCode, 0) << made.err;
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string Path(const std::string& name) const { return (folder_ / name).string(); }

    // Runs an example on the slope; its last argument names the result, which must be there after.
    std::string Run(const std::string& example, const std::vector<std::string>& more = {}) {
        std::vector<std::string> words = {"run", (kExamples / example).string(), Path("pictures/slope.png"),
                                          Path("result.png")};
        words.insert(words.end(), more.begin(), more.end());
        const Outcome outcome = RunCommand(words);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err << outcome.out;
        EXPECT_EQ(outcome.err, "");
        EXPECT_TRUE(fs::exists(folder_ / "result.png"));
        return outcome.out;
    }

    // What a script of one line prints.
    std::string Printed(const std::string& expression) const {
        std::ofstream(folder_ / "line.rbs") << "Print " << expression << '\n';
        return RunCommand({"run", Path("line.rbs")}).out;
    }

    fs::path folder_;
};

TEST_F(Examples, EachBeginsWithWhatItShowsAndExplainsItself) {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(kExamples)) {
        if (entry.path().extension() != ".rbs") continue;
        ++count;
        std::ifstream file(entry.path());
        std::string line;
        std::getline(file, line);
        EXPECT_TRUE(line.starts_with("' ")) << entry.path();
        const Outcome outcome = RunCommand({"run", entry.path().string()});
        EXPECT_EQ(outcome.exitCode, 1) << entry.path();
        EXPECT_THAT(outcome.out, HasSubstr("Usage: tqx run " + entry.path().filename().string()));
    }
    EXPECT_GE(count, 13u);
}

TEST_F(Examples, Gamma) { EXPECT_THAT(Run("gamma.rbs"), HasSubstr("48 x 32 pixels in ")); }

TEST_F(Examples, ToneCurve) { EXPECT_EQ(Run("tone_curve.rbs", {"1"}), "128 became 128, 64 became 40\n"); }

TEST_F(Examples, Watermark) { EXPECT_EQ(Run("watermark.rbs"), "A ring of 8 pixels\n"); }

TEST_F(Examples, Unsharp) { EXPECT_EQ(Run("unsharp.rbs"), "Sharpened 48 x 32\n"); }

TEST_F(Examples, Dither) { EXPECT_THAT(Run("dither.rbs"), HasSubstr("% white\n")); }

TEST_F(Examples, Rotate) {
    if (Printed("New PictureTQX(2, 2, 1).Rotate(45, 0, 0, 0, 0, 0) Is Nil") != "False\n")
        GTEST_SKIP() << "this plug-in does not rotate";
    EXPECT_EQ(Run("rotate.rbs", {"30"}).substr(0, 15), "48 x 32 became ");
}

TEST_F(Examples, ResizeFolder) {
    if (Printed("New PictureTQX(2, 2, 1).Scale(New PictureTQX(4, 4, 1), Nil, 1, 2, 2)") != "True\n")
        GTEST_SKIP() << "this plug-in does not scale";
    const Outcome outcome =
        RunCommand({"run", (kExamples / "resize_folder.rbs").string(), Path("pictures"), Path("small"), "24"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(LinesOf(outcome.out), testing::UnorderedElementsAre("dot.png: 24 x 16", "slope.png: 24 x 16",
                                                                    "notes.txt is no picture", "2 pictures"));
    EXPECT_TRUE(fs::exists(folder_ / "small" / "slope.png"));
}

// The first pixel was blue and is red now.
TEST_F(Examples, ChannelSwap) { EXPECT_EQ(Run("channel_swap.rbs"), "&cFF0000\n"); }

TEST_F(Examples, MappedFactory) {
    EXPECT_EQ(Run("mapped_factory.rbs"), "In a file: True, pictures made: 1\n");
    for (const auto& entry : fs::directory_iterator(fs::temp_directory_path()))
        EXPECT_FALSE(entry.path().filename().string().starts_with("mapped_factory")) << entry.path();
}

TEST_F(Examples, Huge) {
    fs::create_directory(folder_ / "scratch");
    const Outcome outcome = RunCommand({"run", (kExamples / "huge.rbs").string(), "300", Path("scratch")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("Top left and bottom left: 6388A4 E0BA88\n"));
    EXPECT_TRUE(fs::is_empty(folder_ / "scratch"));
    const Outcome refused = RunCommand({"run", (kExamples / "huge.rbs").string(), "300", Path("missing")});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.out, HasSubstr("There is no room"));
}

TEST_F(Examples, Tiling) { EXPECT_THAT(Run("tiling.rbs", {"3"}), HasSubstr(" bytes in a file\n")); }

TEST_F(Examples, Histogram) {
    const Outcome outcome = RunCommand({"run", (kExamples / "histogram.rbs").string(), Path("pictures/slope.png")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    const std::vector<std::string> lines = LinesOf(outcome.out);
    ASSERT_EQ(lines.size(), 16u);
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(),
                            [](const std::string& line) { return line.ends_with(std::string(60, '#')); }));
}

TEST_F(Examples, Compare) {
    const std::string compare = (kExamples / "compare.rbs").string();
    EXPECT_EQ(RunCommand({"run", compare, Path("pictures/slope.png"), Path("pictures/slope.png")}).out,
              "The pictures are the same\n");
    EXPECT_EQ(RunCommand({"run", compare, Path("pictures/slope.png"), Path("pictures/dot.png")}).out,
              "1 pixels differ, by 220 at most, the first at 7, 9\n");
}

TEST_F(Examples, ContactSheet) {
    const Outcome outcome =
        RunCommand({"run", (kExamples / "contact_sheet.rbs").string(), Path("pictures"), Path("result.png")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.out, HasSubstr("2 pictures on 680 x 176 pixels\n"));
    EXPECT_TRUE(fs::exists(folder_ / "result.png"));
}

}  // namespace
