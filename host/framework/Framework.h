// The framework: the classes and functions that scripts find without any plug-in.
#pragma once

namespace host {

class Runtime;

// Registers the framework's classes and functions and binds the host functions that concern
// memory blocks, pictures and folder items. Called once, by the program that assembles the host.
void RegisterFramework(Runtime& runtime);

}  // namespace host
