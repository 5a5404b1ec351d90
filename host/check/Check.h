// Testing a plug-in as a stranger would: everything is learned from its records, everything is
// called, and every check runs in a child process, so that a crash is a result like any other.
//
// A check is an entry of a table: an id, a sentence and a function, one file a check (checks/).
// What is called with what follows from the records and a seed alone, in a fixed order, so that a
// failure can be shown again by the script that comes with it. Habits of plug-ins relied on:
//   - A parameter that is named like the start of constants takes their values.
//   - A method without arguments and result leaves an instance in a state worth testing; that
//     is how closed instances are come by.
//   - An integer property with "Yield" in its name is an interval in ticks; above 0 it asks for
//     the periodic yield.
//   - A parameter whose name starts with "source" or "orig" is only read; so is the instance of a
//     method that gives another instance of its class.
// Two things are spared, since a script that asks for them is itself to blame: constructors that take
// a memory block get a large one and small numbers only; an integer with "iteration" in its name says
// how often something is done, and is never large.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// From what is fine to what is worst.
enum class CheckStatus {
    Pass,
    Skip,     // not run; the detail says why
    Warn,     // worth knowing, no fault for sure
    Timeout,  // a call, or the check itself, was ended for taking too long
    Fail,
    Crash,
};
inline constexpr std::size_t kCheckStatusCount = 6;

// "pass", "skip", …
std::string_view StatusName(CheckStatus status);

// Whether it makes the plug-in one with findings: Timeout, Fail, Crash.
bool IsFinding(CheckStatus status);

struct CheckResult {
    std::string id;        // in kebab case
    std::string sentence;  // what holds when it passes
    CheckStatus status = CheckStatus::Pass;
    std::int64_t cases = 0;  // how much was tried
    double seconds = 0;
    std::string detail;  // what was tried, or what went wrong
    std::string script;  // the shortest script that shows a finding; else empty
};

struct CheckOptions {
    std::set<std::string> only;                 // ids; empty: all
    std::map<std::string, std::string> except;  // ids not to run, with the reasons
    std::uint64_t seed = 1;                     // of the arguments that are drawn at random
    bool inProcess = false;                     // nothing forks, for debuggers: no deadlines, a crash is the end
    double secondsPerCall = 1;                  // of processor time
    double secondsPerCheck = 600;
    std::function<bool()> stop;                      // asked between checks and while waiting; or empty
    std::function<void(const CheckResult&)> report;  // called after each check; or empty
};

struct CheckEntry {
    std::string id;
    std::string sentence;
};

// All checks, in the order in which they run.
std::vector<CheckEntry> ListChecks();

// Runs the checks on the plug-in of a file, which this process does not load (unless all is done in
// it). Gives fewer results only when `stop` asked for the end.
std::vector<CheckResult> CheckPlugin(const std::string& path, const CheckOptions& options = {});

}  // namespace host
