// Starts the command, feeds it, listens to it, and measures it.
#include "tests/support/Command.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <utility>

#include "tests/support/Places.h"

namespace {

// Reads both ends until they close or the time is over. A terminal that closes ends with an error.
bool Drain(int out, int err, Outcome& outcome, const std::function<void()>& onOutput) {
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
                onOutput();
            } else {
                pipes[i].fd = -1;
                --open;
            }
        }
    }
    return true;
}

// What the process writes to, and where it is read.
struct Ends {
    int read = -1;
    int write = -1;
};

Ends MakePipe() {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) return {};
    return {ends[0], ends[1]};
}

Ends MakeTerminal() {
    Ends ends;
    if (openpty(&ends.read, &ends.write, nullptr, nullptr, nullptr) != 0) return {};
    return ends;
}

// A file of its own that is read from its beginning; -1 when it can't be made.
int FileOf(const std::string& text) {
    const int file = open("/tmp", O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (file < 0 || pwrite(file, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) return -1;
    return file;
}

// How the process is surrounded beside its words.
struct Surroundings {
    int input = -1;  // -1: that of the test
    Ends out, err;
    bool closedOut = false;
    OnOutput onOutput;
};

[[noreturn]] void Become(const std::vector<char*>& argv, const Surroundings& around) {
    if (around.input >= 0) dup2(around.input, STDIN_FILENO);
    dup2(around.out.write, STDOUT_FILENO);
    dup2(around.err.write, STDERR_FILENO);
    for (const int end : {around.out.read, around.out.write, around.err.read, around.err.write}) close(end);
    if (around.closedOut) close(STDOUT_FILENO);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    execv(argv[0], argv.data());
    _exit(127);
}

Outcome Run(const std::vector<std::string>& arguments, const Surroundings& around) {
    const auto& [input, out, err, closedOut, onOutput] = around;
    Outcome outcome;
    if (out.read < 0 || err.read < 0) return outcome;
    std::vector<std::string> words = {support::CommandFile(), "--plugin", support::PluginFile()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) Become(argv, around);
    close(out.write);
    close(err.write);
    outcome.ended = Drain(out.read, err.read, outcome, [&] {
        if (onOutput) onOutput(child, outcome);
    });
    if (!outcome.ended) kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    close(out.read);
    close(err.read);
    return outcome;
}

}  // namespace

Outcome RunCommand(const std::vector<std::string>& words, const OnOutput& onOutput) {
    return Run(words, {.out = MakePipe(), .err = MakePipe(), .onOutput = onOutput});
}

Outcome RunCommandFed(const std::string& input, const std::vector<std::string>& words) {
    const int file = FileOf(input);
    const Outcome outcome = Run(words, {.input = file, .out = MakePipe(), .err = MakePipe()});
    close(file);
    return outcome;
}

Outcome RunCommandInto(const std::string& file, const std::vector<std::string>& words) {
    Ends out = MakePipe();
    if (!file.empty()) {
        close(std::exchange(out.write, open(file.c_str(), O_WRONLY | O_CLOEXEC)));
    }
    return Run(words, {.out = out, .err = MakePipe(), .closedOut = file.empty()});
}

Outcome RunCommandWithoutReader(const std::vector<std::string>& words) {
    Ends out = MakePipe();
    const Ends unread = MakePipe();
    close(unread.read);
    close(std::exchange(out.write, unread.write));
    return Run(words, {.out = out, .err = MakePipe()});
}

Outcome RunCommandOnTerminal(const std::vector<std::string>& words) {
    return Run(words, {.out = MakePipe(), .err = MakeTerminal()});
}

namespace {

// A folder of its own as the home of the processes made meanwhile, in a terminal of full colours.
class OwnHome {
  public:
    OwnHome() {
        mkdtemp(folder_);
        setenv("HOME", folder_, 1);
        setenv("TERM", "xterm-256color", 1);
        setenv("COLORTERM", "truecolor", 1);
    }
    ~OwnHome() { std::filesystem::remove_all(folder_); }

  private:
    char folder_[32] = "/tmp/tqx-home-XXXXXX";
};

// Waits until the terminal is sent something, and then until it was quiet for a moment. False at
// its end.
bool ReadUntilQuiet(int terminal, std::string& text, int wait) {
    constexpr int kQuiet = 300;  // milliseconds
    for (pollfd waiting{terminal, POLLIN, 0}; poll(&waiting, 1, wait) > 0; wait = kQuiet) {
        char buffer[4096];
        const ssize_t count = read(terminal, buffer, sizeof(buffer));
        if (count <= 0) return false;
        text.append(buffer, static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace

Outcome TypeToCommand(const std::vector<std::string>& words, const std::vector<std::string>& keys) {
    constexpr int kLong = 20000;  // milliseconds
    const OwnHome home;
    Outcome outcome;
    std::vector<std::string> all = {support::CommandFile(), "--plugin", support::PluginFile()};
    all.insert(all.end(), words.begin(), words.end());
    std::vector<char*> argv;
    for (const std::string& word : all) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    winsize size{30, 100, 0, 0};
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
    if (child == 0) {
        execv(argv[0], argv.data());
        _exit(127);
    }
    bool open = ReadUntilQuiet(terminal, outcome.out, kLong);
    for (const std::string& key : keys) {
        if (!open || write(terminal, key.data(), key.size()) < 0) break;
        open = ReadUntilQuiet(terminal, outcome.out, key == keys.back() ? kLong : 1000);
    }
    outcome.ended = !open;
    if (open) kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    close(terminal);
    return outcome;
}

bool HasTerminals() {
    const Ends ends = MakeTerminal();
    close(ends.read);
    close(ends.write);
    return ends.read >= 0;
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}
