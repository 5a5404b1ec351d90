// The exception classes of the framework.
#pragma once

namespace host {

class Runtime;

// Registers RuntimeException (Message, ErrorNumber) and its subclasses.
void RegisterExceptions(Runtime& runtime);

}  // namespace host
