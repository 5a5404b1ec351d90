// Paths that a signal's handler may read at any moment, kept while what they name is in use.
#pragma once

namespace tqx {

// Whether what a path names is in use. Asked of paths noted before, when a new one finds no room.
using IsInUse = bool (*)(const char* path);

// Keeps a copy of a path. The list grows with those in use: paths that aren't, but for the latest few,
// are dropped when it is full. Where memory is short the path is not kept.
void NotePath(const char* path, IsInUse isInUse) noexcept;

// Calls `use` with each path and drops it. Safe in a signal handler, in any thread; for a process that
// is about to end.
void TakePaths(void (*use)(const char* path)) noexcept;

}  // namespace tqx
