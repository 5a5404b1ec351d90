// The results of checks, as people and programs read them.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "host/check/Check.h"

namespace host {

// "pass     references      every count is as it was" and, for what was found, the script below it,
// each line with its end.
std::string CheckLine(const CheckResult& result);

// "27 checks: 25 pass, 1 skip, 1 warn, 0 timeout, 0 fail, 0 crash" with the line's end.
std::string CheckSummary(std::span<const CheckResult> results);

// {"plugin": …, "seed": …, "checks": [{"id": …, "sentence": …, "status": …, "cases": …, "seconds": …,
// "detail": …, "script": … or null}, …], "counts": {"pass": …, …}}
std::string ChecksAsJson(const std::string& plugin, std::uint64_t seed, std::span<const CheckResult> results);

// A file of test results as build servers read them: one suite, one case a check. A check that failed
// is a failure, one that crashed or timed out an error, one that was skipped says so, a warning is
// output.
std::string ChecksAsJUnit(const std::string& plugin, std::uint64_t seed, std::span<const CheckResult> results);

}  // namespace host
