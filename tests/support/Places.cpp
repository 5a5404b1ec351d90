// Folders and files that the build tells this source alone.
#include "tests/support/Places.h"

#include <cstdlib>

namespace support {

// Only this file is told the paths, so that a compiler's cache serves every checkout with the others.
std::string PluginFile() {
    const char* const other = std::getenv("TQX_TEST_PLUGIN");
    return other ? other : TQX_PLUGIN_PATH;
}
std::string CommandFile() { return TQX_COMMAND_PATH; }
std::string TestPluginFolder() { return TQX_TEST_PLUGIN_FOLDER; }
std::string SourceFolder() { return TQX_SOURCE_DIR; }

}  // namespace support
