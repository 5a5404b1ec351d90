// Names, types and conversions of a parsed program, all before it runs.
#pragma once

#include "host/script/Ast.h"
#include "host/script/Diagnostics.h"
#include "host/script/Symbols.h"

namespace script {

// Resolves the tree in place (see Ast.h) and fills the symbols. With diagnostics afterwards the
// program must not be compiled.
void Check(Program& program, Symbols& symbols, Diagnostics& diagnostics);

}  // namespace script
