// Runs every script below tests/scripts with the command, each in a process of its own, and
// compares what it prints with what its comments expect:
//
//   Print 1 + 1        ' expect: 2            the lines of standard output, in order of the file
//   x = "text"         ' expect error: wants  a message of standard error for this very line
//   ' expect note: text                       a message of standard error without a line
//   ' expect exit: 3                          the exit code; else 1 with an error and 0 without
//   ' arguments: a b                          arguments of the script
//
// A script that leaves an object alive fails by its exit code; one that hangs is ended.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

struct Expectation {
    std::vector<std::string> lines;
    std::vector<std::pair<int, std::string>> errors;
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

struct Outcome {
    std::string out, err;
    int exitCode = -1;
    bool ended = true;  // by itself, in time
};

// Reads both pipes until they close or the time is over.
bool Drain(int out, int err, Outcome& outcome) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::seconds(60);
    pollfd pipes[] = {{out, POLLIN, 0}, {err, POLLIN, 0}};
    std::string* texts[] = {&outcome.out, &outcome.err};
    int open = 2;
    while (open > 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0 || poll(pipes, 2, static_cast<int>(left)) <= 0) return false;
        for (int i = 0; i < 2; ++i) {
            if (pipes[i].fd < 0 || !pipes[i].revents) continue;
            char buffer[4096];
            const ssize_t count = read(pipes[i].fd, buffer, sizeof(buffer));
            if (count > 0) {
                texts[i]->append(buffer, static_cast<std::size_t>(count));
            } else {
                pipes[i].fd = -1;
                --open;
            }
        }
    }
    return true;
}

Outcome RunCommand(const std::vector<std::string>& words) {
    int out[2], err[2];
    if (pipe(out) != 0 || pipe(err) != 0) return {};
    std::vector<char*> argv;
    for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        dup2(out[1], STDOUT_FILENO);
        dup2(err[1], STDERR_FILENO);
        for (const int end : {out[0], out[1], err[0], err[1]}) close(end);
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(out[1]);
    close(err[1]);
    Outcome outcome;
    outcome.ended = Drain(out[0], err[0], outcome);
    if (!outcome.ended) kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    close(out[0]);
    close(err[0]);
    return outcome;
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

std::vector<fs::path> ScriptsBelow(const fs::path& folder) {
    std::vector<fs::path> scripts;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.path().extension() == ".rbs") scripts.push_back(entry.path());
    std::sort(scripts.begin(), scripts.end());
    return scripts;
}

const fs::path kFolder = fs::path(TQX_SOURCE_DIR) / "tests" / "scripts";

class ScriptFile : public testing::TestWithParam<fs::path> {};

TEST_P(ScriptFile, PrintsWhatItExpects) {
    const fs::path path = GetParam();
    const Expectation expected = ReadExpectation(path);
    std::vector<std::string> words = {std::string(TQX_BINARY_DIR) + "/bin/tqx", "--plugin", TQX_PLUGIN_PATH, "run",
                                      path.string()};
    words.insert(words.end(), expected.arguments.begin(), expected.arguments.end());
    const Outcome outcome = RunCommand(words);
    ASSERT_TRUE(outcome.ended) << "the script did not end in time; so far it printed\n" << outcome.out;
    EXPECT_THAT(LinesOf(outcome.out), testing::ElementsAreArray(expected.lines));
    EXPECT_EQ(outcome.exitCode, expected.exitCode) << outcome.err;
    std::size_t places = 0;
    for (const std::string& line : LinesOf(outcome.err))
        places += line.starts_with(path.string() + ':') && line.find(": objects ") == std::string::npos;
    for (const auto& [number, text] : expected.errors) {
        bool found = false;
        for (const std::string& line : LinesOf(outcome.err)) {
            const bool here = line.starts_with(path.string() + ':' + std::to_string(number) + ':');
            found |= here && line.find(text) != std::string::npos;
        }
        EXPECT_TRUE(found) << "no error in line " << number << " with: " << text << "\n" << outcome.err;
    }
    EXPECT_EQ(places, expected.errors.size()) << outcome.err;
    for (const std::string& note : expected.notes) EXPECT_THAT(outcome.err, testing::HasSubstr(note));
    const bool silent = expected.errors.empty() && expected.notes.empty();
    EXPECT_TRUE(!silent || outcome.err.empty()) << outcome.err;
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptFile, testing::ValuesIn(ScriptsBelow(kFolder)), [](const auto& parameter) {
    std::string name = fs::relative(parameter.param, kFolder).replace_extension().string();
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
});

}  // namespace
