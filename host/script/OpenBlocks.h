// Whether lines typed at a prompt end in the middle of a block or statement.
#pragma once

#include <string_view>

namespace script {

// Whether lines begin a block that they don't end, or end in the middle of a statement.
bool WantsMoreLines(std::string_view lines);

}  // namespace script
