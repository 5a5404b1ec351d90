// The order of the start.
#include "host/check/Startup.h"

#include <algorithm>

#include "host/check/Checks.h"
#include "host/check/Findings.h"
#include "host/check/Passes.h"
#include "sdk/HostFunctions.h"

namespace host::check {

namespace {

bool IsRegistration(const std::string& step) { return step.starts_with(sdk::kPluginRegisterClass.name); }

}  // namespace

Outcomes CheckStartUp(Context& context) {
    context.Classes();
    const Startup& startup = StartRecorded(context.path());
    const std::string version = sdk::kRegisterPluginVersion.name + (" " + std::to_string(sdk::kInterfaceVersion));
    const auto classes = std::count_if(startup.steps.begin(), startup.steps.end(), &IsRegistration);
    Findings findings;
    findings.Expect(!startup.services.empty() && startup.services.front() == sdk::kResolverService, "the entry point",
                    std::string("asks for something else before ") + sdk::kResolverService);
    findings.Expect(
        !startup.steps.empty() && startup.steps.front() == version, "the entry point",
        "does not state version " + std::to_string(sdk::kInterfaceVersion) + " before it registers a class");
    findings.Expect(classes + 1 == static_cast<long>(startup.steps.size()), "the entry point",
                    "states the version more than once");
    return Only("start-up",
                findings.Judged("states version " + std::to_string(sdk::kInterfaceVersion) + ", then registers " +
                                std::to_string(classes) + (classes == 1 ? " class" : " classes")));
}

}  // namespace host::check
