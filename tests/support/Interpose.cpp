// Functions of the system's names that tests find in front of the system's.
#include "tests/support/Interpose.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <map>

// The address sanitizer has its own allocator; what stands in front of it must hand on to it.
#if defined(TQX_SANITIZE)
#define REAL_MALLOC __interceptor_malloc
#define REAL_CALLOC __interceptor_calloc
#else
#define REAL_MALLOC __libc_malloc
#define REAL_CALLOC __libc_calloc
#endif

#if defined(TQX_SANITIZE)
// Memory that can't be had is null, as it is without the sanitizers, and not the end of the program.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif

extern "C" {
void* REAL_MALLOC(std::size_t size);
void* REAL_CALLOC(std::size_t count, std::size_t size);
}

namespace support {

namespace {

struct Clock {
    bool fake = false;
    std::uint32_t ticks = 0;
    std::uint32_t perReading = 0;
    std::int64_t readings = 0;
};

struct Failure {
    bool armed = false;
    std::int64_t calls = 0;
    std::int64_t failed = 0;
    std::int64_t from = 0;
    std::int64_t to = -1;
    int errorNumber = 0;
};

constexpr std::size_t kCallKinds = 12;

Clock fakeClock;
std::array<Failure, kCallKinds> failures;
FileMappings mappings;
bool allocationsFail = false;
std::size_t leastFailingBytes = 0;
std::int64_t failedAllocations = 0;

// Address to length of the live file mappings. Never destroyed: files are unmapped at exit too.
std::map<void*, std::size_t>& LiveMappings() {
    static auto* live = new std::map<void*, std::size_t>;
    return *live;
}

Failure& FailureOf(SystemCall call) { return failures[static_cast<std::size_t>(call)]; }

// Counts a call; true, with errno set, when it is to fail.
bool Fails(SystemCall call) {
    Failure& failure = FailureOf(call);
    if (!failure.armed) return false;
    ++failure.calls;
    if (failure.calls < failure.from || failure.calls > failure.to) return false;
    ++failure.failed;
    errno = failure.errorNumber;
    return true;
}

bool AllocationFails(SystemCall call, std::size_t size) {
    if (Fails(call)) return true;
    if (!allocationsFail || size < leastFailingBytes) return false;
    ++failedAllocations;
    errno = ENOMEM;
    return true;
}

// The system's own function of a name.
template <class Function>
Function* Real(const char* name) {
    void* symbol = dlsym(RTLD_NEXT, name);
    Function* function = nullptr;
    std::memcpy(&function, &symbol, sizeof(symbol));
    return function;
}

void CountMapping(void* address, std::size_t length) {
    ++mappings.made;
    ++mappings.live;
    mappings.liveBytes += static_cast<std::int64_t>(length);
    mappings.mostBytes = std::max(mappings.mostBytes, mappings.liveBytes);
    LiveMappings()[address] = length;
}

void CountUnmapping(void* address) {
    const auto entry = LiveMappings().find(address);
    if (entry == LiveMappings().end()) return;
    --mappings.live;
    mappings.liveBytes -= static_cast<std::int64_t>(entry->second);
    LiveMappings().erase(entry);
}

}  // namespace

FakeClock::FakeClock(std::uint32_t ticks) { fakeClock = {true, ticks, 0, 0}; }
FakeClock::~FakeClock() { fakeClock = {}; }
void FakeClock::Set(std::uint32_t ticks) { fakeClock.ticks = ticks; }
void FakeClock::Advance(std::uint32_t ticks) { fakeClock.ticks += ticks; }
void FakeClock::AdvancePerReading(std::uint32_t ticks) { fakeClock.perReading = ticks; }
std::uint32_t FakeClock::ticks() const { return fakeClock.ticks; }
std::int64_t FakeClock::readings() const { return fakeClock.readings; }

FileMappings CountedFileMappings() { return mappings; }

void ResetFileMappings() { mappings = {0, mappings.live, mappings.liveBytes, mappings.liveBytes}; }

FailingCall::FailingCall(SystemCall call, std::int64_t nth, std::int64_t count, int errorNumber) : call_(call) {
    FailureOf(call) = {true, 0, 0, nth, nth + count - 1, errorNumber};
}

FailingCall::~FailingCall() { FailureOf(call_) = {}; }
std::int64_t FailingCall::calls() const { return FailureOf(call_).calls; }
std::int64_t FailingCall::failed() const { return FailureOf(call_).failed; }

FailingAllocations::FailingAllocations(std::size_t leastBytes) {
    failedAllocations = 0;
    leastFailingBytes = leastBytes;
    allocationsFail = true;
}

FailingAllocations::~FailingAllocations() { allocationsFail = false; }
std::int64_t FailingAllocations::failed() const { return failedAllocations; }

namespace {

// The first nanosecond of a tick.
timespec TimeOfTick(std::uint32_t tick) {
    const std::int64_t rest = tick % 60;
    return {static_cast<time_t>(tick / 60), static_cast<long>((rest * 1'000'000'000 + 59) / 60)};
}

int ReadClock(clockid_t clock, timespec* now) {
    static auto* real = Real<int(clockid_t, timespec*)>("clock_gettime");
    if (!fakeClock.fake || clock != CLOCK_MONOTONIC) return real(clock, now);
    *now = TimeOfTick(fakeClock.ticks);
    ++fakeClock.readings;
    fakeClock.ticks += fakeClock.perReading;
    return 0;
}

void* Map(const char* name, void* address, std::size_t length, int protection, int flags, int file, off_t offset) {
    if (file >= 0 && Fails(SystemCall::FileMapping)) return MAP_FAILED;
    auto* real = Real<void*(void*, std::size_t, int, int, int, off_t)>(name);
    void* mapped = real(address, length, protection, flags, file, offset);
    if (file >= 0 && mapped != MAP_FAILED) CountMapping(mapped, length);
    return mapped;
}

// Puts what can't be read in a file's place.
void TakeAway(int file) {
    const int nothing = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nothing, file);
    close(nothing);
}

}  // namespace

}  // namespace support

// --- The system's functions, as the plug-in finds them -----------------------------------------

extern "C" {

int clock_gettime(clockid_t clock, timespec* now) noexcept { return support::ReadClock(clock, now); }

void* mmap(void* address, std::size_t length, int protection, int flags, int file, off_t offset) noexcept {
    return support::Map("mmap", address, length, protection, flags, file, offset);
}

void* mmap64(void* address, std::size_t length, int protection, int flags, int file, off64_t offset) noexcept {
    return support::Map("mmap64", address, length, protection, flags, file, offset);
}

int munmap(void* address, std::size_t length) noexcept {
    static auto* real = support::Real<int(void*, std::size_t)>("munmap");
    support::CountUnmapping(address);
    return real(address, length);
}

int open(const char* path, int flags, ...) {
    static auto* real = support::Real<int(const char*, int, ...)>("open");
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = flags & (O_CREAT | O_TMPFILE) ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return support::Fails(support::SystemCall::Open) ? -1 : real(path, flags, mode);
}

int ftruncate(int file, off_t length) noexcept {
    static auto* real = support::Real<int(int, off_t)>("ftruncate");
    return support::Fails(support::SystemCall::Ftruncate) ? -1 : real(file, length);
}

int access(const char* path, int mode) noexcept {
    static auto* real = support::Real<int(const char*, int)>("access");
    return support::Fails(support::SystemCall::Access) ? -1 : real(path, mode);
}

std::size_t fread(void* bytes, std::size_t size, std::size_t count, std::FILE* stream) {
    static auto* real = support::Real<std::size_t(void*, std::size_t, std::size_t, std::FILE*)>("fread");
    if (support::Fails(support::SystemCall::Read)) support::TakeAway(fileno(stream));
    return real(bytes, size, count, stream);
}

int fseeko(std::FILE* stream, off_t offset, int whence) {
    static auto* real = support::Real<int(std::FILE*, off_t, int)>("fseeko");
    return support::Fails(support::SystemCall::Position) ? -1 : real(stream, offset, whence);
}

// Gives its error number instead of setting errno.
int posix_fallocate(int file, off_t offset, off_t length) {
    static auto* real = support::Real<int(int, off_t, off_t)>("posix_fallocate");
    return support::Fails(support::SystemCall::PosixFallocate) ? errno : real(file, offset, length);
}

off_t lseek(int file, off_t offset, int whence) noexcept {
    static auto* real = support::Real<off_t(int, off_t, int)>("lseek");
    return support::Fails(support::SystemCall::Lseek) ? -1 : real(file, offset, whence);
}

ssize_t write(int file, const void* bytes, std::size_t count) {
    static auto* real = support::Real<ssize_t(int, const void*, std::size_t)>("write");
    return support::Fails(support::SystemCall::Write) ? -1 : real(file, bytes, count);
}

ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t offset) {
    static auto* real = support::Real<ssize_t(int, const void*, std::size_t, off_t)>("pwrite");
    return support::Fails(support::SystemCall::Pwrite) ? -1 : real(file, bytes, count, offset);
}

void* malloc(std::size_t size) noexcept {
    return support::AllocationFails(support::SystemCall::Malloc, size) ? nullptr : REAL_MALLOC(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return support::AllocationFails(support::SystemCall::Calloc, count * size) ? nullptr : REAL_CALLOC(count, size);
}
}
