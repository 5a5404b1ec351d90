// Runs every script below tests/scripts with the command, each in a process of its own, and
// compares what it prints with what its comments expect:
//
//   Print 1 + 1        ' expect: 2            the lines of standard output, in order of the file
//   x = "text"         ' expect error: wants  a message of standard error for this very line
//   x = 300            ' expect warning: fit   a warning of standard error for this very line
//   ' expect note: text                       a message of standard error without a line
//   ' expect exit: 3                          the exit code; else 1 with an error and 0 without
//   ' arguments: a b                          arguments of the script
//
// A script that leaves an object alive fails by its exit code (--leaks); one that hangs is ended.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/Command.h"
#include "tests/support/Places.h"

namespace {

namespace fs = std::filesystem;

struct Expectation {
    std::vector<std::string> lines;
    std::vector<std::pair<int, std::string>> errors, warnings;
    std::vector<std::string> notes;
    std::vector<std::string> arguments;
    int exitCode = 0;
};

bool TakeMark(const std::string& line, const std::string& mark, std::string& rest) {
    const std::size_t at = line.find("' " + mark + ":");
    if (at == std::string::npos) return false;
    rest = line.substr(at + mark.size() + 3);
    if (rest.starts_with(' ')) rest.erase(0, 1);
    return true;
}

Expectation ReadExpectation(const fs::path& path) {
    Expectation expectation;
    std::ifstream file(path);
    std::string line, rest;
    bool exitGiven = false;
    for (int number = 1; std::getline(file, line); ++number) {
        if (TakeMark(line, "expect", rest)) expectation.lines.push_back(rest);
        if (TakeMark(line, "expect error", rest)) expectation.errors.emplace_back(number, rest);
        if (TakeMark(line, "expect warning", rest)) expectation.warnings.emplace_back(number, rest);
        if (TakeMark(line, "expect note", rest)) expectation.notes.push_back(rest);
        if (TakeMark(line, "arguments", rest)) {
            std::istringstream words(rest);
            for (std::string word; words >> word;) expectation.arguments.push_back(word);
        }
        if (TakeMark(line, "expect exit", rest)) {
            expectation.exitCode = std::stoi(rest);
            exitGiven = true;
        }
    }
    if (!exitGiven && !expectation.errors.empty()) expectation.exitCode = 1;
    return expectation;
}

std::vector<fs::path> ScriptsBelow(const fs::path& folder) {
    std::vector<fs::path> scripts;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.path().extension() == ".rbs") scripts.push_back(entry.path());
    std::sort(scripts.begin(), scripts.end());
    return scripts;
}

const fs::path kFolder = fs::path(support::SourceFolder()) / "tests" / "scripts";
const fs::path kPrograms = fs::path(support::SourceFolder()) / "examples" / "programs";

class ScriptFile : public testing::TestWithParam<fs::path> {};

TEST_P(ScriptFile, PrintsWhatItExpects) {
    const fs::path path = GetParam();
    const Expectation expected = ReadExpectation(path);
    std::vector<std::string> words = {"run", "--leaks", path.string()};
    words.insert(words.end(), expected.arguments.begin(), expected.arguments.end());
    const Outcome outcome = RunCommand(words);
    ASSERT_TRUE(outcome.ended) << "the script did not end in time; so far it printed\n" << outcome.out;
    EXPECT_THAT(LinesOf(outcome.out), testing::ElementsAreArray(expected.lines));
    EXPECT_EQ(outcome.exitCode, expected.exitCode) << outcome.err;
    const std::vector<std::string> told = LinesOf(outcome.err);
    const auto expectPlaces = [&](const auto& places, bool warnings) {
        std::size_t count = 0;
        for (const std::string& line : told) {
            const bool warning = line.find(": warning: ") != std::string::npos;
            const bool place = line.starts_with(path.string() + ':') && line.find(": objects ") == std::string::npos;
            count += place && warning == warnings;
        }
        for (const auto& [number, text] : places) {
            const std::string start = path.string() + ':' + std::to_string(number) + ':';
            const bool found = std::any_of(told.begin(), told.end(), [&](const std::string& line) {
                const bool warning = line.find(": warning: ") != std::string::npos;
                return line.starts_with(start) && warning == warnings && line.find(text) != std::string::npos;
            });
            EXPECT_TRUE(found) << "nothing told in line " << number << " with: " << text << "\n" << outcome.err;
        }
        EXPECT_EQ(count, places.size()) << outcome.err;
    };
    expectPlaces(expected.errors, false);
    expectPlaces(expected.warnings, true);
    for (const std::string& note : expected.notes) EXPECT_THAT(outcome.err, testing::HasSubstr(note));
    const bool silent = expected.errors.empty() && expected.warnings.empty() && expected.notes.empty();
    EXPECT_TRUE(!silent || outcome.err.empty()) << outcome.err;
}

std::string NameBelow(const fs::path& folder, const fs::path& script) {
    std::string name = fs::relative(script, folder).replace_extension().string();
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptFile, testing::ValuesIn(ScriptsBelow(kFolder)),
                         [](const auto& parameter) { return NameBelow(kFolder, parameter.param); });

INSTANTIATE_TEST_SUITE_P(Programs, ScriptFile, testing::ValuesIn(ScriptsBelow(kPrograms)),
                         [](const auto& parameter) { return NameBelow(kPrograms, parameter.param); });

}  // namespace
