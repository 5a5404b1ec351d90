// What zsh offers behind words typed, against what the command says of itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/Places.h"
#include "tests/tqx/Help.h"
#include "tests/tqx/Shell.h"

namespace {

namespace fs = std::filesystem;

class ZshCompletion : public testing::Test {
  protected:
    void SetUp() override {
        if (LinesPrintedBy("command -v zsh").empty()) GTEST_SKIP() << "there is no zsh";
        if (!HasTerminals()) GTEST_SKIP() << "there are no pseudo-terminals";
    }
    void TearDown() override { fs::remove(cache_); }

    Words Offered(const std::string& typed) const {
        return LinesPrintedBy("zsh -f " + Quoted(support::SourceFolder() + "/tests/tqx/terminal/completions.zsh") +
                              " " + Quoted(support::SourceFolder() + "/tqx/completions") + " " +
                              Quoted(fs::path(support::CommandFile()).parent_path().string()) + " " + Quoted(cache_) +
                              " " + Quoted("tqx " + typed));
    }

    const std::string cache_ = fs::temp_directory_path() / ("tqx-completions-" + std::to_string(getpid()));
};

TEST_F(ZshCompletion, OffersEveryCommandAndOptionAndNoOthers) {
    EXPECT_EQ(Offered(""), CommandsInHelp());
    EXPECT_EQ(Offered("-"), OptionsInHelp(""));
    for (const std::string& command : CommandsInHelp())
        EXPECT_EQ(LongOnes(Offered(command + " -")), LongOnes(OptionsInHelp(command))) << command;
    EXPECT_THAT(Offered("run -"), testing::Contains("-e"));
}

TEST_F(ZshCompletion, OffersWhatFitsAnOption) {
    EXPECT_EQ(Offered("check --only "), ChecksThatThereAre());
    EXPECT_EQ(Offered("run " + support::SourceFolder() + "/exam"), Words{"examples"});
}

}  // namespace
