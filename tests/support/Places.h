// Where the build put what the tests run, and where the sources stand.
#pragma once

#include <string>

namespace support {

std::string PluginFile();        // the plug-in under test; another one where TQX_TEST_PLUGIN names it
std::string CommandFile();       // the desk host's command
std::string TestPluginFolder();  // the small plug-ins for tests
std::string SourceFolder();      // the top of the source tree

}  // namespace support
