// The words behind the command's name.
#pragma once

#include <string>
#include <vector>

namespace tqx {

// Exit code for words that the command doesn't understand.
inline constexpr int kWrongUsage = 2;

// Does what the words say and gives the exit code.
int Execute(std::vector<std::string> words);

}  // namespace tqx
