// The single checks that call a plug-in. Each runs its cases in child processes.
#pragma once

#include <string>
#include <vector>

#include "host/check/Case.h"
#include "host/check/Check.h"

namespace host::check {

// Every case once, watched for all that must not happen: gives the results "calls", "references",
// "guard bytes" and "unasked yields".
std::vector<CheckResult> CheckCalls(const Supply& supply, double secondsPerCall);

// Every usual call twice on instances of the same bytes: all that can be seen afterwards is the
// same. The C library's random numbers start anew before each. Members whose results depend on
// earlier calls are named; they must give the same after the same calls.
CheckResult CheckRepetition(const Supply& supply, double secondsPerCall);

// Each host function in turn gives zero: always, or at its first, second or third call only.
CheckResult CheckFailingHost(const Supply& supply, double secondsPerCall);

// With an interval of a tick a yield comes, with one of 0 or below none.
CheckResult CheckAskedYields(const Supply& supply, double secondsPerCall);

// In the first or third yield the same call is made again, the instance is constructed anew, or
// everything without arguments and result is done to it.
CheckResult CheckReentry(const Supply& supply, double secondsPerCall);

}  // namespace host::check
