// A plug-in that needs a function nobody has.
#include "tests/support/plugins/Host.h"

extern "C" int FunctionThatNobodyHas();

TEST_PLUGIN_ENTRY(sdk::EntryFunction) { return FunctionThatNobodyHas(); }
