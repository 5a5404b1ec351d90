// The global functions on numbers, colours and time.
#pragma once

namespace host {

class Runtime;

void RegisterNumberFunctions(Runtime& runtime);

}  // namespace host
