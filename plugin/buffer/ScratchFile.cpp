// Making, filling, locking and deleting the file of a mapped picture.
#include "plugin/buffer/ScratchFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace tqx {

namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

// What is written past the pixels, in bytes, to see that the file's end can be written at all.
constexpr std::size_t kTrailer = 4096;

// Makes a system call again for as long as signals interrupt it.
template <class Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

bool IsRegularFile(int descriptor) {
    struct stat status;
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

// Marks the file as worked in, for as long as the descriptor is open. False when another
// descriptor, of this process or any other, has marked it.
bool Claim(int descriptor) { return flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK; }

int Open(const char* path, int flags) {
    return Uninterrupted([=] { return open(path, O_RDWR | O_CREAT | O_CLOEXEC | flags, kOwnerOnly); });
}

// A new file in the place of one that a living picture works in. Emptying that one instead would
// take the pages from under the picture's window, and its next pixel would be a bus error.
int ReplaceFile(const char* path) {
    unlink(path);
    const int descriptor = Open(path, O_EXCL);
    if (descriptor >= 0) Claim(descriptor);
    return descriptor;
}

// A file of the name, claimed; -1 when there can be none. Anything but a regular file is left
// alone.
int OpenClaimedFile(const char* path) {
    const int descriptor = Open(path, 0);
    if (descriptor < 0) return -1;
    const bool regular = IsRegularFile(descriptor);
    if (regular && Claim(descriptor)) return descriptor;
    close(descriptor);
    return regular ? ReplaceFile(path) : -1;
}

bool SetLength(int descriptor, std::int64_t length) {
    return Uninterrupted([=] { return ftruncate(descriptor, length); }) == 0;
}

// A process that is not allowed a file of this length would be ended by a signal for trying.
bool LengthIsAllowed(std::int64_t length) {
    struct rlimit limit;
    if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return true;
    return static_cast<std::uint64_t>(length) <= limit.rlim_cur;
}

// Reserves the blocks behind a length; true as well where the file system can't reserve.
bool Reserve(int descriptor, std::int64_t length) {
    int error;
    do error = posix_fallocate(descriptor, 0, length);
    while (error == EINTR);
    return error == 0 || error == EOPNOTSUPP || error == EINVAL || error == ENOSYS;
}

bool WriteTrailer(int descriptor, std::int64_t position) {
    static constexpr char zeros[kTrailer] = {};
    if (lseek(descriptor, position, SEEK_SET) != position) return false;
    return Uninterrupted([=] { return write(descriptor, zeros, kTrailer); }) == static_cast<ssize_t>(kTrailer);
}

// Empties the file and lets it grow to its size. It could not be emptied when it was opened: not
// before it was claimed.
bool FillFile(int descriptor, std::int64_t size, std::int64_t pageSize) {
    const std::int64_t length = size + pageSize;
    return LengthIsAllowed(length) && SetLength(descriptor, 0) && SetLength(descriptor, length) &&
           Reserve(descriptor, length) && WriteTrailer(descriptor, size);
}

// Whether the path is still a name of the open file.
bool PathNames(const char* path, int descriptor) {
    struct stat named;
    struct stat open;
    return stat(path, &named) == 0 && fstat(descriptor, &open) == 0 && named.st_dev == open.st_dev &&
           named.st_ino == open.st_ino;
}

}  // namespace

int MakeScratchFile(const char* path, std::int64_t size, std::int64_t pageSize) {
    const int descriptor = OpenClaimedFile(path);
    if (descriptor < 0) return -1;
    if (FillFile(descriptor, size, pageSize)) return descriptor;
    DeleteScratchFile(descriptor, path);
    return -1;
}

void DeleteScratchFile(int descriptor, const char* path) {
    // Before it is closed: a process that is ended in between leaves no file behind.
    if (PathNames(path, descriptor)) unlink(path);
    // Others may still hold the file open; its blocks go now.
    SetLength(descriptor, 0);
    close(descriptor);
}

}  // namespace tqx
