// Paths in places that handlers can walk at any time, each taken by exchange.
#include "tqx/NotedPaths.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace tqx {

namespace {

// What is asked for just now is in use in a moment only.
constexpr std::uint64_t kLatest = 8;

// Whoever takes a record out of its place, the owner or a handler, has it for himself.
struct Record {
    std::uint64_t number;  // of all paths, in the order in which they were noted last
    Record* next;          // among the used ones

    // The text stands right behind.
    const char* Path() const { return reinterpret_cast<const char*>(this + 1); }
};

using Place = std::atomic<Record*>;
static_assert(Place::is_always_lock_free, "a signal handler can't wait for a lock");

// Never given back, so that a handler can walk them at any time.
struct Block {
    Place places[64] = {};
    std::atomic<Block*> next{nullptr};
};

Block firstBlock;
std::uint64_t latest = 0;

// Taken for good. A handler can't give memory back, so the process ends with them.
std::atomic<Record*> usedRecords{nullptr};

template <class Use>
void ForEachPlace(const Use& use) {
    for (Block* block = &firstBlock; block; block = block->next)
        for (Place& place : block->places) use(place);
}

Record* NewRecord(const char* path) {
    const std::size_t bytes = std::strlen(path) + 1;
    auto* record = static_cast<Record*>(std::malloc(sizeof(Record) + bytes));
    if (!record) return nullptr;
    record->number = latest;
    std::memcpy(record + 1, path, bytes);
    return record;
}

// Whether the path is kept already; it is the latest then.
bool Renew(const char* path) {
    bool known = false;
    ForEachPlace([&](Place& place) {
        Record* record = place;
        if (!record || std::strcmp(record->Path(), path) != 0) return;
        record->number = latest;
        known = true;
    });
    return known;
}

Place* FreePlace() {
    Place* found = nullptr;
    ForEachPlace([&](Place& place) {
        if (!found && !place.load()) found = &place;
    });
    return found;
}

void DropUnused(IsInUse isInUse) {
    ForEachPlace([&](Place& place) {
        Record* record = place;
        if (!record || record->number + kLatest > latest || isInUse(record->Path())) return;
        if (place.compare_exchange_strong(record, nullptr)) std::free(record);
    });
}

// Room for as long as there was none: what a full list costs is spread over as many paths again.
void DropOrGrow(IsInUse isInUse) {
    DropUnused(isInUse);
    std::size_t places = 0, used = 0;
    Block* last = &firstBlock;
    while (last->next) last = last->next;
    ForEachPlace([&](Place& place) {
        ++places;
        used += place.load() != nullptr;
    });
    for (; used * 2 > places; places += 64) {
        auto* const made = new (std::nothrow) Block;
        if (!made) return;
        last->next = made;
        last = made;
    }
}

}  // namespace

void NotePath(const char* path, IsInUse isInUse) noexcept {
    ++latest;
    if (Renew(path)) return;
    if (!FreePlace()) DropOrGrow(isInUse);
    Place* const place = FreePlace();
    if (place) *place = NewRecord(path);
}

void TakePaths(void (*use)(const char* path)) noexcept {
    ForEachPlace([&](Place& place) {
        Record* const record = place.exchange(nullptr);
        if (!record) return;
        use(record->Path());
        record->next = usedRecords.exchange(record);
    });
}

}  // namespace tqx
