// Testing a plug-in as a stranger would: everything is learned from its records, everything is
// called, and every case runs in a child process, so that a crash is a result like any other.
//
// What is called with what follows from the records alone, in a fixed order, so that a failure
// can be shown again by the script that comes with it. Three habits of plug-ins are relied on:
//   - A parameter that is named like the start of constants takes their values.
//   - A method without arguments and result leaves an instance in a state worth testing; that
//     is how closed instances are come by.
//   - An integer property with "Yield" in its name is an interval in ticks; above 0 it asks for
//     the periodic yield.
// One thing is spared: constructors that take a memory block get a large one and small numbers
// only, since a script that describes a block wrongly is itself to blame.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/calls/PluginLoader.h"

namespace host {

struct CheckResult {
    std::string name;  // of the check, two or three words
    bool ok = false;
    std::int64_t cases = 0;  // how much was tried
    std::string detail;      // what was tried, or what went wrong
    std::string script;      // the shortest script that shows a failure; else empty
};

struct CheckOptions {
    double secondsPerCall = 1;                       // a call that takes longer is ended and counted as slow
    std::function<void(const CheckResult&)> report;  // called after each check; or empty
};

// Runs all checks. Takes some seconds. Objects of the plug-in should not be alive meanwhile.
std::vector<CheckResult> CheckPlugin(const Plugin& plugin, const CheckOptions& options = {});

// "ok      repeatable: …" or "FAILED  repeatable: …" and below it the script, each line with its
// end.
std::string CheckLine(const CheckResult& result);

std::string ChecksAsJson(const Plugin& plugin, const std::vector<CheckResult>& results);

}  // namespace host
