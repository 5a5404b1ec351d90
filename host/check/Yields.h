// Cases of classes that ask for yields.
#pragma once

#include <string>
#include <vector>

#include "host/check/Case.h"

namespace host::check {

// The property that asks for yields, see Check.h; null if there is none.
const Property* YieldProperty(const Class& type);

std::vector<Case> YieldCases(const Supply& supply, bool firstOnly);

// The case's script with an interval set.
std::string YieldScript(const Case& one, std::int32_t interval);

}  // namespace host::check
