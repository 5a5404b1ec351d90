// A plug-in that registers nothing.
#include "tests/support/plugins/Host.h"

TEST_PLUGIN_ENTRY(sdk::EntryFunction entry) {
    KeepResolver(entry);
    return 0;
}
