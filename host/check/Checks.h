// The functions of the table, one file a check.
#pragma once

#include "host/check/Table.h"

namespace host::check {

Outcomes CheckLoading(Context& context);
Outcomes CheckExportedSymbols(Context& context);
Outcomes CheckLinkedLibraries(Context& context);
Outcomes CheckStartUp(Context& context);
Outcomes CheckHostNames(Context& context);
Outcomes CheckDeclarations(Context& context);
Outcomes CheckClasses(Context& context);
Outcomes CheckRecords(Context& context);
Outcomes CheckConstants(Context& context);
Outcomes CheckFields(Context& context);
Outcomes CheckOverloads(Context& context);
Outcomes CheckCodePointers(Context& context);
Outcomes CheckEvents(Context& context);

// Every case once, watched for all that must not happen: gives "calls", "references",
// "guard-bytes", "unasked-yields" and "exceptions".
Outcomes CheckCalls(Context& context);

Outcomes CheckProperties(Context& context);

// Every usual call twice on instances of the same bytes: all that can be seen afterwards is the
// same. The C library's random numbers start anew before each. Members whose results depend on
// earlier calls are named; they must give the same after the same calls.
Outcomes CheckRepetition(Context& context);

Outcomes CheckSources(Context& context);

// Pictures in memory of the check's own, against protected pages: a step outside ends the process. Filler
// bytes, other channels' and those beside a row are told, as there are members that mean to write them.
Outcomes CheckStrayWrites(Context& context);

// Each host function in turn gives zero: always, or at its first, second or third call only.
Outcomes CheckHostFunctions(Context& context);

// Each allocation and system call that the plug-in makes fails in turn, alone and with all that
// follow it, in one call of each member.
Outcomes CheckAllocation(Context& context);
Outcomes CheckSystemCalls(Context& context);

// With an interval of a tick a yield comes, with one of 0 or below none.
Outcomes CheckAskedYields(Context& context);

// In the first or third yield the same call is made again, the instance is constructed anew, or
// everything without arguments and result is done to it.
Outcomes CheckReentry(Context& context);

}  // namespace host::check
