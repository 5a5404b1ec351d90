// The end of a program: its last destructors, and what is left of it.
//
// Destructors may use whatever they reach, so nothing is given up before the last of them has run:
// the globals have their values, objects their properties. They run in the order in which the
// objects would go if the globals were given up one by one, as declared; objects that only hold
// each other follow, the oldest first. What a plug-in or the framework still holds stays alive.
#pragma once

#include <string>
#include <vector>

#include "host/script/Machine.h"
#include "host/script/Symbols.h"

namespace script {

// What was alive before a script ran.
struct Alive {
    std::vector<host::Object*> objects = host::LiveObjects();
    std::vector<host::Array*> arrays = host::LiveArrays();
};

// What a program left behind.
struct Leftovers {
    std::vector<std::string> cycles;  // "3 × Node": instances that held each other, now released
    std::vector<std::string> leaks;   // "1 × Picture": still alive, held from outside
};

// Ends a program that has run.
Leftovers EndProgram(Machine& machine, const Symbols& symbols, const Alive& before);

}  // namespace script
