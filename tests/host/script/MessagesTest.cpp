// The table of messages: its page, and a script that ends with each.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>

#include "host/reference/Messages.h"
#include "host/script/Script.h"
#include "tests/support/Interpose.h"
#include "tests/support/Places.h"
#include "tests/support/PluginFixture.h"

namespace {

// "path:2:7: Class: message" of a script that ends so; empty for any other end.
std::string EndOf(std::string_view text) {
    std::string told;
    script::RunOptions options;
    options.print = [](std::string_view) {};
    options.complain = [&](std::string_view message) { told += message; };
    script::RunScript({"script", std::string(text) + '\n'}, options);
    const std::string line = told.substr(0, told.find('\n'));
    const std::size_t at = line.find(": ");
    return at == std::string::npos ? told : line.substr(at + 2);
}

class Messages : public support::PluginTest {};

TEST_F(Messages, AreEachReachedByTheirScript) {
    for (const host::MessageRow& row : host::MessageRows()) {
        std::unique_ptr<support::FailingAllocations> starvation;
        if (row.text == "There is not enough memory.")
            starvation = std::make_unique<support::FailingAllocations>(64 << 20);
        const std::string end = EndOf(row.example), begin = std::string(row.exception) + ": ";
        ASSERT_TRUE(end.starts_with(begin)) << row.text << "\n" << end;
        EXPECT_TRUE(host::Matches(row.text, std::string_view(end).substr(begin.size()))) << row.text << "\n" << end;
        for (const host::MessageRow& other : host::MessageRows()) {
            const bool same = &other == &row || other.exception != row.exception;
            EXPECT_TRUE(same || !host::Matches(other.text, std::string_view(end).substr(begin.size())))
                << other.text << "\n"
                << end;
        }
    }
}

TEST_F(Messages, MatchWithAnythingForAGap) {
    constexpr std::string_view text = "Row … of … can't be had.";
    EXPECT_TRUE(host::Matches(text, "Row 3 of 4 can't be had."));
    EXPECT_FALSE(host::Matches(text, "Row 3 of 4 can't be had. No"));
    EXPECT_FALSE(host::Matches(text, "The Row 3 of 4 can't be had."));
    EXPECT_FALSE(host::Matches(text, "Row 3 can't be had."));
}

// The longest text in each call that raises an exception with a text of its own.
std::vector<std::string> TextsRaisedIn(const std::string& source) {
    static const std::regex call("(Fail|FailBounds|RaiseException)\\([^;]*;"), literal("\"([^\"\\\\]*)\"");
    std::vector<std::string> texts;
    for (std::sregex_iterator at(source.begin(), source.end(), call), end; at != end; ++at) {
        const std::string arguments = at->str();
        std::string longest;
        for (std::sregex_iterator text(arguments.begin(), arguments.end(), literal); text != end; ++text)
            if ((*text)[1].length() > static_cast<long>(longest.size()) && !(*text)[1].str().ends_with("Exception"))
                longest = (*text)[1];
        if (longest.size() > 6) texts.push_back(longest);
    }
    return texts;
}

// What the framework can say, but for what no script gets it to.
TEST_F(Messages, KnowAllTextsOfTheFramework) {
    const std::vector<std::string> beyondScripts = {
        "The block of a row was made smaller.", " has no constant ",      "This folder item has no path.",
        "The system can't convert to ",         "There is no font file ", ": is no font"};
    std::vector<std::string> unknown;
    for (const auto& entry : std::filesystem::directory_iterator(support::SourceFolder() + "/host/framework")) {
        std::ifstream file(entry.path());
        for (const std::string& text : TextsRaisedIn({std::istreambuf_iterator<char>(file), {}})) {
            const auto has = [&](std::string_view known) { return known.find(text) != std::string_view::npos; };
            bool known = std::any_of(beyondScripts.begin(), beyondScripts.end(), has);
            for (const host::MessageRow& row : host::MessageRows()) known = known || has(row.text);
            if (!known) unknown.push_back(entry.path().filename().string() + ": " + text);
        }
    }
    EXPECT_THAT(unknown, testing::IsEmpty()) << "add these to host/reference/Messages.cpp";
}

TEST_F(Messages, StandOnThePageAsInTheTable) {
    std::ifstream file(support::SourceFolder() + "/docs/messages.md");
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    const std::string made = host::MessagesPage();
    if (std::getenv("TQX_WRITE_MESSAGES")) std::ofstream(support::SourceFolder() + "/docs/messages.md") << made;
    EXPECT_EQ(page, made) << "TQX_WRITE_MESSAGES=1 writes the page";
}

}  // namespace
