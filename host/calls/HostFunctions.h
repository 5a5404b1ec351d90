// The host functions of the core: objects, strings, arrays, exceptions, time. Those that know
// memory blocks, pictures and folder items are bound by the framework.
#pragma once

namespace host {

class Runtime;

void BindCoreFunctions(Runtime& runtime);

}  // namespace host
