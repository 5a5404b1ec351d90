// Paths of folder items.
#pragma once

#include <string>
#include <string_view>

#include "sdk/PluginInterface.h"

namespace host {

// An absolute path without "." and "..", doubled or trailing slashes; a relative one starts at the
// current folder. Empty for the current folder itself. Links are not followed.
std::string AbsolutePath(std::string_view path);

// The part behind the last slash and the part before it; "/" has the name "/" and is its own
// parent.
std::string NameOfPath(const std::string& path);
std::string FolderOfPath(const std::string& path);

// Text in canonical decomposition; what is not UTF-8 stays as it is.
std::string Decomposed(const std::string& text);

// The path as plug-ins get it: decomposed, but for a containing folder that exists only under the
// name as given. False when it is too long for the record.
bool FillFileReference(const std::string& path, sdk::FileReference& reference);

}  // namespace host
