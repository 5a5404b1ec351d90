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
bool UnregisterClasses(Symbols& symbols) noexcept;

// Takes those away that are not among `kept`; none of them has instances.
void UnregisterClasses(Symbols& symbols, const std::vector<ClassSymbol*>& kept) noexcept;

// Whether an object's class, or one that it inherits, is the script's.
bool IsOfScript(const host::Object& object, const Symbols& symbols);

}  // namespace script
