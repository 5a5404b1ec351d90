// Finds plug-ins' scratch files among the open descriptors, and removes them.
#include "tqx/PluginFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <string>
#include <unordered_set>

#include "host/calls/HostFunctionSlot.h"

namespace tqx {

namespace {

// The paths that were asked for, the latest first. Never freed, so that a handler can walk them.
struct Asked {
    const char* path;
    const Asked* next;
};

std::atomic<const Asked*> asked{nullptr};
static_assert(std::atomic<const Asked*>::is_always_lock_free, "a signal handler can't wait for a lock");

void Note(const char* path) {
    static auto* const known = new std::unordered_set<std::string>;  // its texts stay where they are
    const auto [text, added] = known->insert(path);
    if (added) asked = new Asked{text->c_str(), asked};
}

template <const auto& Name>
void NotePathsOf() {
    using Slot = host::HostFunctionSlot<Name>;
    static typename Slot::Function before;
    before = Slot::Replace([](sdk::Object* item, sdk::FileReference* reference) {
        const bool told = before(item, reference);
        if (told) Note(reference->path);
        return told;
    });
}

// Whether another descriptor has locked the file. An empty one may be about to be locked.
bool IsWorkedIn(const char* path, const struct stat& file) {
    if (file.st_size == 0) return true;
    const int descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return false;
    const bool locked = flock(descriptor, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    close(descriptor);
    return locked;
}

void RemoveIfScratch(int descriptor) {
    struct stat open, named;
    if (fstat(descriptor, &open) != 0 || !S_ISREG(open.st_mode)) return;
    if ((fcntl(descriptor, F_GETFL) & O_ACCMODE) != O_RDWR) return;
    for (const Asked* one = asked; one; one = one->next) {
        const bool names = stat(one->path, &named) == 0 && named.st_dev == open.st_dev && named.st_ino == open.st_ino;
        if (names && IsWorkedIn(one->path, open)) unlink(one->path);
    }
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

}  // namespace

void NotePluginFiles() {
    NotePathsOf<sdk::kREALFSRefFromFolderItem>();
    NotePathsOf<sdk::kREALFSSpecFromFolderItem>();
}

void RemovePluginFiles() noexcept {
    if (!asked) return;
    const int error = errno;
    ForEachDescriptor(&RemoveIfScratch);
    errno = error;
}

}  // namespace tqx
