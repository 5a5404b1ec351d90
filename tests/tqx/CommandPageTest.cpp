// The page that describes the command, against what the command says of itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>

#include "tests/support/Command.h"
#include "tests/support/Places.h"

namespace {

std::string Page() {
    std::ifstream page(support::SourceFolder() + "/docs/command.md");
    return {std::istreambuf_iterator<char>(page), {}};
}

// The long options in a help.
std::set<std::string> OptionsOf(const std::string& help) {
    static const std::regex option("--[a-z]+(-[a-z]+)*");
    return {std::sregex_token_iterator(help.begin(), help.end(), option), {}};
}

TEST(CommandPage, NamesEveryCommandAndOption) {
    const std::string page = Page();
    std::string help = RunCommand({"--help"}).out;
    for (const char* const command : {"run", "members", "check", "fuzz"}) {
        EXPECT_THAT(help, testing::HasSubstr(command));
        EXPECT_THAT(page, testing::HasSubstr(std::string("`tqx ") + command));
        help += RunCommand({command, "--help"}).out;
    }
    const std::set<std::string> options = OptionsOf(help);
    EXPECT_THAT(options,
                testing::IsSupersetOf({"--plugin", "--explain", "--max-pixels", "--no-orientation", "--json"}));
    for (const std::string& option : options) EXPECT_THAT(page, testing::HasSubstr(option));
    EXPECT_THAT(page, testing::HasSubstr("TQX_PLUGIN"));
}

TEST(CommandPage, GivesTheLimitThatTheCommandHas) {
    EXPECT_THAT(RunCommand({"run", "--help"}).out, testing::HasSubstr("268435456"));
    EXPECT_THAT(Page(), testing::HasSubstr("268435456"));
}

}  // namespace
