// Windows of a file where the system can't share memory with one: all windows of a file lie in one block
// that holds the whole of it, so that what is written through one is seen through the others. The
// bytes go back to the file when another one takes its place.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "platform/FileWindow.h"

namespace platform {

namespace {

struct HeldFile {
    ino_t number;
    int descriptor;  // that of the first window, as long as it is open
    std::uint8_t* bytes;
    std::int64_t size;
    int windows;
    HeldFile* next;
};

HeldFile* files = nullptr;

bool Transfer(const HeldFile& file, bool write) {
    for (std::int64_t at = 0; at < file.size;) {
        const auto rest = static_cast<std::size_t>(file.size - at);
        const ssize_t done = write ? pwrite(file.descriptor, file.bytes + at, rest, at)
                                   : pread(file.descriptor, file.bytes + at, rest, at);
        if (done <= 0) return !write && done == 0;
        at += done;
    }
    return true;
}

// Whoever closed the file or cut it short has no need of its bytes any more.
void LetGo(HeldFile* file) {
    struct stat status;
    const bool open = fstat(file->descriptor, &status) == 0 && status.st_ino == file->number;
    if (open && status.st_size >= file->size) Transfer(*file, true);
    std::free(file->bytes);
    std::free(file);
}

// Files without windows are held until the next one is looked for, since windows mostly slide.
void LetIdleGo(ino_t except) {
    for (HeldFile** link = &files; *link;) {
        HeldFile* const file = *link;
        if (file->windows > 0 || file->number == except) {
            link = &file->next;
            continue;
        }
        *link = file->next;
        LetGo(file);
    }
}

HeldFile* Find(ino_t number) {
    HeldFile* file = files;
    while (file && file->number != number) file = file->next;
    return file;
}

HeldFile* Hold(int descriptor, const struct stat& status) {
    auto* const file = static_cast<HeldFile*>(std::calloc(1, sizeof(HeldFile)));
    auto* const bytes = static_cast<std::uint8_t*>(std::calloc(1, static_cast<std::size_t>(status.st_size)));
    if (file) *file = {status.st_ino, descriptor, bytes, status.st_size, 0, files};
    if (file && bytes && Transfer(*file, false)) return files = file;
    std::free(bytes);
    std::free(file);
    return nullptr;
}

}  // namespace

std::int64_t PageSize() { return 4096; }

std::int64_t PageFaults() { return 0; }

std::uint8_t* MapFileWindow(int descriptor, std::int64_t offset, std::int64_t, bool) {
    struct stat status;
    if (fstat(descriptor, &status) != 0 || offset < 0 || offset >= status.st_size) return nullptr;
    LetIdleGo(status.st_ino);
    HeldFile* file = Find(status.st_ino);
    if (!file) file = Hold(descriptor, status);
    if (!file) return nullptr;
    ++file->windows;
    return file->bytes + offset;
}

void UnmapFileWindow(std::uint8_t* window, std::int64_t offset, std::int64_t) {
    for (HeldFile* file = files; file; file = file->next)
        if (file->bytes == window - offset) --file->windows;
}

}  // namespace platform
