// A script from its text to its exit code.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/script/Diagnostics.h"

namespace script {

struct Failure;
struct MemberObserver;

struct RunOptions {
    std::function<void(std::string_view)> print;     // each line of Print, without its end
    std::function<void(std::string_view)> write;     // text of StdOut as it comes; none: whole lines go to print
    std::function<void(std::string_view)> complain;  // messages, whole lines with their ends
    std::vector<MemberObserver*> observers;          // borrowed
    bool leaks = false;                              // objects left at the end are an error
};

// Checks and runs a script. Gives its exit code: 0, what it handed to Quit, 130 after Ctrl-C, or 1
// with a message for errors in the script and an exception that nobody took. With `leaks` that
// goes for objects, too, that held each other or were held from outside when the script ended.
int RunScript(const Source& source, const RunOptions& options);

// What is told of an exception that nobody took: its class, message and place, and the calls under
// way.
std::string FailureText(const Source& source, const Failure& failure);

// Only parses and checks, and tells the errors and warnings. True without errors.
bool CheckScript(const Source& source, const std::function<void(std::string_view)>& complain);

}  // namespace script
