// A plug-in's start as it is seen from the host: what it asks for, states and registers.
#pragma once

#include <string>
#include <vector>

#include "host/objects/Class.h"

namespace host::check {

struct Startup {
    std::string problem;                             // why it can't be used; empty when it can
    std::vector<std::string> services;               // asked of the entry function
    std::vector<std::string> names;                  // host functions asked for, each once; it grows later
    std::vector<std::string> steps;                  // "RegisterPluginVersion 9", "PluginRegisterClass Sample"
    std::vector<sdk::ClassDefinition*> definitions;  // as registered, refused ones too
    std::vector<const Class*> classes;               // empty with a problem
};

// Loads a plug-in, once in a process.
const Startup& StartRecorded(const std::string& path);

}  // namespace host::check
