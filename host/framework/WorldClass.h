// The class GWorldTQX: an off-screen world that a plug-in made and handed to scripts.
#pragma once

namespace host {

class Runtime;

void RegisterWorldClass(Runtime& runtime);

}  // namespace host
