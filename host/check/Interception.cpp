// Functions in place of the system's, and how a library's calls come to them.
#include "host/check/Interception.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <limits>
#include <new>

namespace host::check {

namespace {

struct Counts {
    bool armed = false;
    std::int64_t calls = 0;
    std::int64_t from = 0, to = -1;
    std::int64_t failed = 0;
    const char* last = "";
};

Counts counts;

bool Fails(const char* function, int errorNumber) {
    if (!counts.armed) return false;
    ++counts.calls;
    if (counts.calls < counts.from || counts.calls > counts.to) return false;
    ++counts.failed;
    counts.last = function;
    errno = errorNumber;
    return true;
}

bool NoMemory(const char* function) { return Fails(function, ENOMEM); }
bool NoSpace(const char* function) { return Fails(function, ENOSPC); }

// --- Memory ----------------------------------------------------------------------------------------

void* Malloc(std::size_t size) { return NoMemory("malloc") ? nullptr : std::malloc(size); }
void* Calloc(std::size_t count, std::size_t size) { return NoMemory("calloc") ? nullptr : std::calloc(count, size); }
void* Realloc(void* memory, std::size_t size) { return NoMemory("realloc") ? nullptr : std::realloc(memory, size); }
void* AlignedAlloc(std::size_t alignment, std::size_t size) {
    return NoMemory("aligned_alloc") ? nullptr : std::aligned_alloc(alignment, size);
}
int PosixMemalign(void** memory, std::size_t alignment, std::size_t size) {
    return NoMemory("posix_memalign") ? ENOMEM : posix_memalign(memory, alignment, size);
}
void* New(std::size_t size) {
    if (NoMemory("operator new")) throw std::bad_alloc();
    return ::operator new(size);
}
void* NewArray(std::size_t size) {
    if (NoMemory("operator new")) throw std::bad_alloc();
    return ::operator new[](size);
}
void* NewNothrow(std::size_t size, const std::nothrow_t& nothrow) {
    return NoMemory("operator new") ? nullptr : ::operator new(size, nothrow);
}
void* NewArrayNothrow(std::size_t size, const std::nothrow_t& nothrow) {
    return NoMemory("operator new") ? nullptr : ::operator new[](size, nothrow);
}
void* NewAligned(std::size_t size, std::align_val_t alignment) {
    if (NoMemory("operator new")) throw std::bad_alloc();
    return ::operator new(size, alignment);
}
void* NewArrayAligned(std::size_t size, std::align_val_t alignment) {
    if (NoMemory("operator new")) throw std::bad_alloc();
    return ::operator new[](size, alignment);
}

// --- Files -----------------------------------------------------------------------------------------

int Open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return NoSpace("open") ? -1 : open(path, flags, mode);
}
int OpenAt(int folder, const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return NoSpace("openat") ? -1 : openat(folder, path, flags, mode);
}
int Mkostemp(char* pattern, int flags) { return NoSpace("mkostemp") ? -1 : mkostemp(pattern, flags); }
int Ftruncate(int file, off_t length) { return NoSpace("ftruncate") ? -1 : ftruncate(file, length); }
int PosixFallocate(int file, off_t offset, off_t length) {
    return NoSpace("posix_fallocate") ? ENOSPC : posix_fallocate(file, offset, length);
}
int Fallocate(int file, int mode, off_t offset, off_t length) {
    return NoSpace("fallocate") ? -1 : fallocate(file, mode, offset, length);
}
off_t Lseek(int file, off_t offset, int whence) { return NoSpace("lseek") ? -1 : lseek(file, offset, whence); }
ssize_t Write(int file, const void* bytes, std::size_t count) {
    return NoSpace("write") ? -1 : write(file, bytes, count);
}
ssize_t Pwrite(int file, const void* bytes, std::size_t count, off_t offset) {
    return NoSpace("pwrite") ? -1 : pwrite(file, bytes, count, offset);
}
void* Mmap(void* address, std::size_t length, int protection, int flags, int file, off_t offset) {
    return NoMemory("mmap") ? MAP_FAILED : mmap(address, length, protection, flags, file, offset);
}

struct Redirection {
    const char* name;  // as linkers know it
    SystemService service;
    void* replacement;
};

template <class Function>
void* Address(Function* function) {
    return reinterpret_cast<void*>(function);
}

const Redirection redirections[] = {
    {"malloc", SystemService::Memory, Address(&Malloc)},
    {"calloc", SystemService::Memory, Address(&Calloc)},
    {"realloc", SystemService::Memory, Address(&Realloc)},
    {"aligned_alloc", SystemService::Memory, Address(&AlignedAlloc)},
    {"posix_memalign", SystemService::Memory, Address(&PosixMemalign)},
    {"_Znwm", SystemService::Memory, Address(&New)},
    {"_Znam", SystemService::Memory, Address(&NewArray)},
    {"_ZnwmRKSt9nothrow_t", SystemService::Memory, Address(&NewNothrow)},
    {"_ZnamRKSt9nothrow_t", SystemService::Memory, Address(&NewArrayNothrow)},
    {"_ZnwmSt11align_val_t", SystemService::Memory, Address(&NewAligned)},
    {"_ZnamSt11align_val_t", SystemService::Memory, Address(&NewArrayAligned)},
    {"open", SystemService::Files, Address(&Open)},
    {"open64", SystemService::Files, Address(&Open)},
    {"openat", SystemService::Files, Address(&OpenAt)},
    {"openat64", SystemService::Files, Address(&OpenAt)},
    {"mkostemp", SystemService::Files, Address(&Mkostemp)},
    {"mkostemp64", SystemService::Files, Address(&Mkostemp)},
    {"ftruncate", SystemService::Files, Address(&Ftruncate)},
    {"ftruncate64", SystemService::Files, Address(&Ftruncate)},
    {"posix_fallocate", SystemService::Files, Address(&PosixFallocate)},
    {"posix_fallocate64", SystemService::Files, Address(&PosixFallocate)},
    {"fallocate", SystemService::Files, Address(&Fallocate)},
    {"fallocate64", SystemService::Files, Address(&Fallocate)},
    {"lseek", SystemService::Files, Address(&Lseek)},
    {"lseek64", SystemService::Files, Address(&Lseek)},
    {"write", SystemService::Files, Address(&Write)},
    {"pwrite", SystemService::Files, Address(&Pwrite)},
    {"pwrite64", SystemService::Files, Address(&Pwrite)},
    {"mmap", SystemService::Files, Address(&Mmap)},
    {"mmap64", SystemService::Files, Address(&Mmap)},
};

static_assert(sizeof(off_t) == 8, "the functions with 64 in their names are the same ones");

// Such places are often made read-only once the library is loaded.
void Redirect(void** place, void* replacement) {
    const auto page = static_cast<std::uintptr_t>(getpagesize());
    auto* const start = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(place) / page * page);
    if (mprotect(start, page, PROT_READ | PROT_WRITE) == 0) *place = replacement;
}

}  // namespace

std::vector<std::string> InterceptCalls(const LoadedLibrary& library, SystemService service) {
    std::vector<std::string> names;
    for (const Redirection& one : redirections) {
        if (one.service != service) continue;
        const std::vector<void**> places = library.ImportsOf(one.name);
        for (void** place : places) Redirect(place, one.replacement);
        if (!places.empty()) names.emplace_back(one.name);
    }
    return names;
}

FailingCalls::FailingCalls(std::int64_t nth, std::int64_t count) {
    const std::int64_t room = std::numeric_limits<std::int64_t>::max() - nth;
    counts = {true, 0, nth, nth + (count - 1 < room ? count - 1 : room), 0, ""};
}

FailingCalls::~FailingCalls() { counts.armed = false; }
std::int64_t FailingCalls::failed() const { return counts.failed; }
std::string FailingCalls::lastFailed() const { return counts.last; }

}  // namespace host::check
