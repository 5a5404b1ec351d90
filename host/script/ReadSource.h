// Scripts from files and standard input.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "host/script/Diagnostics.h"

namespace script {

// The text of a file, or of standard input for "-"; nothing, after a message to `complain`, when it
// can't be read.
std::optional<Source> ReadSource(const std::string& path, const std::function<void(std::string_view)>& complain);

}  // namespace script
