// Where a host's folder item lies.
#pragma once

#include "sdk/PluginInterface.h"

namespace tqx {

// The path of a folder item, whether or not there is a file yet: absolute, UTF-8,
// zero-terminated. Null for nil or an item whose path the host can't tell. The caller frees it
// with std::free.
char* PathOfFolderItem(sdk::Object* folderItem);

}  // namespace tqx
