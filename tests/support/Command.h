// The command as a process of its own.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct Outcome {
    std::string out, err;
    int exitCode = -1;  // negative: the signal that ended it
    bool ended = true;  // by itself, in time
};

using OnOutput = std::function<void(int process, const Outcome&)>;

// Runs tqx with these words, on the plug-in of this build, and ends it after a minute. `onOutput`
// is called with the process's id whenever something was printed.
Outcome RunCommand(const std::vector<std::string>& words, const OnOutput& onOutput = {});

// The same with its standard input given.
Outcome RunCommandFed(const std::string& input, const std::vector<std::string>& words);

// The same with its standard output opened on a file, or closed where that is empty.
Outcome RunCommandInto(const std::string& file, const std::vector<std::string>& words);

// The same with its standard output a pipe that nobody reads from any more.
Outcome RunCommandWithoutReader(const std::vector<std::string>& words);

// The same with standard error on a terminal of its own; `err` is what that was sent.
Outcome RunCommandOnTerminal(const std::vector<std::string>& words);

// Runs tqx with all its streams on one terminal, typing the keys one after the other whenever it has
// been quiet for a moment; `out` is what the terminal was sent. The home folder is one of its own.
Outcome TypeToCommand(const std::vector<std::string>& words, const std::vector<std::string>& keys);

// Whether this machine has the pseudo-terminals that RunCommandOnTerminal needs.
bool HasTerminals();

std::vector<std::string> LinesOf(const std::string& text);
