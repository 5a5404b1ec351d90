// Finds plug-ins' scratch files among the open descriptors, and removes them.
#include "tqx/PluginFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "host/calls/HostFunctionSlot.h"
#include "tqx/NotedPaths.h"

namespace tqx {

namespace {

// Whether another descriptor has locked the file. An empty one may be about to be locked.
bool IsWorkedIn(const char* path) {
    struct stat file;
    if (stat(path, &file) == 0 && file.st_size == 0) return true;
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return false;
    const bool locked = flock(descriptor, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(descriptor);
    return locked;
}

// The system's record of an entry of a folder, as getdents64 gives it.
struct FolderEntry {
    std::uint64_t inode;
    std::int64_t offset;
    std::uint16_t size;
    std::uint8_t type;
    char name[1];
};

// The number that a name spells; -1 for others.
int NumberOf(const char* name) {
    int number = 0;
    for (; *name; ++name) {
        if (*name < '0' || *name > '9') return -1;
        number = number * 10 + (*name - '0');
    }
    return number;
}

// Calls `use` with each descriptor that is open, without the allocator: this handler may have
// interrupted it.
template <class Use>
void ForEachDescriptor(const Use& use) {
    const int folder = open("/proc/self/fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return;
    alignas(FolderEntry) char entries[4096];
    long bytes;
    while ((bytes = syscall(SYS_getdents64, folder, entries, sizeof(entries))) > 0)
        for (long at = 0; at < bytes;) {
            const auto* const entry = reinterpret_cast<const FolderEntry*>(entries + at);
            if (const int descriptor = NumberOf(entry->name); descriptor >= 0) use(descriptor);
            at += entry->size;
        }
    close(folder);
}

// Whether this process has a regular file open, to be read and written, that a path leads to.
bool IsOpenHere(const char* path) {
    struct stat named, open;
    if (stat(path, &named) != 0 || !S_ISREG(named.st_mode)) return false;
    bool found = false;
    ForEachDescriptor([&](int descriptor) {
        found = found || (fstat(descriptor, &open) == 0 && named.st_dev == open.st_dev && named.st_ino == open.st_ino &&
                          (fcntl(descriptor, F_GETFL) & O_ACCMODE) == O_RDWR);
    });
    return found;
}

void RemoveIfScratch(const char* path) {
    if (IsOpenHere(path) && IsWorkedIn(path)) unlink(path);
}

bool IsThere(const char* path) { return access(path, F_OK) == 0; }

template <const auto& Name>
void NotePathsOf() {
    using Slot = host::HostFunctionSlot<Name>;
    static typename Slot::Function before;
    before = Slot::Replace([](sdk::Object* item, sdk::FileReference* reference) {
        const bool told = before(item, reference);
        if (told) NotePath(reference->path, &IsThere);
        return told;
    });
}

}  // namespace

void NotePluginFiles() {
    NotePathsOf<sdk::kREALFSRefFromFolderItem>();
    NotePathsOf<sdk::kREALFSSpecFromFolderItem>();
}

void RemovePluginFiles() noexcept {
    const int error = errno;
    TakePaths(&RemoveIfScratch);
    errno = error;
}

}  // namespace tqx
