// Memory for the time of one operation.
#pragma once

#include <cstdint>
#include <type_traits>

#include "platform/PixelMemory.h"

namespace tqx {

// Elements that begin as zero bytes, the first at a multiple of 64. A size that no 64-bit number
// holds is a failed allocation like any other.
template <class T>
class Scratch {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    // Nothing until Allocate.
    Scratch() = default;

    // count × each + more elements.
    explicit Scratch(std::int64_t count, std::int64_t each = 1, std::int64_t more = 0) { Allocate(count, each, more); }

    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch() { platform::FreePixels(reinterpret_cast<std::uint8_t*>(elements_)); }

    // Once. False when memory is short.
    bool Allocate(std::int64_t count, std::int64_t each = 1, std::int64_t more = 0) {
        std::int64_t size;
        if (__builtin_mul_overflow(count, each, &size) || __builtin_add_overflow(size, more, &size) ||
            __builtin_mul_overflow(size, static_cast<std::int64_t>(sizeof(T)), &size))
            return false;
        elements_ = reinterpret_cast<T*>(platform::AllocatePixels(size));
        return elements_ != nullptr;
    }

    // False when memory was short.
    explicit operator bool() const { return elements_ != nullptr; }

    T* data() const { return elements_; }
    T& operator[](std::int64_t i) const { return elements_[i]; }

  private:
    T* elements_ = nullptr;
};

using ScratchBytes = Scratch<std::uint8_t>;

}  // namespace tqx
