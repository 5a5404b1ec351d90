// Names, types and conversions of a parsed program, all before it runs.
#pragma once

#include "script/Ast.h"
#include "script/Diagnostics.h"
#include "script/Symbols.h"

namespace script {

// Resolves the tree in place (see Ast.h) and fills the symbols. With diagnostics afterwards the
// program must not be compiled.
void Check(Program& program, Symbols& symbols, Diagnostics& diagnostics);

}  // namespace script
