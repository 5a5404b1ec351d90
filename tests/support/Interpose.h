// Stands between the plug-in and the system: a clock that tests set, counts of file mappings, and
// system calls that fail on demand. Everything passes through until a test asks for more, and
// passes through again when the object that asked goes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace support {

// While it lives, the monotonic clock stands still at a time given in ticks of 1/60 second.
class FakeClock {
  public:
    explicit FakeClock(std::uint32_t ticks = 1'000'000);
    ~FakeClock();
    FakeClock(const FakeClock&) = delete;
    FakeClock& operator=(const FakeClock&) = delete;

    void Set(std::uint32_t ticks);
    void Advance(std::uint32_t ticks);

    // Moves the clock on by so many ticks after each reading of it.
    void AdvancePerReading(std::uint32_t ticks);

    std::uint32_t ticks() const;
    std::int64_t readings() const;  // of the monotonic clock, since this object was made
};

// Files mapped into memory, since ResetFileMappings or the start.
struct FileMappings {
    std::int64_t made = 0;       // successful mappings
    std::int64_t live = 0;       // made and not yet unmapped
    std::int64_t liveBytes = 0;  // of the live ones
    std::int64_t mostBytes = 0;  // the highest that liveBytes was
};

FileMappings CountedFileMappings();

// Live mappings stay counted as live; the rest starts at 0, mostBytes at the live bytes.
void ResetFileMappings();

enum class SystemCall {
    Open,
    Ftruncate,
    PosixFallocate,
    Lseek,
    Write,
    Pwrite,
    FileMapping,
    Calloc,
    Malloc,
    Access,
    Read,
    Position
};

// While it lives, calls number `nth` up to `nth + count - 1` from now on (counted from 1) of one
// kind fail with an error number. FileMapping is mmap of a file; Read is fread, from whose stream nothing can be
// read from then on; Position is fseeko. For the memory functions only
// calls for at least `leastBytes` bytes count; `new` is not affected.
class FailingCall {
  public:
    explicit FailingCall(SystemCall call, std::int64_t nth = 1, std::int64_t count = 1,
                         int errorNumber = 28 /* ENOSPC */);
    ~FailingCall();
    FailingCall(const FailingCall&) = delete;
    FailingCall& operator=(const FailingCall&) = delete;

    std::int64_t calls() const;   // of this kind while it lives
    std::int64_t failed() const;  // of these, how many failed

  private:
    SystemCall call_;
};

// While it lives, every malloc and calloc of at least so many bytes fails.
class FailingAllocations {
  public:
    explicit FailingAllocations(std::size_t leastBytes);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    std::int64_t failed() const;
};

}  // namespace support
