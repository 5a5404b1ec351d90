// Tests a plug-in that nobody knows: one line a check.
#include "host/check/Check.h"

#include <cstdio>

#include "tqx/Commands.h"

namespace tqx {

int Check(const Settings& settings, const CheckSettings& check) {
    if (!LoadPlugin(settings)) return 1;
    bool ok = true;
    for (const host::Plugin* plugin : host::LoadedPlugins()) {
        host::CheckOptions options;
        if (!check.json)
            options.report = [](const host::CheckResult& result) {
                std::fputs(host::CheckLine(result).c_str(), stdout);
                std::fflush(stdout);
            };
        const std::vector<host::CheckResult> results = host::CheckPlugin(*plugin, options);
        for (const host::CheckResult& result : results) ok &= result.ok;
        if (check.json) std::fputs(host::ChecksAsJson(*plugin, results).c_str(), stdout);
    }
    return ok ? 0 : 1;
}

}  // namespace tqx
