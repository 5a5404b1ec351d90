// Cases that run in child processes, under deadlines that the parent keeps.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace host::check {

// What a case found wrong: one of the caller's kinds and a sentence; no sentence: nothing.
struct Complaint {
    std::int32_t kind = 0;
    std::string text;
    bool counts = false;      // adds one to ChildrenReport::counted
    std::uint64_t value = 0;  // kept in ChildrenReport::values if the case is the last of its child
};

struct Failure {
    std::size_t index = 0;  // of the case
    bool crashed = false;   // the child ended without a complaint
    Complaint complaint;    // of a crash: the signal's name
};

struct ChildrenReport {
    std::vector<Failure> failures;                // in the order of the cases
    std::vector<std::size_t> slow;                // cases that were ended
    std::int64_t run = 0;                         // cases that ran
    std::int64_t counted = 0;                     // cases that ask to be counted
    std::map<std::size_t, std::uint64_t> values;  // by case
};

struct ChildrenJob {
    std::size_t count = 0;
    std::function<Complaint(std::size_t)> run;        // in the child
    std::function<bool(std::size_t)> skip;            // in the child, which knows of all slow cases so far; or empty
    std::function<void(std::size_t)> noteSlow;        // in the parent, before the next child starts; or empty
    std::function<void(const Failure&)> noteFailure;  // likewise; or empty
    std::function<bool(std::size_t)> endsChild;       // cases that leave something behind in the process; or empty

    // Of processor time, so that a busy machine convicts nobody; a case that sleeps is ended after
    // many times as long.
    double secondsPerCase = 1;
    std::function<double(std::size_t)> secondsOf;  // in the child, another limit for a case; or empty

    std::size_t mostFailures = 12;  // after which the rest is not run
    bool inProcess = false;         // no children: a crash is the end, nothing is too slow
};

// Runs all cases in order, many in one child; after a failure the next child goes on behind it.
// What children print is dropped. They may not write files of more than 64 MiB.
ChildrenReport RunInChildren(const ChildrenJob& job);

// A child that ends when its parent does and leaves signals to their usual effect. As fork().
pid_t ForkChild();

// "Segmentation fault", "the process ended with status 1".
std::string EndText(int status);

}  // namespace host::check
