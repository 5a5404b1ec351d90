// What the machine's files share: what waits for its attention, and places inside arrays and objects.
#pragma once

#include <atomic>
#include <cstdint>

#include "host/objects/Array.h"
#include "host/objects/Values.h"

namespace script {

// Whether something waits to be looked at: Ctrl-C, or an exception out of a destructor.
// Set from signal handlers and destructors.
inline std::atomic<bool> attention{false};
inline bool AttentionWanted() { return attention.load(std::memory_order_relaxed); }
inline void WantAttention() { attention.store(true, std::memory_order_relaxed); }

[[noreturn]] void ThrowOutOfBounds(std::int64_t index, const host::Array& array);
[[noreturn]] void ThrowOutOfBounds(std::int64_t index, const host::Array& array, std::size_t end);  // where end may be
[[noreturn]] void ThrowNoArray();
[[noreturn]] void ThrowNoObject();

// The element of an array, or an exception that says what is wrong.
inline host::Value& ElementOf(const host::Value& array, std::int64_t index) {
    host::Array* elements = array.array();
    if (!elements) ThrowNoArray();
    if (index < 0 || index >= static_cast<std::int64_t>(elements->values.size())) ThrowOutOfBounds(index, *elements);
    return elements->values[static_cast<std::size_t>(index)];
}

// A field of an object by its place, in values from the object's address.
inline host::Value& FieldOf(const host::Value& holder, std::size_t offset) {
    host::Object* object = holder.object();
    if (!object) ThrowNoObject();
    return reinterpret_cast<host::Value*>(object)[offset];
}

}  // namespace script
