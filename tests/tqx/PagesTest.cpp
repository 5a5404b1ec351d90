// Every script that the pages show runs, and does something to the photograph.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "tests/support/Command.h"
#include "tests/support/Places.h"

namespace {

namespace fs = std::filesystem;

const fs::path kSite = fs::path(support::SourceFolder()) / "site";

// The photograph of examples/, twice as wide and high, so that rectangles of the scripts fit.
constexpr const char* kEnlarge = R"(
Dim photo As New PictureTQX(GetFolderItem(App.Arguments(0)).OpenAsPicture)
Dim result As New PictureTQX(480, 270, PictureTQX.ImageFormatRGB)
If Not result.ScaleFast(photo, 480, 270) Then Quit(1)
GetFolderItem(App.Arguments(1)).SaveAsPicture(result.CopyPicture)
)";

std::string BytesOf(const fs::path& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

class Pages : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = fs::temp_directory_path() / ("tqx-pages-test-" + std::to_string(getpid()));
        fs::remove_all(folder_);
        fs::create_directories(folder_);
        std::ofstream(folder_ / "enlarge.rbs") << kEnlarge;
        Run({(folder_ / "enlarge.rbs").string(), support::SourceFolder() + "/examples/photos/seeds.jpg", Photo()});
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string Photo() const { return (folder_ / "photo.png").string(); }
    std::string Result() const { return (folder_ / "result.png").string(); }

    static std::string Run(std::vector<std::string> words) {
        words.insert(words.begin(), "run");
        const Outcome outcome = RunCommand(words);
        EXPECT_EQ(outcome.exitCode, 0) << words[1] << '\n' << outcome.err << outcome.out;
        return outcome.out;
    }

    // Runs a script on the photograph; the result must be another picture.
    void ExpectChange(const fs::path& script, const std::vector<std::string>& more = {}) {
        fs::remove(Result());
        std::vector<std::string> words = {script.string(), Photo(), Result()};
        words.insert(words.end(), more.begin(), more.end());
        Run(words);
        ASSERT_TRUE(fs::exists(Result())) << script;
        EXPECT_NE(BytesOf(Result()), BytesOf(Photo())) << script;
    }

    fs::path folder_;
};

TEST_F(Pages, EveryScriptOfTheGalleryShowsItsMember) {
    std::size_t count = 0;
    for (const auto& entry : fs::directory_iterator(kSite / "gallery")) {
        ++count;
        ExpectChange(entry.path());
        const std::string member = entry.path().stem().string();
        EXPECT_THAT(BytesOf(entry.path()), testing::HasSubstr('.' + member)) << entry.path();
        EXPECT_TRUE(BytesOf(entry.path()).starts_with("' ")) << entry.path();
    }
    EXPECT_GT(count, 40u);
}

// Members whose names say that they only ask, copy for the host or make pictures.
const std::set<std::string> kChangeNothing = {
    "AlphaChannel",     "Clone",       "Close",       "Constructor",         "CopyGWorld",       "CopyMask",
    "CopyPicture",      "GrayChannel", "RGBChannels", "CopyPictureWithMask", "CreatePictureTQX", "DataStringInFormat",
    "RowStringInFormat"};

TEST_F(Pages, EveryMemberThatChangesPixelsIsInTheGallery) {
    const std::string listed = RunCommand({"members", "PictureTQX"}).out;
    std::istringstream lines(listed.substr(listed.find("\nMethods\n") + 9));
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line) && !line.empty();) {
        const std::string name = line.substr(2, line.find_first_of("( ", 2) - 2);
        if (line[2] == ' ' || kChangeNothing.contains(name)) continue;
        ++count;
        EXPECT_TRUE(fs::exists(kSite / "gallery" / (name + ".rbs"))) << name;
        EXPECT_THAT(BytesOf(kSite / "make_pages.py"), testing::ContainsRegex("[\" ]" + name + "[\" ]")) << name;
    }
    EXPECT_GT(count, 40u);
}

TEST_F(Pages, FiguresAreMadeForEveryKernelMatrixAndFormat) {
    for (int kernel = 0; kernel <= 7; ++kernel)
        ExpectChange(kSite / "figures" / "kernels.rbs", {std::to_string(kernel)});
    for (int matrix = 1; matrix <= 10; ++matrix)
        ExpectChange(kSite / "figures" / "dither.rbs", {std::to_string(matrix)});
    EXPECT_THAT(Run({(kSite / "figures" / "formats.rbs").string()}), testing::HasSubstr("\n4 4 1 2 3 -1 0\n"));
}

// What stands between ```vb and ``` on a page, in order.
std::vector<std::string> ScriptsOn(const fs::path& page) {
    std::vector<std::string> scripts;
    const std::string text = BytesOf(page);
    for (std::size_t at = text.find("```vb\n"); at != std::string::npos; at = text.find("```vb\n", at)) {
        at += 6;
        scripts.push_back(text.substr(at, text.find("```", at) - at));
    }
    return scripts;
}

// What stands behind the lines that print.
std::string PrintedBy(const std::string& script) {
    std::istringstream lines(script);
    std::string printed;
    for (std::string line; std::getline(lines, line);)
        if (const std::size_t mark = line.find(" ' "); mark != std::string::npos)
            printed += line.substr(mark + 3) + '\n';
    return printed;
}

TEST_F(Pages, EveryPieceOfTheTourPrintsWhatItSays) {
    const std::vector<std::string> pieces = ScriptsOn(kSite / "pages" / "tour.md");
    EXPECT_GE(pieces.size(), 12u);
    for (const std::string& piece : pieces) {
        std::ofstream(folder_ / "piece.rbs") << piece;
        EXPECT_EQ(Run({(folder_ / "piece.rbs").string()}), PrintedBy(piece)) << piece;
    }
}

TEST_F(Pages, EveryStepOfTheTutorialRuns) {
    const std::vector<std::string> steps = ScriptsOn(kSite / "pages" / "tutorial.md");
    ASSERT_EQ(steps.size(), 6u);
    const fs::path photos = folder_ / "photos";
    fs::create_directories(photos);
    fs::copy(support::SourceFolder() + "/examples/photos/seeds.jpg", folder_ / "photo.jpg");
    fs::copy(folder_ / "photo.jpg", photos);
    std::ofstream(photos / "broken.jpg") << "no picture";
    const fs::path before = fs::current_path();
    fs::current_path(folder_);
    for (const std::string& step : steps) {
        std::ofstream(folder_ / "step.rbs") << step;
        Run({"step.rbs", "photos"});
    }
    fs::current_path(before);
    for (const char* result :
         {"copy.png", "mirrored.jpg", "soft.jpg", "part.jpg", "small.jpg", "photos/level-photo.jpg"})
        EXPECT_TRUE(fs::exists(folder_ / result)) << result;
}

}  // namespace
