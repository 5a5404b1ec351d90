// The file behind a mapped picture: made by the picture, gone with it.
#pragma once

#include <cstdint>

namespace tqx {

// Makes a file of `size` bytes and one page more, all zero, readable and writable by its owner
// alone, and gives its descriptor. The disk's blocks are reserved where the file system can do
// that, so that a full disk shows here and never while pixels are written. A regular file of that
// name is emptied first; one that another picture works in loses its name to the new file and
// stays that picture's. Gives -1 on failure; a file that was opened until then is deleted.
int MakeScratchFile(const char* path, std::int64_t size, std::int64_t pageSize);

// Empties the file, closes the descriptor and deletes the file by its path, unless the name is
// another file's by now.
void DeleteScratchFile(int descriptor, const char* path);

}  // namespace tqx
