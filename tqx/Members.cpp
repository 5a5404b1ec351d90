#include <cstdio>

#include "tqx/Commands.h"

namespace tqx {

int Members(const Settings& settings, const MembersSettings&) {
    if (!LoadPlugin(settings)) return 1;
    return 1;
}

}  // namespace tqx
