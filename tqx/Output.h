// Standard output, with what becomes of it. What can't be written is an error of the command.
#pragma once

#include <string_view>

namespace tqx {

// Makes the standard streams that the command was started without fail or give nothing, so that no
// file opened later takes their place. Broken pipes and files of forbidden length become errors
// of the writing instead of signals.
void SettleStandardStreams();

// False, also from then on, when standard output takes no more.
bool WriteOutput(std::string_view text);

// A whole line, with the line's end.
bool WriteLine(std::string_view line);

// Text on standard error, behind what was written to standard output.
void Complain(std::string_view text);

// Writes what is left. Gives the exit code, which is 1 instead of 0 where output was lost; says so
// unless it went to a pipe whose reader had enough.
int FinishOutput(int exitCode);

}  // namespace tqx
