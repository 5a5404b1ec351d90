// Members that are declared to the host and not built yet. Each refuses as its finished form
// refuses: nil, false or nothing. A member leaves this list when its room has it.
#pragma once

#include <cstdint>

#include "sdk/PluginInterface.h"

namespace tqx {


}  // namespace tqx
