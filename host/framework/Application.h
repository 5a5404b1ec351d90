// The class App: what a script knows of the program that runs it.
#pragma once

#include <string>
#include <vector>

namespace host {

class Runtime;

// What App.Arguments gives from now on.
void SetApplicationArguments(std::vector<std::string> arguments);

void RegisterApplication(Runtime& runtime);

}  // namespace host
