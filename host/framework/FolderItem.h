// The class FolderItem: a place in the file system, whether there is anything or not.
#pragma once

#include <string>
#include <string_view>

#include "host/objects/Object.h"

namespace host {

class Runtime;

// The item of a path; AbsolutePath says how it is read. Throws std::bad_alloc.
Ref<Object> NewFolderItem(std::string_view path);

// An item's absolute path. Raises NilObjectException for nil and for any other object.
const std::string& PathOf(sdk::Object* item);

void RegisterFolderItem(Runtime& runtime);

}  // namespace host
