// Text to tree: a recursive-descent parser, with precedence climbing for expressions.
//
// Errors go to the diagnostics; the parser then goes on with the next line, so one run finds
// several. A tree with errors is not to be checked further.
#pragma once

#include <memory>

#include "host/script/Ast.h"
#include "host/script/Diagnostics.h"

namespace script {

std::unique_ptr<Program> Parse(const Source& source, Diagnostics& diagnostics);

}  // namespace script
