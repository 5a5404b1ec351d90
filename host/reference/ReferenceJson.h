// The reference of classes for programs: everything that the records state.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "host/objects/Class.h"

namespace host {

// {"classes": [{"name": …, "methods": […], …}, …]}
std::string ClassesAsJson(std::span<const Class* const> classes);

// The same with only the members of one name.
std::string MemberAsJson(std::span<const Class* const> classes, std::string_view name);

// {"functions": [{"name": …, "parameters": […], …}, …]}
std::string FunctionsAsJson(std::span<const Method* const> functions);

}  // namespace host
