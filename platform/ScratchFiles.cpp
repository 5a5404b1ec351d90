// The names of files to be deleted, in lists that a signal's handler may read at any moment.
#include "platform/ScratchFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

namespace platform {

namespace {

using Place = std::atomic<void*>;
static_assert(Place::is_always_lock_free, "a signal handler can't wait for a lock");

// What a place holds, by its address: whoever takes it out of its place, the owner of the name or
// the handler, has it for himself.
struct Record {
    pid_t process;
    Record* before;  // among those that a handler took

    // The text stands right behind.
    const char* Path() const { return reinterpret_cast<const char*>(this + 1); }
};

// Places are never given back, so that a handler can walk them at any time.
struct Block {
    Place places[64] = {};
    std::atomic<Block*> next{nullptr};
};

Block firstBlock;

// What handlers took out of places. Never freed: the allocator may be at work below them.
std::atomic<Record*> taken{nullptr};

Record* NewRecord(const char* path) {
    const std::size_t bytes = std::strlen(path) + 1;
    auto* record = static_cast<Record*>(std::malloc(sizeof(Record) + bytes));
    if (!record) return nullptr;
    record->process = getpid();
    std::memcpy(record + 1, path, bytes);
    return record;
}

// The block behind another, made where there is none; null when memory is short.
Block* NextBlock(Block& block) {
    if (Block* next = block.next.load()) return next;
    auto* made = new (std::nothrow) Block;
    Block* others = nullptr;
    if (!made || block.next.compare_exchange_strong(others, made)) return made;
    delete made;
    return others;
}

// Puts a record into a free place.
Place* Put(Record* record) {
    for (Block* block = &firstBlock; block; block = NextBlock(*block))
        for (Place& place : block->places) {
            void* none = nullptr;
            if (place.compare_exchange_strong(none, record)) return &place;
        }
    return nullptr;
}

}  // namespace

bool ScratchName::Keep(const char* path) noexcept {
    Record* record = NewRecord(path);
    Place* place = record ? Put(record) : nullptr;
    if (!place) return std::free(record), false;
    Forget();
    place_ = place;
    record_ = record;
    return true;
}

void ScratchName::Forget() noexcept {
    if (!place_) return;
    void* expected = record_;
    if (place_->compare_exchange_strong(expected, nullptr)) std::free(record_);
    place_ = nullptr;
}

HeldSignals::HeldSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
}

HeldSignals::~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

int MakeScratchFile(std::string& pattern, ScratchName& name) {
    const HeldSignals held;
    const int descriptor = mkostemp(pattern.data(), O_CLOEXEC);
    if (descriptor < 0 || name.Keep(pattern.c_str())) return descriptor;
    close(descriptor);
    unlink(pattern.c_str());
    errno = ENOMEM;
    return -1;
}

void RemoveScratchFiles() noexcept {
    const int error = errno;
    const pid_t process = getpid();
    for (Block* block = &firstBlock; block; block = block->next.load())
        for (Place& place : block->places) {
            auto* const record = static_cast<Record*>(place.exchange(nullptr));
            if (!record) continue;
            if (record->process == process) unlink(record->Path());
            record->before = taken.exchange(record);
        }
    errno = error;
}

}  // namespace platform
