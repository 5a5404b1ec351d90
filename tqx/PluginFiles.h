// The scratch files in which plug-ins work, for a process that ends without closing its objects.
//
// A plug-in deletes its scratch file when the object behind it goes. Where objects can't be brought
// to an end, because a signal finds a long call at work or because something holds them to the
// very end, the host removes the files itself. It knows them by what sdk/HostFunctions.h says of
// folder items: a file at a path that a plug-in asked for, open in this process, and locked.
#pragma once

namespace tqx {

// Notes from now on the paths that plug-ins ask of folder items.
void NotePluginFiles();

// Removes the scratch files that plug-ins have open. Safe in a signal handler; for a process that
// is about to end and runs nothing of a plug-in any more.
void RemovePluginFiles() noexcept;

}  // namespace tqx
