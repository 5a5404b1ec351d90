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

// How many bytes AllocateGuarded was asked for.
std::size_t GuardedSize(const void* memory);

// Frees what AllocateGuarded gave, after a look at its guard bytes. Null is ignored.
void FreeGuarded(void* memory);

// Whether the guard bytes around one allocation are whole.
bool GuardsAreWhole(const void* memory);

// How many freed allocations had broken guard bytes since the process started.
std::int64_t BrokenGuardCount();

}  // namespace host
