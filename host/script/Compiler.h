// Resolved tree to bytecode.
#pragma once

#include <deque>

#include "host/script/Bytecode.h"
#include "host/script/Diagnostics.h"
#include "host/script/Symbols.h"

namespace script {

// A compiled program. The main function's frame holds the globals.
struct Code {
    std::deque<Function> functions;
    Function* main = nullptr;
};

// Compiles all routines and the program itself. What can't be compiled (a routine of more values
// than the machine has registers) is added to the diagnostics.
void Compile(Program& program, Symbols& symbols, Code& code, Diagnostics& diagnostics);

}  // namespace script
