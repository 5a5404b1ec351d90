// Whether there is a plug-in at all, and whether the host takes what it registers.
#include "host/check/Checks.h"
#include "host/check/Findings.h"
#include "host/check/Passes.h"
#include "host/check/Startup.h"

namespace host::check {

Outcomes CheckLoading(Context& context) {
    const Startup& startup = StartRecorded(context.path());
    const auto classes = static_cast<std::int64_t>(startup.definitions.size());
    Outcome outcome{CheckStatus::Pass,
                    classes,
                    "offers " + std::to_string(classes) + (classes == 1 ? " class" : " classes"),
                    "",
                    {}};
    // A class that is refused is the business of another check.
    if (classes == 0) outcome.Convict(CheckStatus::Fail, startup.problem);
    return Only("loading", outcome);
}

}  // namespace host::check
