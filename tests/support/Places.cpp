// Folders and files that the build tells this source alone.
#include "tests/support/Places.h"

namespace support {

// Only this file is told the paths, so that a compiler's cache serves every checkout with the others.
std::string PluginFile() { return TQX_PLUGIN_PATH; }
std::string CommandFile() { return TQX_COMMAND_PATH; }
std::string TestPluginFolder() { return TQX_TEST_PLUGIN_FOLDER; }
std::string SourceFolder() { return TQX_SOURCE_DIR; }

}  // namespace support
