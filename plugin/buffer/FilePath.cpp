// A folder item's path, as the host gives it.
#include "plugin/buffer/FilePath.h"

#include <cstring>

#include "plugin/services/HostServices.h"

namespace tqx {

namespace {

using FileReferenceFunction = HostFunction<bool(sdk::Object*, sdk::FileReference*)>;

// A copy of the path that one host function gives; null when it gives none.
char* AskForPath(FileReferenceFunction& function, sdk::Object* folderItem) {
    sdk::FileReference reference{};
    if (!function(folderItem, &reference)) return nullptr;
    const std::size_t length = strnlen(reference.path, sdk::kPathCapacity);
    const bool terminated = length < sdk::kPathCapacity;
    return length > 0 && terminated ? strdup(reference.path) : nullptr;
}

}  // namespace

char* PathOfFolderItem(sdk::Object* folderItem) {
    if (!folderItem) return nullptr;
    if (char* const path = AskForPath(host.REALFSRefFromFolderItem, folderItem)) return path;
    return AskForPath(host.REALFSSpecFromFolderItem, folderItem);
}

}  // namespace tqx
