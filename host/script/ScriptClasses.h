// The classes of a script as classes of the host, so that plug-ins can make, call and hold their
// instances like any others.
#pragma once

#include "host/script/Machine.h"
#include "host/script/Symbols.h"

namespace script {

// Registers the script's classes with the runtime: properties as slots, methods, event handlers
// and destructors as bodies that run on the machine. Comes after the check and before the
// compilation, which wants to know where properties lie.
void RegisterClasses(Symbols& symbols, Machine& machine);

// Takes them away again. False, with everything left as it is, while instances are alive.
bool UnregisterClasses(Symbols& symbols);

// What was alive at the end of a script.
struct Leftovers {
    std::vector<std::string> cycles;  // "3 × Node": instances that held each other, now released
    std::vector<std::string> leaks;   // "1 × Picture": still alive
};

// What was alive before a script ran.
struct Alive {
    std::vector<host::Object*> objects = host::LiveObjects();
    std::vector<host::Array*> arrays = host::LiveArrays();
};

// Releases objects of the script's classes and arrays that only hold each other, and counts what is
// alive beyond `before`.
Leftovers ReleaseLeftovers(const Symbols& symbols, const Alive& before);

}  // namespace script
