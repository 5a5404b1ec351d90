// Arrays for the time of one operation.
#pragma once

#include <cstdint>
#include <type_traits>

#include "platform/PixelMemory.h"

namespace tqx {

// Elements that begin as zero bytes, the first at a multiple of 64.
template <class T>
class PixelArray {
    static_assert(std::is_trivially_copyable_v<T>);

  public:
    PixelArray() = default;
    ~PixelArray() { platform::FreePixels(reinterpret_cast<std::uint8_t*>(elements_)); }
    PixelArray(const PixelArray&) = delete;
    PixelArray& operator=(const PixelArray&) = delete;

    // Once. False when memory is short.
    bool Allocate(std::int64_t count) {
        elements_ = reinterpret_cast<T*>(platform::AllocatePixels(count * static_cast<std::int64_t>(sizeof(T))));
        return elements_ != nullptr;
    }

    T* data() const { return elements_; }
    T& operator[](std::int64_t i) const { return elements_[i]; }

  private:
    T* elements_ = nullptr;
};

}  // namespace tqx
