// The manual's page, against what the command says of itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "tests/support/Places.h"
#include "tests/tqx/Help.h"

namespace {

// The page's source without the escapes of dashes.
std::string ManPage() {
    std::ifstream page(support::SourceFolder() + "/tqx/tqx.1.in");
    const std::string text(std::istreambuf_iterator<char>(page), {});
    return std::regex_replace(text, std::regex(R"(\\-)"), "-");
}

// What stands behind a heading that begins with these words, up to the next one.
std::string SectionOf(const std::string& heading) {
    const std::string page = ManPage();
    const std::size_t start = std::min(page.find(heading + ' '), page.find(heading + '\n'));
    if (start == std::string::npos) return "";
    return page.substr(start, page.find("\n.S", start + heading.size()) - start);
}

// The options that have a paragraph of their own in a section.
std::set<std::string> OptionsIn(const std::string& section) {
    std::set<std::string> options;
    for (const std::string& line : AllMatches(section, "\n\\.TP\n(\\.B[^\n]*)")) {
        const auto names = AllMatches(line, "(--?[a-z][a-z-]*)");
        options.insert(names.begin(), names.end());
    }
    return options;
}

TEST(ManPage, NamesEveryCommandAndItsOptionsAndNoOthers) {
    const std::set<std::string> commands = CommandsInHelp();
    EXPECT_THAT(commands, testing::IsSupersetOf({"run", "members", "check", "fuzz"}));
    EXPECT_EQ(OptionsIn(SectionOf(".SH OPTIONS")), OptionsInHelp(""));
    for (const std::string& command : commands) {
        std::set<std::string> options = OptionsInHelp(command);
        EXPECT_EQ(options.erase("--help") + options.erase("-h"), 2u) << "stands once for all, at the top";
        EXPECT_NE(SectionOf(".SS tqx " + command), "") << command;
        EXPECT_EQ(OptionsIn(SectionOf(".SS tqx " + command)), options) << command;
    }
    EXPECT_EQ(AllMatches(ManPage(), "\n\\.SS tqx ([a-z-]+)").size(), commands.size());
}

TEST(ManPage, NamesWhatTheEnvironmentSays) {
    EXPECT_THAT(SectionOf(".SH ENVIRONMENT"), testing::HasSubstr("TQX_PLUGIN"));
    EXPECT_THAT(SectionOf(".SH ENVIRONMENT"), testing::HasSubstr("TQX_CPU_LEVEL"));
}

}  // namespace
