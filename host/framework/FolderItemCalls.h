// What a FolderItem does with its file as a whole: opening, copying, moving. Opening and creating give
// nil where the system refuses, as old programs expect, and LastErrorCode tells why; the rest raises
// IOException.
#pragma once

#include "sdk/PluginInterface.h"

namespace host {

class Runtime;

sdk::Object* OpenAsTextFile(sdk::Object* item);
sdk::Object* CreateTextFile(sdk::Object* item);
sdk::Object* AppendToTextFile(sdk::Object* item);
sdk::Object* OpenAsBinaryFile(sdk::Object* item, bool readWrite);
sdk::Object* CreateBinaryFile(sdk::Object* item, sdk::String* fileType);

// Into a folder, under the same name, or to a file that is not there yet.
void CopyFileTo(sdk::Object* item, sdk::Object* destination);
void MoveFileTo(sdk::Object* item, sdk::Object* destination);

// What the system said to the last of these calls, on whatever item: 0 for nothing.
std::int32_t LastErrorCode(sdk::Object*);

// The class SpecialFolder.
void RegisterSpecialFolder(Runtime& runtime);

}  // namespace host
