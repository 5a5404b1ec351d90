// Lines between #If, #ElseIf, #Else and #EndIf: those that hold stay, the others were never there.
#pragma once

#include <vector>

#include "host/calls/Lexer.h"
#include "host/script/Diagnostics.h"

namespace script {

// The tokens without directives and without the lines that they leave out. A condition is made of the
// build's constants, the script's own constants above it that are one literal, numbers, True and
// False, comparisons, Not, And, Or and brackets. What is wrong is told, and its lines are left out.
std::vector<host::Token> WithoutUnusedLines(std::vector<host::Token> tokens, Diagnostics& diagnostics);

}  // namespace script
