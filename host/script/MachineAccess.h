// What the machine's files share: what waits for its attention, and places inside arrays and objects.
#pragma once

#include <atomic>
#include <cstdint>

#include "host/objects/Array.h"
#include "host/objects/Values.h"
#include "host/script/Bytecode.h"

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

// The register of what a text was, for those of its growing that have one.
inline host::Value* BeforeIn(host::Value* registers, std::uint16_t index) {
    return index == kNoRegister ? nullptr : &registers[index];
}

// Adds to a text, which `before` holds too where nothing has changed it since.
void GrowText(host::Value& text, host::Value* before, const host::Value& more);

}  // namespace script
