// Loading plug-ins.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host/calls/Runtime.h"
#include "host/messages/Message.h"
#include "host/objects/Class.h"

namespace host {

// Why a plug-in can't be loaded: a sentence that names the file.
struct LoadError : std::runtime_error {
    explicit LoadError(const Said& said) : std::runtime_error(said.text()) {}
};

struct Plugin {
    std::string path;
    std::vector<const Class*> classes;  // in order of registration
};

// Loads a plug-in for the life of the process, calls its entry point and so registers its
// classes. Throws LoadError when the file is missing or no library, has no entry point, or has a
// class that the host refuses. Loading a file again gives the same plug-in. The entry point is given
// `entry`, through which it comes by the host's functions.
const Plugin& LoadPlugin(const std::string& path, sdk::EntryFunction entry = &Runtime::Entry);

// Every plug-in loaded so far.
std::vector<const Plugin*> LoadedPlugins();

}  // namespace host
