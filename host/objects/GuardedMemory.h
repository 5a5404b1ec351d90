// Memory that the host hands out, with guard bytes on both sides.
//
// A plug-in that writes past what it was given breaks the guard bytes; that is counted when the
// memory is freed or tested. Under the address sanitizer the guard bytes are poisoned as well, so
// that the writer itself is caught.
#pragma once

#include <cstddef>
#include <cstdint>

namespace host {

// `size` zero bytes, aligned to 16; null when memory is short. Size 0 gives an address of no bytes.
void* AllocateGuarded(std::size_t size);

// The same for whoever writes all bytes anyway: what they are is left open.
void* AllocateGuardedAsIs(std::size_t size);

// How many bytes were asked for.
std::size_t GuardedSize(const void* memory);

// Frees what was allocated here, after a look at its guard bytes. Null is ignored.
void FreeGuarded(void* memory);

// For what lives as long as the process: its guard bytes are looked at whenever broken ones are counted.
void WatchGuarded(const void* memory);

// Whether the guard bytes around one allocation are whole.
bool GuardsAreWhole(const void* memory);

// How many allocations, freed or watched, had broken guard bytes since the process started.
std::int64_t BrokenGuardCount();

}  // namespace host
