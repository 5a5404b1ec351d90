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

// Runs tqx with these words, on the plug-in of this build, and ends it after a minute. `onOutput`
// is called with the process's id whenever something was printed.
Outcome RunCommand(const std::vector<std::string>& words,
                   const std::function<void(int process, const Outcome&)>& onOutput = {});

// The same with standard error on a terminal of its own; `err` is what that was sent.
Outcome RunCommandOnTerminal(const std::vector<std::string>& words);

std::vector<std::string> LinesOf(const std::string& text);
