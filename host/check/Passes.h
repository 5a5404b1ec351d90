// What the checks that call members have in common: choosing cases, running them, judging.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "host/check/Table.h"

namespace host::check {

// A supply whose instances all get the usual arguments only; of each constructor just the first
// instance when `firstOnly`.
Supply Narrowed(Supply supply, bool firstOnly);

// Every member once on each instance, with the arguments that promise most.
std::vector<Case> FirstLists(const Supply& supply);

// Runs cases so that a call that was slow once is not tried again on other instances.
ChildrenReport RunCases(const std::vector<Case>& cases, ChildrenJob job);

using ScriptOfCase = std::function<std::string(std::size_t)>;

// Convicts of the failures: crashes, and complaints of the kinds asked for (none: of any).
void Judge(Outcome& outcome, const ChildrenReport& report, const ScriptOfCase& script,
           const std::set<std::int32_t>& kinds = {});

// The report with no failures but crashes.
ChildrenReport CrashesOf(ChildrenReport report);

// Convicts of the cases that took too long.
void JudgeSlow(Outcome& outcome, const ChildrenReport& report, const ScriptOfCase& script);

// One outcome for one id.
Outcomes Only(const char* id, Outcome outcome);

// "1 call", "2 calls".
std::string Counted(std::int64_t count, const std::string& what);

}  // namespace host::check
