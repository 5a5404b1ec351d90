// What README.md shows and says is so.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/Places.h"
#include "tests/tqx/Help.h"

namespace {

namespace fs = std::filesystem;

const fs::path kSource = support::SourceFolder();

// From the package of photographs that the tests install; Debian's and those made from it have it here.
const fs::path kPhotograph = "/usr/share/backgrounds/seeding_by_Clements_Engelhardt.jpg";

std::string BytesOf(const fs::path& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

std::string Readme() { return BytesOf(kSource / "README.md"); }

std::string ScriptInReadme() {
    const std::string text = Readme();
    const std::size_t start = text.find("```vb\n") + 6;
    return text.substr(start, text.find("```", start) - start);
}

class ReadmePictures : public testing::Test {
  protected:
    void SetUp() override {
        fs::create_directories(folder_);
        before_ = fs::current_path();
        fs::current_path(folder_);
    }
    void TearDown() override {
        fs::current_path(before_);
        fs::remove_all(folder_);
    }

    static void Run(const std::vector<std::string>& words) {
        const Outcome outcome = RunCommand(words);
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err << outcome.out;
    }

    const fs::path folder_ = fs::temp_directory_path() / ("tqx-readme-test-" + std::to_string(getpid()));
    fs::path before_;
};

TEST_F(ReadmePictures, ShowsWhatItsScriptMakes) {
    if (!fs::exists(kPhotograph)) GTEST_SKIP() << "the photograph is not installed";
    Run({"run", (kSource / "site/figures/photo.rbs").string(), kPhotograph.string(), "photo.jpg", "720"});
    std::ofstream("script.rbs") << ScriptInReadme();
    Run({"run", "script.rbs"});
    EXPECT_EQ(BytesOf("result.jpg"), BytesOf(kSource / "docs/result.jpg")) << "tools/readme_pictures.sh makes it anew";
}

TEST_F(ReadmePictures, ShowsTheStripThatItsScriptMakes) {
    if (!fs::exists(kPhotograph)) GTEST_SKIP() << "the photograph is not installed";
    Run({"run", (kSource / "site/figures/strip.rbs").string(), kPhotograph.string(), "strip.jpg"});
    EXPECT_EQ(BytesOf("strip.jpg"), BytesOf(kSource / "docs/strip.jpg")) << "tools/readme_pictures.sh makes it anew";
}

TEST(Readme, CountsWhatThereIs) {
    EXPECT_THAT(Readme(), testing::HasSubstr(std::to_string(ChecksThatThereAre().size()) + " checks"));
    std::set<std::string> formats;  // several names may mean one
    const std::string members = RunCommand({"members", "PictureTQX"}).out;
    for (const std::string& number : AllMatches(members, "ImageFormat\\w+ = (\\d+)")) formats.insert(number);
    EXPECT_THAT(Readme(), testing::HasSubstr(std::to_string(formats.size()) + " byte layouts"));
}

TEST(Readme, LinksToWhatThereIs) {
    const std::vector<std::string> links = AllMatches(Readme(), R"re((?:\]\(|src=")([^)"#]+))re");
    EXPECT_GT(links.size(), 15u);
    for (const std::string& link : links) EXPECT_TRUE(fs::exists(kSource / link)) << link;
    for (const std::string& tool : AllMatches(Readme(), R"(`\.?/?((?:tools/)?\w+\.sh))"))
        EXPECT_TRUE(fs::exists(kSource / tool)) << tool;
}

}  // namespace
