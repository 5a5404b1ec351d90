// What surrounds the program: the class System, the standard streams, messages to the user.
#pragma once

namespace host {

class Runtime;

void RegisterSystem(Runtime& runtime);

}  // namespace host
