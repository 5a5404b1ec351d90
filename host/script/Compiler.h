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
    Function* globals = nullptr;  // of a program that grows: it has no code, its frame holds the globals
};

// Compiles all routines and the program itself. What can't be compiled (a routine of more values
// than the machine has registers) is added to the diagnostics.
void Compile(Program& program, Symbols& symbols, Code& code, Diagnostics& diagnostics);

// A program that grows (Session.h): first PrepareSteps, then each step, whose main function is the
// code's from then on. `before` are the classes that were there before the step.
void PrepareSteps(Code& code);
void CompileStep(Program& program, Symbols& symbols, const std::vector<ClassSymbol*>& before, Code& code,
                 Diagnostics& diagnostics);

// Takes back a step that never ran; `globals` is how many there were before it.
void ForgetStep(Code& code, std::size_t globals);

}  // namespace script
