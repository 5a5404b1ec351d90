// Every program of examples/ runs on small pictures.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/Command.h"
#include "tests/support/Places.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

const fs::path kExamples = fs::path(support::SourceFolder()) / "examples";

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

constexpr const char* kPrintPixels = R"(
Dim p As Picture = GetFolderItem(App.Arguments(0)).OpenAsPicture
For y As Integer = 0 To p.Height - 1
  For x As Integer = 0 To p.Width - 1
    Dim c As Color = p.RGBSurface.Pixel(x, y)
    Print Str(c.Red) + " " + Str(c.Green) + " " + Str(c.Blue)
  Next
Next
)";

using Rgb = std::array<int, 3>;

// The slope's colour at a place that may lie between its pixels.
Rgb SlopeAt(double x, double y) {
    return {static_cast<int>(x * 5), static_cast<int>(y * 8), static_cast<int>(255 - x * 5)};
}

testing::Matcher<Rgb> Near(const Rgb& wanted, int distance = 3) {
    const auto component = [&](int value) {
        return testing::AllOf(testing::Ge(value - distance), testing::Le(value + distance));
    };
    return testing::ElementsAre(component(wanted[0]), component(wanted[1]), component(wanted[2]));
}

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

    // Every pixel of a picture, row by row.
    std::vector<Rgb> Pixels(const std::string& name) const {
        std::ofstream(folder_ / "pixels.rbs") << kPrintPixels;
        const Outcome outcome = RunCommand({"run", Path("pixels.rbs"), Path(name)});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        std::istringstream numbers(outcome.out);
        std::vector<Rgb> pixels;
        for (Rgb pixel; numbers >> pixel[0] >> pixel[1] >> pixel[2];) pixels.push_back(pixel);
        return pixels;
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

// Clear at the edge, opaque in the middle, half way where the border ends, and not inverted.
TEST_F(Examples, Transparency) {
    EXPECT_EQ(Run("transparency.rbs", {"8"}), "Alpha 0 at the edge, 141 at the border, 255 in the middle\n");
    const std::vector<Rgb> pixels = Pixels("result.png");
    ASSERT_EQ(pixels.size(), 48u * 32u);
    EXPECT_EQ(pixels[16 * 48 + 24], SlopeAt(24, 16));
}

TEST_F(Examples, Unsharp) { EXPECT_EQ(Run("unsharp.rbs"), "Sharpened 48 x 32\n"); }

TEST_F(Examples, Dither) { EXPECT_THAT(Run("dither.rbs"), HasSubstr("% white\n")); }

TEST_F(Examples, Rotate) {
    EXPECT_EQ(Run("rotate.rbs", {"90"}), "48 x 32 became 32 x 48\n");
    std::vector<Rgb> pixels = Pixels("result.png");
    ASSERT_EQ(pixels.size(), 32u * 48u);
    // A quarter turn puts the corners into corners.
    const std::vector<Rgb> corners = {pixels[0], pixels[31], pixels[47 * 32], pixels[47 * 32 + 31]};
    EXPECT_THAT(corners, testing::UnorderedElementsAre(SlopeAt(0, 0), SlopeAt(47, 0), SlopeAt(0, 31), SlopeAt(47, 31)));

    const std::string became = Run("rotate.rbs", {"30"});
    int width = 0, height = 0;
    ASSERT_EQ(std::sscanf(became.c_str(), "48 x 32 became %d x %d", &width, &height), 2) << became;
    EXPECT_NEAR(width, 58, 3);   // 48 cos 30° + 32 sin 30°
    EXPECT_NEAR(height, 52, 3);  // 48 sin 30° + 32 cos 30°
    pixels = Pixels("result.png");
    ASSERT_EQ(pixels.size(), static_cast<std::size_t>(width * height));
    EXPECT_THAT(pixels[0], Near({0x20, 0x40, 0x60}, 0));
    EXPECT_THAT(pixels.back(), Near({0x20, 0x40, 0x60}, 0));
    const auto center = static_cast<std::size_t>(height / 2 * width + width / 2);
    EXPECT_THAT(pixels[center], Near(SlopeAt(23.5, 15.5), 16));
}

TEST_F(Examples, ResizeFolder) {
    const Outcome outcome =
        RunCommand({"run", (kExamples / "resize_folder.rbs").string(), Path("pictures"), Path("small"), "24"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(LinesOf(outcome.out), testing::UnorderedElementsAre("dot.png: 24 x 16", "slope.png: 24 x 16",
                                                                    "notes.txt is no picture", "2 pictures"));
    const std::vector<Rgb> pixels = Pixels("small/slope.png");
    ASSERT_EQ(pixels.size(), 24u * 16u);
    for (int y = 3; y < 13; ++y)
        for (int x = 3; x < 21; ++x)
            EXPECT_THAT(pixels[static_cast<std::size_t>(y * 24 + x)], Near(SlopeAt(2 * x + 0.5, 2 * y + 0.5)))
                << x << ", " << y;
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

// Half the size of two by two tiles: the slope's every other pixel, four times.
TEST_F(Examples, Tiling) {
    EXPECT_EQ(Run("tiling.rbs", {"2"}), "262144 bytes in a file\n");
    const std::vector<Rgb> pixels = Pixels("result.png");
    ASSERT_EQ(pixels.size(), 48u * 32u);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 48; ++x)
            EXPECT_EQ(pixels[static_cast<std::size_t>(y * 48 + x)], SlopeAt(x % 24 * 2, y % 16 * 2)) << x << ", " << y;
}

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
    const std::vector<Rgb> pixels = Pixels("result.png");
    ASSERT_EQ(pixels.size(), 680u * 176u);
    const auto at = [&](int x, int y) { return pixels[static_cast<std::size_t>(y * 680 + x)]; };
    // Two cells have a picture of 160 x 106 pixels in their middle.
    int dots = 0;
    for (const int left : {8, 176}) {
        for (int y = 45; y < 130; y += 7)
            for (int x = left + 40; x < left + 150; x += 7)
                EXPECT_THAT(at(x, y), Near(SlopeAt((x - left + 0.5) * 0.3 - 0.5, (y - 35 + 0.5) * 32 / 106 - 0.5)))
                    << x << ", " << y;
        dots += at(left + 25, 35 + 31)[0] > 150;
    }
    EXPECT_EQ(dots, 1);
    const Rgb around = {0x30, 0x30, 0x30};
    for (int y = 0; y < 176; ++y)
        for (int x = 0; x < 680; ++x) {
            const bool inPicture = y >= 35 && y < 141 && ((x >= 8 && x < 168) || (x >= 176 && x < 336));
            EXPECT_EQ(at(x, y) == around, !inPicture) << x << ", " << y;
        }
}

}  // namespace
